#include "mxf/essence/continuity.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/text.h"
#include "support/loaded_clip.h"
#include "timecode/timecode.h"

namespace quorvan {
namespace {

using namespace test;

constexpr auto kInvalid = static_cast<std::uint32_t>(kInvalidTimecode);

struct Break {
  std::uint32_t frame;
  std::uint32_t kind;
  std::uint32_t previous;
  std::uint32_t next;
  bool operator==(const Break&) const = default;
};
void PrintTo(const Break& b, std::ostream* out) {
  *out << "{frame " << b.frame << " kind " << b.kind << " " << b.previous << " to " << b.next
       << "}";
}

std::vector<Break> BreaksOf(const MXF_TIMECODE_INFO& timecode) {
  std::vector<Break> breaks;
  for (const auto* node = timecode.errorList->next; node != nullptr; node = node->next) {
    EXPECT_EQ(node->prior->next, node);
    breaks.push_back({node->frameNumber, node->kind, node->previousTimecode, node->nextTimecode});
  }
  EXPECT_EQ(breaks.size(), timecode.errorCount);
  return breaks;
}

std::int32_t Check(LoadedClip* clip, bool fileIo) {
  clip->app.mxf.timecode.useFileIo = fileIo ? 1 : 0;
  auto file = platform::File::Open(clip->path, platform::OpenMode::kReadAlone);
  return CheckTimecodeContinuity(&file, &clip->app.mxf.base);
}

// Both ways of reading come to these breaks.
void ExpectBreaks(const ClipSpec& spec, const std::vector<Break>& breaks) {
  LoadedClip clip(spec);
  for (const bool fileIo : {false, true}) {
    const std::int32_t wanted = breaks.empty() ? 0 : kContinuityBreaks;
    DropFromMemory(clip.path);
    EXPECT_EQ(Check(&clip, fileIo), wanted);
    EXPECT_EQ(BreaksOf(clip.app.mxf.timecode), breaks);
    EXPECT_EQ(clip.app.mxf.timecode.progressFrame, spec.frames - 1);
    EXPECT_EQ(clip.app.mxf.timecode.timecodeWords, nullptr);
  }
}

ClipSpec Spec(Rate rate, ClipTimecode start, std::uint32_t frames = 23) {
  ClipSpec spec;
  spec.rate = rate;
  spec.dropFrame = true;
  spec.start = start;
  spec.frames = frames;
  spec.framesPerPartition = 7;
  spec.tracks = 1;
  spec.bits = 16;
  return spec;
}

TEST(Continuity, FindsNothingInCleanClips) {
  for (const Rate rate :
       {Rate::k24, Rate::k25, Rate::k30, Rate::k60, Rate::k23_98, Rate::k29_97, Rate::k59_94}) {
    SCOPED_TRACE(static_cast<int>(rate));
    for (const std::uint32_t frames : {1u, 2u, 3u, 150u}) {
      ExpectBreaks(Spec(rate, {10, 0, 58, 0}, frames), {});
      ExpectBreaks(Spec(rate, {23, 59, 58, 0}, frames), {});
    }
    ExpectBreaks(Spec(rate, {0, 9, 58, 0}, 150), {});
  }
}

std::uint32_t Word(std::uint32_t hours, std::uint32_t minutes, std::uint32_t seconds,
                   std::uint32_t frames) {
  const auto digits = [](std::uint32_t n) { return n / 10 << 4 | n % 10; };
  return digits(frames) | digits(seconds) << 8 | digits(minutes) << 16 | digits(hours) << 24;
}

TEST(Continuity, NamesEachBreakWithItsFrames) {
  const std::uint32_t start = 36000 * 25;
  ClipSpec still = Spec(Rate::k25, {});
  still.timecodeWords[9] = Word(10, 0, 0, 8);
  ExpectBreaks(still, {{8, 4, start + 8, start + 8}, {9, 2, start + 8, start + 10}});

  ClipSpec jump = Spec(Rate::k25, {});
  for (std::uint32_t f = 1; f < jump.frames; ++f)
    jump.timecodeWords[f] = Word(10, 0, (f + 4) / 25, (f + 4) % 25);
  ExpectBreaks(jump, {{0, 2, start, start + 5}});

  ClipSpec back = Spec(Rate::k25, {});
  back.timecodeWords[22] = Word(9, 59, 59, 24);
  ExpectBreaks(back, {{21, 3, start + 21, start - 1}});

  ClipSpec last = Spec(Rate::k59_94, {10, 0, 0, 0}, 9);
  const std::uint32_t start30 = 1078920;  // 10:00:00.00 in drop frame on base 30
  last.timecodeWords[8] = Word(10, 0, 0, 9);
  last.timecodeWords[7] = Word(12, 0, 0, 9);  // between two that are compared
  ExpectBreaks(last, {{6, 2, start30 + 3, start30 + 9}});

  // Without a word: every digit out of range.
  ClipSpec none = Spec(Rate::k25, {});
  none.timecodeWords[4] = none.timecodeWords[5] = 0xFFFFFFFF;
  ExpectBreaks(
      none, {{3, 2, start + 3, kInvalid}, {4, 4, kInvalid, kInvalid}, {5, 3, kInvalid, start + 6}});
}

TEST(Continuity, TakesMidnightForABreakOnlyWhereTheClipStartsEarlier) {
  ClipSpec early = Spec(Rate::k25, {22, 0, 0, 0});
  for (std::uint32_t f = 0; f < early.frames; ++f)
    early.timecodeWords[f] = f < 10 ? Word(23, 59, 59, 15 + f) : Word(0, 0, 0, f - 10);
  ExpectBreaks(early, {{9, 3, 24 * 3600 * 25 - 1, 0}});
  // The counts are those that were written.
  ClipSpec late = Spec(Rate::k25, {23, 59, 59, 15});
  late.timecodeWords[12] = Word(0, 0, 0, 7);
  late.timecodeWords[20] = 0xFFFFFFFF;
  ExpectBreaks(late, {{11, 2, 1, 7}, {12, 3, 7, 3}, {19, 2, 9, kInvalid}, {20, 3, kInvalid, 11}});
  // In drop frame on base 30, where an hour has 107892 frames.
  ClipSpec drop = Spec(Rate::k59_94, {23, 0, 0, 0}, 9);
  drop.timecodeWords[8] = Word(23, 0, 0, 9) | 0x8000;  // with the mark of a second field
  ExpectBreaks(drop, {{6, 2, 23 * 107892 + 3, 23 * 107892 + 9}});
  // Each value in two frames at 50: the hour is one of base 50 all the same.
  ClipSpec pairs = Spec(Rate::k50, {23, 59, 59, 0}, 120);
  for (std::uint32_t f = 0; f < pairs.frames; ++f) {
    const std::uint32_t value = f % 50 / 2;
    const std::uint32_t word = f < 50 ? Word(23, 59, 59, value) : Word(0, 0, f / 50 - 1, value);
    pairs.timecodeWords[f] = word ^ (f % 2 == 1 ? 0x80000000 : 0);
  }
  ExpectBreaks(pairs, {});
  pairs.timecodeWords[60] = Word(0, 0, 2, 0);
  ExpectBreaks(pairs, {{58, 2, 8, 100}, {60, 3, 100, 12}});
}

TEST(Continuity, ReadsFiftyFramesInEachSpelling) {
  constexpr std::uint32_t frames = 120;
  constexpr std::uint32_t start = 36000 * 50;
  // The tens digit 4 in the place of the drop frame flag; two frames a value with a field mark.
  ClipSpec tens = Spec(Rate::k50, {10, 0, 0, 0}, frames);
  ClipSpec pairs = tens;
  ClipSpec short39 = Spec(Rate::k50, {10, 0, 0, 5}, 30);
  for (std::uint32_t f = 0; f < frames; ++f) {
    tens.timecodeWords[f] = Word(10, 0, f / 50, f % 50);
    pairs.timecodeWords[f] = Word(10, 0, f / 50, f % 50 / 2) | (f % 2 == 0 ? 0x80000000 : 0);
  }
  ExpectBreaks(short39, {});
  for (std::uint32_t f = 0; f < short39.frames; ++f)  // a flag that is no digit
    short39.timecodeWords[f] = Word(10, 0, 0, f + 5) | 0x40;
  ExpectBreaks(short39, {});
  // Pairs without a mark, also with one bit of a word flipped; but no value in three frames.
  ClipSpec plain = Spec(Rate::k50, {10, 0, 0, 0}, 7);
  for (std::uint32_t f = 0; f < plain.frames; ++f)
    plain.timecodeWords[f] = Word(10, 0, 0, (f + 1) / 2);
  ExpectBreaks(plain, {});
  plain.timecodeWords[2] |= 0x80000000;
  ExpectBreaks(plain, {});
  plain.timecodeWords[2] = Word(10, 0, 0, 1);
  plain.timecodeWords[3] = Word(10, 0, 0, 1);
  ExpectBreaks(
      plain,
      {{1, 4, start + 1, start + 1}, {2, 4, start + 1, start + 1}, {5, 4, start + 3, start + 3}});
  // Two frames of the same word that is no timecode are no pair.
  ClipSpec noise = Spec(Rate::k50, {10, 0, 0, 0}, 2);
  noise.timecodeWords[0] = noise.timecodeWords[1] = 0x00007000;
  ExpectBreaks(noise, {{0, 4, kInvalid, kInvalid}});
  ExpectBreaks(tens, {});
  ExpectBreaks(pairs, {});
  tens.timecodeWords[45] = Word(10, 0, 0, 44);
  ExpectBreaks(tens, {{44, 4, start + 44, start + 44}, {45, 2, start + 44, start + 46}});
  for (std::uint32_t f = 60; f < frames; ++f)
    pairs.timecodeWords[f] = Word(10, 0, (f + 100) / 50, (f + 100) % 50 / 2);
  ExpectBreaks(pairs, {{58, 2, start + 58, start + 160}});
}

TEST(Continuity, StaysWithinTheClipWhateverItsIndexClaims) {
  ClipSpec spec = Spec(Rate::k25, {});
  spec.indexEdits.push_back([](auto& all) { all[0].duration = 0x7FFFFFFFFFFFFFFF; });
  ExpectBreaks(spec, {});
  // An entry that leads into the middle of another frame.
  ClipSpec astray = Spec(Rate::k25, {});
  astray.indexEdits.push_back([](auto& all) { all[1].entries[2].streamOffset += 77; });
  LoadedClip clip(astray);
  EXPECT_EQ(Check(&clip, false), kContinuityBreaks);
  const std::vector<Break> mapped = BreaksOf(clip.app.mxf.timecode);
  EXPECT_EQ(mapped.front().frame, 8u);
  EXPECT_EQ(Check(&clip, true), kContinuityBreaks);
  EXPECT_EQ(BreaksOf(clip.app.mxf.timecode), mapped);
}

TEST(Continuity, SurvivesAClipThatWasCutShort) {
  LoadedClip clip(Spec(Rate::k25, {}));
  std::filesystem::resize_file(platform::ToUtf8(clip.path), clip.clip.layout.frames[9].offset + 10);
  EXPECT_EQ(Check(&clip, false), kContinuityBreaks);
  EXPECT_EQ(Check(&clip, true), kContinuityBreaks);
  const std::vector<Break> breaks = BreaksOf(clip.app.mxf.timecode);
  EXPECT_EQ(breaks.size(), 14u);
  EXPECT_EQ(breaks.front(), (Break{8, 2, 36000 * 25 + 8, kInvalid}));
  std::filesystem::resize_file(platform::ToUtf8(clip.path), 0);
  EXPECT_EQ(Check(&clip, false), kContinuityNoMapping);
  EXPECT_EQ(Check(&clip, true), kContinuityBreaks);
}

TEST(Continuity, StopsWhenItIsAsked) {
  LoadedClip clip(Spec(Rate::k60, {}, 20000));
  MXF_TIMECODE_INFO& timecode = clip.app.mxf.timecode;
  for (const bool fileIo : {false, true}) {
    std::atomic<bool> ended = false;
    std::uint32_t cleared = 0;  // at the start and where it stops
    timecode.stopRequest = 1;
    std::thread operatorThread([&] {
      while (!ended)
        cleared += timecode.stopRequest.exchange(1) == 0;
    });
    EXPECT_EQ(Check(&clip, fileIo), kCancelled);
    ended = true;
    operatorThread.join();
    EXPECT_EQ(cleared + (timecode.stopRequest == 0), 2u);
    EXPECT_EQ(timecode.errorCount, 0u);
    EXPECT_EQ(timecode.errorList->next, nullptr);
    EXPECT_LT(timecode.progressFrame, 19999u);
  }
}

TEST(Continuity, RefusesWhatItCannotWorkWith) {
  ClipSpec spec = Spec(Rate::k25, {});
  spec.timecodeWords[9] = Word(12, 0, 0, 0);
  LoadedClip clip(spec);
  MXF_BASE_INFO& mxf = clip.app.mxf.base;
  EXPECT_EQ(CheckTimecodeContinuity(nullptr, &mxf), 1001);
  auto file = platform::File::Open(clip.path, platform::OpenMode::kReadAlone);
  EXPECT_EQ(CheckTimecodeContinuity(&file, nullptr), 1002);
  platform::File closed;
  EXPECT_EQ(CheckTimecodeContinuity(&closed, &mxf), 1001);
  const std::unique_ptr<INDEX_ENTRY_ARRAY[]> entries = std::move(*mxf.indexEntries);
  EXPECT_EQ(CheckTimecodeContinuity(&file, &mxf), 1005);
  mxf.indexEntries = nullptr;
  EXPECT_EQ(CheckTimecodeContinuity(&file, &mxf), 1005);
  mxf.audio = nullptr;
  EXPECT_EQ(CheckTimecodeContinuity(&file, &mxf), 1004);
  mxf.timecode = nullptr;
  EXPECT_EQ(CheckTimecodeContinuity(&file, &mxf), 1003);
}

}  // namespace
}  // namespace quorvan
