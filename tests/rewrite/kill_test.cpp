#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <thread>

#include "platform/text.h"
#include "rewrap_job.h"
#include "support/mxf_tags.h"

namespace quorvan {
namespace {

using namespace test;
using Clock = std::chrono::steady_clock;

// What a rewrite may change, as it is in `from`, put over what is in `bytes`: the values of track 1
// in the range, the UMIDs in the header metadata, and the stamps of the two packages.
void TakeWhatMayChange(const RewrapJob& job, std::uint32_t in, std::uint32_t out, const Bytes& from,
                       Bytes* bytes) {
  const auto take = [&](std::uint64_t place, std::uint64_t count) {
    std::copy_n(from.begin() + static_cast<long>(place), count,
                bytes->begin() + static_cast<long>(place));
  };
  for (std::uint32_t f = in; f <= out; ++f) {
    const KlvPlace& value = job.clip.layout.frames[f].audio[0];
    take(value.value, value.valueBytes);
  }
  for (const auto& places : {job.clip.layout.materialUmids, job.clip.layout.sourceUmids}) {
    for (const std::uint64_t place : places)
      take(place, kUmidBytes);
  }
  for (const SetKind kind : {SetKind::kMaterialPackage, SetKind::kSourcePackage})
    take(job.clip.layout.TagValueOffset(kind, tag::kPackageModifiedDate), 8);
}

// Runs the job in a process of its own, which is killed after `delay` if there is one. How long it
// has run.
Clock::duration RunInProcess(RewrapJob* job, std::optional<Clock::duration> delay) {
  const auto started = Clock::now();
  const pid_t child = fork();
  if (child == 0) _exit(job->Run() == 0 ? 0 : 1);
  if (delay) {
    std::this_thread::sleep_for(*delay);
    kill(child, SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
  return Clock::now() - started;
}

TEST(Rewrap, LeavesASoundClipWhereverItIsKilled) {
  ClipSpec spec = LongClip(2000);
  spec.framesPerPartition = 500;
  spec.tracks = 2;
  constexpr std::uint32_t in = 100, out = 1899;
  RewrapJob job(spec);
  job.Silence(0);
  job.Range(in, out);
  const auto isRewritten = [&](const Bytes& now, std::uint32_t frame) {
    return now[job.clip.layout.frames[frame].audio[0].value + 1] == 0;
  };
  int caught = 0;
  for (const bool fileIo : {false, true}) {
    RewrapJob::fileIo = fileIo;
    ASSERT_TRUE(WriteBytes(platform::ToUtf8(job.path), job.clip.bytes));
    const Clock::duration whole = RunInProcess(&job, std::nullopt);
    constexpr int kills = 30;
    for (int i = 0; i < kills; ++i) {
      ASSERT_TRUE(WriteBytes(platform::ToUtf8(job.path), job.clip.bytes));
      RunInProcess(&job, whole * i / kills);
      Bytes now = job.Now();
      ASSERT_EQ(now.size(), job.clip.bytes.size());
      if (isRewritten(now, in) && !isRewritten(now, out)) ++caught;
      TakeWhatMayChange(job, in, out, job.clip.bytes, &now);
      ASSERT_TRUE(now == job.clip.bytes) << "after kill " << i;
      MxfRecords again;
      platform::File file = platform::File::Open(job.path, platform::OpenMode::kReadAlone);
      ASSERT_EQ(AnalyzeMxfFile(&file, &again.base), 0) << "after kill " << i;
    }
  }
  EXPECT_GT(caught, 5) << "hardly a run was killed while it wrote";
}

}  // namespace
}  // namespace quorvan
