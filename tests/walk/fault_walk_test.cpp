// Every job of the companion, with every call of the system and every allocation failing in turn.

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <new>

#include "../rewrite/rewrap_job.h"
#include "cli/commands.h"
#include "platform/fault_seam.h"
#include "platform/text.h"
#include "support/failing_memory.h"
#include "support/mxf_tags.h"

namespace quorvan::test {
namespace {

using cli::LoadArguments;
using platform::CallOutcome;
using platform::SystemCall;

// The one call that does not come to what it would.
std::atomic<SystemCall> faultyCall;
std::atomic<CallOutcome> faultyOutcome;
std::atomic<int> callsLeft;

CallOutcome Seam(SystemCall call) {
  if (call != faultyCall || --callsLeft != 0) return CallOutcome::kAsEver;
  return faultyOutcome;
}

struct Fault {
  const char* name;
  std::function<void(int nth)> arm;
  std::function<bool()> happened;  // behind the job
};

std::vector<Fault> EveryFault() {
  std::vector<Fault> faults;
  faults.push_back({"allocation", FailAllocation, AllocationFailed});
  const auto add = [&](const char* name, SystemCall call, CallOutcome outcome) {
    faults.push_back({name,
                      [=](int nth) {
                        faultyCall = call;
                        faultyOutcome = outcome;
                        callsLeft = nth;
                        platform::SetFaultSeam(nth == 0 ? nullptr : Seam);
                      },
                      [] { return callsLeft <= 0; }});
  };
  for (int call = 0; call < platform::kSystemCalls; ++call) {
    add("failing call", static_cast<SystemCall>(call), CallOutcome::kFails);
    add("interrupted call", static_cast<SystemCall>(call), CallOutcome::kIsInterrupted);
  }
  for (const SystemCall call : {SystemCall::kRead, SystemCall::kWrite, SystemCall::kGatheredWrite})
    add("short call", call, CallOutcome::kComesShort);
  return faults;
}

// How a command has ended.
struct End {
  int status;
  std::string output;
  std::string error;
  bool faultHappened;

  bool Says(std::string_view text) const { return error.find(text) != std::string::npos; }
};

End RunCommand(const std::function<int()>& command, const Fault* fault = nullptr, int nth = 0) {
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  int status = cli::kFailed;
  if (fault != nullptr) fault->arm(nth);
  try {
    status = command();
  } catch (const std::bad_alloc&) {  // as the companion itself takes it
    std::fputs("out of memory", stderr);
  }
  std::fflush(stdout);
  std::fflush(stderr);
  const bool happened = fault != nullptr && fault->happened();
  FailAllocation(0);
  platform::SetFaultSeam(nullptr);
  return {status, ::testing::internal::GetCapturedStdout(),
          ::testing::internal::GetCapturedStderr(), happened};
}

constexpr int kFewestFaults = 20;  // of a kind, in any command

// What the worker says when memory for the right words is out.
constexpr std::string_view kPlainDoneText = "処理は完了しました。\n";

using Files = std::map<std::string, Bytes>;

// A clip, a stereo file on its first two tracks, and the model of the rewritten clip.
class FaultWalk : public ::testing::Test {
 protected:
  static ClipSpec Spec() {
    ClipSpec spec;
    spec.frames = 4;
    spec.framesPerPartition = 2;
    spec.tracks = 3;
    spec.pictureStep = 0;
    return spec;
  }

  FaultWalk() : job_(Spec()) {
    WavSpec wav;
    wav.channels = 2;
    wav.sampleFrames = 6000;  // the last frame ends in silence
    job_.Put(0, wav);
    path_ = platform::ToUtf8(job_.path);
    folder_ = job_.folder.Path();
    Restore();
  }

  // The folder as it was at first.
  void Restore() {
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      if (entry.path().filename() != "track0.wav") std::filesystem::remove_all(entry.path());
    }
    ASSERT_TRUE(WriteBytes(folder_ / "clip.mxf", job_.clip.bytes));
    std::filesystem::create_directory(folder_ / "out");
  }

  Files Folder(const char* name) const {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / name)) {
      if (entry.is_regular_file()) files[entry.path().filename()] = ReadAll(entry.path());
    }
    return files;
  }

  // The clip with its UMIDs and stamps, and with the audio that the job may write, left out.
  Bytes Without(Bytes bytes, bool identity, bool audio) const {
    const auto clear = [&](std::uint64_t at, std::uint64_t count) {
      std::fill_n(bytes.begin() + static_cast<long>(at), count, std::uint8_t{0});
    };
    const ClipLayout& layout = job_.clip.layout;
    if (identity) {
      for (const auto& places : {layout.materialUmids, layout.sourceUmids}) {
        for (const std::uint64_t place : places)
          clear(place, kUmidBytes);
      }
      for (const SetKind kind : {SetKind::kMaterialPackage, SetKind::kSourcePackage})
        clear(layout.TagValueOffset(kind, tag::kPackageModifiedDate), 8);
    }
    if (audio) {
      for (const FramePlace& frame : layout.frames) {
        for (std::size_t t = 0; t < 2; ++t)
          clear(frame.audio[t].value, frame.audio[t].valueBytes);
      }
    }
    return bytes;
  }

  // Walks through all faults: `check` looks at each end, and at that of a second run without a
  // fault.
  void Walk(const std::function<int()>& command, const std::function<void(const End&)>& check) {
    std::map<std::string, int> happened;
    for (const Fault& fault : EveryFault()) {
      for (int nth = 1;; ++nth) {
        Restore();
        SCOPED_TRACE(std::string(fault.name) + " " +
                     std::to_string(static_cast<int>(faultyCall.load())) + " at " +
                     std::to_string(nth));
        const End end = RunCommand(command, &fault, nth);
        EXPECT_FALSE(end.Says("エラーコード未定です。")) << end.error;
        EXPECT_TRUE(end.status == cli::kDone || !end.error.empty());
        check(end);
        if (end.status != cli::kDone) {
          const End again = RunCommand(command);
          EXPECT_EQ(again.status, cli::kDone) << again.error;
          check(again);
        }
        if (HasFailure()) return;
        if (!end.faultHappened) break;
        ++happened[fault.name];
      }
    }
    EXPECT_GT(happened["allocation"], kFewestFaults);
    EXPECT_GT(happened["failing call"], kFewestFaults);
  }

  // For the jobs that only read: done with what they come to without a fault, or failed, and the
  // clip untouched.
  void WalkReading(const std::function<int()>& command) {
    const End good = RunCommand(command);
    ASSERT_EQ(good.status, cli::kDone) << good.error;
    const Files files = Folder("out");
    Walk(command, [&](const End& end) {
      EXPECT_TRUE(job_.Now() == job_.clip.bytes);
      if (end.status != cli::kDone) {
        EXPECT_EQ(end.status, cli::kFailed);
        return;
      }
      // Of what was said nothing is wrong, though memory for some of it may be out.
      if (!end.output.empty() && end.output != kPlainDoneText) {
        EXPECT_EQ(end.output, good.output);
      }
      for (const auto& [name, bytes] : files) {
        const Files now = Folder("out");
        const bool whole = std::any_of(now.begin(), now.end(),
                                       [&](const auto& file) { return file.second == bytes; });
        EXPECT_TRUE(whole) << name;
      }
    });
  }

  RewrapJob job_;
  std::string path_;
  std::filesystem::path folder_;
  LoadArguments load_;
};

class FaultWalkOf : public FaultWalk, public ::testing::WithParamInterface<bool> {
 protected:
  FaultWalkOf() { load_.method = GetParam() ? Method::kGenericFileIo : Method::kMemoryMapping; }
};
INSTANTIATE_TEST_SUITE_P(Methods, FaultWalkOf, ::testing::Bool(), [](const auto& method) {
  return std::string(method.param ? "FileIo" : "Mapped");
});

TEST_P(FaultWalkOf, ARewriteIsDoneOrSaysWhatItIs) {
  cli::RewrapArguments arguments;
  arguments.file = path_;
  arguments.placement.tracks = {"1=" + (folder_ / "track0.wav").string()};
  arguments.load = load_;
  arguments.yes = true;
  const auto log = folder_ / "clip_LOG.txt";
  int notices = 0;
  Walk([&] { return cli::RunRewrap(arguments); },
       [&](const End& end) {
         const Bytes now = job_.Now();
         ASSERT_EQ(now.size(), job_.clip.bytes.size());
         switch (end.status) {
           case cli::kDone:
             EXPECT_TRUE(now == job_.Expected());
             EXPECT_TRUE(std::filesystem::exists(log) || !end.error.empty());
             break;
           case cli::kDoneNotice: {
             ++notices;
             EXPECT_TRUE(Without(now, true, false) == Without(job_.ExpectedAudio(), true, false));
             EXPECT_TRUE(end.Says("UMID"));
             const Bytes text = ReadAll(log);
             EXPECT_NE(std::string(text.begin(), text.end()).find("[ UMID ]"), std::string::npos);
             break;
           }
           default: {
             EXPECT_EQ(end.status, cli::kFailed);
             const bool umids = end.Says("UMIDの書込みを完了できませんでした");
             EXPECT_TRUE(Without(now, umids, true) == Without(job_.clip.bytes, umids, true))
                 << end.error;
             const bool says = umids || end.Says("までの音声は書換えられている") ||
                               end.Says("途中まで書換えられている可能性") ||
                               end.Says("may have been rewritten in part");
             if (!says) {
               EXPECT_TRUE(now == job_.clip.bytes) << end.error;
             }
           }
         }
       });
  EXPECT_GT(notices, 0);
}

TEST_P(FaultWalkOf, AnExportIsWholeOrSaysThatItIsNot) {
  cli::ExportArguments arguments;
  arguments.file = path_;
  arguments.tracks = "1-3";
  arguments.folder = folder_ / "out";
  arguments.load = load_;
  WalkReading([&] { return cli::RunExport(arguments); });
}

TEST_P(FaultWalkOf, WhatIsOnlyReadIsReadRightOrNotAtAll) {
  cli::InfoArguments info;
  info.file = path_;
  info.load = load_;
  info.json = info.index = true;
  WalkReading([&] { return cli::RunInfo(info); });
}

TEST_F(FaultWalk, AMeasurementIsRightOrFails) {
  cli::LoudnessArguments arguments;
  arguments.file = path_;
  arguments.tracks = "1,3";
  arguments.load = load_;
  WalkReading([&] { return cli::RunLoudness(arguments); });
}

TEST_F(FaultWalk, AComparisonIsRightOrFails) {
  cli::RewrapArguments rewrap;
  rewrap.file = path_;
  rewrap.placement.tracks = {"1=" + (folder_ / "track0.wav").string()};
  rewrap.yes = true;
  ASSERT_EQ(RunCommand([&] { return cli::RunRewrap(rewrap); }).status, cli::kDone);
  job_.clip.bytes = job_.Now();
  cli::VerifyArguments arguments;
  arguments.file = path_;
  arguments.placement = rewrap.placement;
  arguments.load = load_;
  WalkReading([&] { return cli::RunVerify(arguments); });
}

TEST_F(FaultWalk, ACopyIsWholeOrNotThere) {
  cli::ConformArguments arguments;
  arguments.in = path_;
  arguments.out = folder_ / "out" / "copy.mxf";
  const auto command = [&] {
    const int status = cli::RunConform(arguments);
    if (status != cli::kDone) {
      // What could not be removed either has a name of its own.
      EXPECT_TRUE(Folder("out").size() <= 1);
    }
    return status;
  };
  const End good = RunCommand(command);
  ASSERT_EQ(good.status, cli::kDone) << good.error;
  const Bytes copy = ReadAll(folder_ / "out" / "copy.mxf");
  Walk(command, [&](const End& end) {
    EXPECT_TRUE(job_.Now() == job_.clip.bytes);
    if (end.status == cli::kDone) {
      EXPECT_TRUE(ReadAll(folder_ / "out" / "copy.mxf") == copy);
    }
  });
}

}  // namespace
}  // namespace quorvan::test
