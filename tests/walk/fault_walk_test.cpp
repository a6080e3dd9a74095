// Every job of the companion, with every call of the system and every allocation failing in turn.

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <new>
#include <optional>

#include "../rewrite/rewrap_job.h"
#include "cli/commands.h"
#include "platform/text.h"
#include "support/call_hook.h"
#include "support/failing_memory.h"

namespace quorvan::test {
namespace {

using platform::CallOutcome;
using platform::SystemCall;

struct Fault {
  std::optional<SystemCall> call;  // none: allocations
  CallOutcome outcome;
  bool isRoutine;  // every second call comes to it in one run, and the job is done all the same
};

std::vector<Fault> EveryFault() {
  std::vector<Fault> faults = {{{}, CallOutcome::kFails, false}};
  for (int number = 0; number < platform::kSystemCalls; ++number) {
    const auto call = static_cast<SystemCall>(number);
    const bool isMadeAgain =
        call != SystemCall::kSize && call != SystemCall::kTimes && call != SystemCall::kRename;
    faults.push_back({call, CallOutcome::kFails, false});
    faults.push_back({call, CallOutcome::kComesShort, true});
    faults.push_back({call, CallOutcome::kIsInterrupted, isMadeAgain});
  }
  return faults;
}

// How a command has ended.
struct End {
  int status;
  bool allocationFailed;
  std::string output;
  std::string error;

  bool Says(std::string_view text) const { return error.find(text) != std::string::npos; }
};

// 0: no allocation fails.
End RunCommand(const std::function<int()>& command, int failingAllocation = 0) {
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  int status = cli::kFailed;
  FailAllocation(failingAllocation);
  try {
    status = command();
  } catch (const std::bad_alloc&) {  // as the companion itself takes it
    std::fputs("out of memory", stderr);
  }
  const bool allocationFailed = AllocationFailed();
  FailAllocation(0);
  std::fflush(stdout);
  std::fflush(stderr);
  return {status, allocationFailed, ::testing::internal::GetCapturedStdout(),
          ::testing::internal::GetCapturedStderr()};
}

// Runs a command that meets a fault at the `nth` call; whether it has come as far as that.
bool RunFaulty(const std::function<int()>& command, const Fault& fault, int nth, End* end) {
  if (!fault.call) {
    *end = RunCommand(command, nth);
    return end->allocationFailed;
  }
  std::atomic<bool> met = false;
  const CallHook hook([&](SystemCall call, int number) {
    const bool meets = fault.isRoutine ? number % 2 == 1 : number == nth;
    if (call != fault.call || !meets) return CallOutcome::kAsEver;
    met = true;
    return fault.outcome;
  });
  *end = RunCommand(command);
  return met;
}

constexpr int kFewestFaults = 20;  // of a kind, in any command

// What the worker says when memory for the right words is out.
constexpr std::string_view kPlainDoneText = "処理は完了しました。\n";

using platform::Language;

using Files = std::map<std::string, Bytes>;

// A clip, a stereo file on its first two tracks, and the model of the rewritten clip.
class FaultWalk : public ::testing::Test {
 protected:
  FaultWalk() : job_({.frames = 4, .framesPerPartition = 2, .tracks = 3, .pictureStep = 0}) {
    job_.Put(0, {.channels = 2, .sampleFrames = 6000});  // the last frame ends in silence
    path_ = platform::ToUtf8(job_.path);
    folder_ = job_.folder.Path();
    rewrap_.file = path_;
    rewrap_.placement.tracks = {"1=" + (folder_ / "track0.wav").string()};
    rewrap_.yes = true;
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

  bool IsAsAtFirst() const {
    return job_.Now() == job_.clip.bytes && std::filesystem::is_empty(folder_ / "out");
  }

  Files Output() const {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "out")) {
      if (entry.is_regular_file()) files[entry.path().filename().string()] = ReadAll(entry.path());
    }
    return files;
  }

  // Walks through all faults. `check` looks at each end, and at that of a second run without a
  // fault: the first one of a kind, and each for which something was left behind.
  void Walk(const std::function<int()>& command, const std::function<void(const End&)>& check) {
    int allocations = 0;
    int calls = 0;
    for (const Fault& fault : EveryFault()) {
      bool goesOn = true;
      for (int nth = 1; goesOn; ++nth) {
        Restore();
        SCOPED_TRACE(::testing::Message() << (fault.call ? static_cast<int>(*fault.call) : -1)
                                          << ' ' << static_cast<int>(fault.outcome) << ' ' << nth);
        End end{};
        goesOn = RunFaulty(command, fault, nth, &end) && !fault.isRoutine;
        EXPECT_FALSE(end.Says("エラーコード未定です。")) << end.error;
        EXPECT_TRUE(end.status == cli::kDone || (!fault.isRoutine && !end.error.empty()));
        check(end);
        if (end.status != cli::kDone && (nth == 1 || !IsAsAtFirst())) {
          const End again = RunCommand(command);
          EXPECT_EQ(again.status, cli::kDone) << again.error;
          check(again);
        }
        if (HasFailure()) return;
        if (goesOn && fault.outcome == CallOutcome::kFails) ++(fault.call ? calls : allocations);
      }
    }
    EXPECT_GT(allocations, kFewestFaults);
    EXPECT_GT(calls, kFewestFaults);
  }

  // For the jobs that only read: done with what they come to without a fault, or failed, and the
  // clip untouched.
  void WalkReading(const std::function<int()>& command) {
    const End good = RunCommand(command);
    ASSERT_EQ(good.status, cli::kDone) << good.error;
    const Files files = Output();
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
      const Files now = Output();
      for (const auto& [name, bytes] : files) {
        const bool whole = std::any_of(now.begin(), now.end(),
                                       [&](const auto& file) { return file.second == bytes; });
        EXPECT_TRUE(whole) << name;
      }
    });
  }

  RewrapJob job_;
  std::string path_;
  std::filesystem::path folder_;
  cli::RewrapArguments rewrap_;
  cli::LoadArguments load_;
};

class FaultWalkOf : public FaultWalk, public ::testing::WithParamInterface<bool> {
 protected:
  FaultWalkOf() { load_.method = GetParam() ? Method::kGenericFileIo : Method::kMemoryMapping; }
};
INSTANTIATE_TEST_SUITE_P(Methods, FaultWalkOf, ::testing::Bool(), [](const auto& method) {
  return std::string(method.param ? "FileIo" : "Mapped");
});

TEST_P(FaultWalkOf, ARewriteIsDoneOrSaysWhatItIs) {
  rewrap_.load = load_;
  const auto log = folder_ / "clip_LOG.txt";
  int notices = 0;
  Walk([&] { return cli::RunRewrap(rewrap_, Language::kJapanese); },
       [&](const End& end) {
         const Bytes now = job_.Now();
         ASSERT_EQ(now.size(), job_.clip.bytes.size());
         if (end.status == cli::kDone) {
           EXPECT_TRUE(now == job_.Expected());
           EXPECT_TRUE(std::filesystem::exists(log) || !end.error.empty());
         } else if (end.status == cli::kDoneNotice) {
           ++notices;
           EXPECT_TRUE(job_.Without(now, true, false) ==
                       job_.Without(job_.ExpectedAudio(), true, false));
           EXPECT_TRUE(end.Says("UMID"));
           const Bytes text = ReadAll(log);
           EXPECT_NE(std::string(text.begin(), text.end()).find("[ UMID ]"), std::string::npos);
         } else {
           EXPECT_EQ(end.status, cli::kFailed);
           const bool umids = end.Says("UMIDの書込みを完了できませんでした");
           EXPECT_TRUE(job_.Without(now, umids, true) == job_.Without(job_.clip.bytes, umids, true))
               << end.error;
           const bool says = umids || end.Says("までの音声は書換えられている") ||
                             end.Says("途中まで書換えられている可能性");
           EXPECT_TRUE(says || now == job_.clip.bytes) << end.error;
         }
       });
  EXPECT_GT(notices, 0);
}

TEST_P(FaultWalkOf, AnExportIsWholeOrSaysThatItIsNot) {
  cli::ExportArguments arguments;
  arguments.file = path_;
  arguments.tracks = "1-3";
  arguments.folder = (folder_ / "out").string();
  arguments.load = load_;
  WalkReading([&] { return cli::RunExport(arguments, Language::kJapanese); });
}

TEST_P(FaultWalkOf, WhatIsOnlyReadIsReadRightOrNotAtAll) {
  cli::InfoArguments info;
  info.file = path_;
  info.load = load_;
  info.json = info.index = true;
  WalkReading([&] { return cli::RunInfo(info, Language::kJapanese); });
}

TEST_F(FaultWalk, AMeasurementIsRightOrFails) {
  cli::LoudnessArguments arguments;
  arguments.file = path_;
  arguments.tracks = "1,3";
  WalkReading([&] { return cli::RunLoudness(arguments, Language::kJapanese); });
}

TEST_F(FaultWalk, AComparisonIsRightOrFails) {
  ASSERT_EQ(RunCommand([&] { return cli::RunRewrap(rewrap_, Language::kJapanese); }).status,
            cli::kDone);
  job_.clip.bytes = job_.Now();
  cli::VerifyArguments arguments;
  arguments.file = path_;
  arguments.placement = rewrap_.placement;
  WalkReading([&] { return cli::RunVerify(arguments, Language::kJapanese); });
}

TEST_F(FaultWalk, ACopyIsWholeOrNotThere) {
  cli::ConformArguments arguments;
  arguments.in = path_;
  arguments.out = (folder_ / "out" / "copy.mxf").string();
  const auto command = [&] {
    const int status = cli::RunConform(arguments, Language::kJapanese);
    // What could not be removed either has a name of its own.
    EXPECT_TRUE(status == cli::kDone || Output().size() <= 1);
    return status;
  };
  // A whole clip, and one that was cut off in its last frame.
  for (const std::uint64_t cut :
       {std::uint64_t{0}, job_.clip.layout.frames.back().audio[0].value}) {
    if (cut != 0) job_.clip.bytes.resize(cut);
    Restore();
    const End good = RunCommand(command);
    ASSERT_EQ(good.status, cli::kDone) << good.error;
    const Bytes copy = ReadAll(arguments.out);
    Walk(command, [&](const End& end) {
      EXPECT_TRUE(job_.Now() == job_.clip.bytes);
      EXPECT_TRUE(end.status != cli::kDone || ReadAll(arguments.out) == copy);
    });
  }
}

}  // namespace
}  // namespace quorvan::test
