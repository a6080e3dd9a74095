#include "mxf/essence/continuity.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <thread>

#include "platform/text.h"
#include "support/loaded_clip.h"
#include "timecode/timecode.h"

namespace quorvan {
namespace {

using namespace test;

constexpr auto kInvalid = static_cast<std::uint32_t>(kInvalidTimecode);

// Frame before it, kind, and the counts before and behind it.
using Break = std::array<std::uint32_t, 4>;

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
  clip->app.mxf.timecode.useFileIo = fileIo ? Method::kGenericFileIo : Method::kMemoryMapping;
  auto file = platform::File::Open(clip->path, platform::OpenMode::kReadAlone);
  return CheckTimecodeContinuity(&file, &clip->app.mxf.base);
}

using Words = std::map<std::uint32_t, std::uint32_t>;  // by frame

Words WordsOf(std::uint32_t first, std::uint32_t end,
              const std::function<std::uint32_t(std::uint32_t frame)>& word) {
  Words words;
  for (std::uint32_t frame = first; frame < end; ++frame)
    words[frame] = word(frame);
  return words;
}

// The word of a frame count at 25 frames in a second.
std::uint32_t At25(std::uint32_t count) {
  return TimecodeWord(count, Rate::k25, false);
}

// Both ways of reading a clip with these words in place of its own come to these breaks.
void ExpectBreaks(ClipSpec spec, const Words& words, const std::vector<Break>& breaks) {
  for (const auto& [frame, word] : words)
    spec.timecodeWords[frame] = word;
  LoadedClip clip(spec);
  for (const bool fileIo : {false, true}) {
    DropFromMemory(clip.path);
    EXPECT_EQ(Check(&clip, fileIo), breaks.empty() ? 0 : kContinuityBreaks);
    EXPECT_EQ(BreaksOf(clip.app.mxf.timecode), breaks);
    EXPECT_EQ(clip.app.mxf.timecode.progressFrame, spec.frames - 1);
    EXPECT_EQ(clip.app.mxf.timecode.timecodeWords, nullptr);
  }
}

ClipSpec Spec(Rate rate, ClipTimecode start = ClipSpec().start, std::uint32_t frames = 23) {
  ClipSpec spec{.rate = rate,
                .dropFrame = true,
                .start = start,
                .frames = frames,
                .framesPerPartition = 7,
                .tracks = 1,
                .bits = 16};
  return spec;
}

TEST(Continuity, FindsNothingInCleanClips) {
  for (const Rate rate :
       {Rate::k24, Rate::k25, Rate::k30, Rate::k60, Rate::k23_98, Rate::k29_97, Rate::k59_94}) {
    SCOPED_TRACE(static_cast<int>(rate));
    for (const std::uint32_t frames : {1u, 2u, 3u})
      ExpectBreaks(Spec(rate, {10, 0, 58, 0}, frames), {}, {});
    for (const ClipTimecode start : {ClipTimecode{10, 0, 59, 0}, {0, 9, 59, 0}, {23, 59, 59, 0}})
      ExpectBreaks(Spec(rate, start, 70), {}, {});
  }
}

TEST(Continuity, NamesEachBreakWithItsFrames) {
  const ClipSpec spec = Spec(Rate::k25);
  constexpr std::uint32_t start = 36000 * 25;
  const auto fiveOn = [](std::uint32_t f) { return At25(start + f + 4); };
  ExpectBreaks(spec, {{9, 0x10000008}},
               {{8, 4, start + 8, start + 8}, {9, 2, start + 8, start + 10}});
  ExpectBreaks(spec, WordsOf(1, 23, fiveOn), {{0, 2, start, start + 5}});
  ExpectBreaks(spec, {{22, 0x09595924}}, {{21, 3, start + 21, start - 1}});
  // Without a word: every digit out of range.
  ExpectBreaks(
      spec, {{4, 0xFFFFFFFF}, {5, 0xFFFFFFFF}},
      {{3, 2, start + 3, kInvalid}, {4, 4, kInvalid, kInvalid}, {5, 3, kInvalid, start + 6}});
  // At 60 every second word counts; 10:00:00.00 in drop frame on base 30.
  constexpr std::uint32_t start30 = 1078920;
  ExpectBreaks(Spec(Rate::k59_94, {10, 0, 0, 0}, 9), {{7, 0x12000009}, {8, 0x10000009}},
               {{6, 2, start30 + 3, start30 + 9}});
}

TEST(Continuity, TakesMidnightForABreakOnlyWhereTheClipStartsEarlier) {
  constexpr std::uint32_t day = 24 * 3600 * 25;
  const auto overMidnight = [](std::uint32_t f) { return At25(day - 10 + f); };
  ExpectBreaks(Spec(Rate::k25, {22, 0, 0, 0}), WordsOf(0, 23, overMidnight), {{9, 3, day - 1, 0}});
  // The counts are those that were written.
  ExpectBreaks(Spec(Rate::k25, {23, 59, 59, 15}), {{12, 0x00000007}, {20, 0xFFFFFFFF}},
               {{11, 2, 1, 7}, {12, 3, 7, 3}, {19, 2, 9, kInvalid}, {20, 3, kInvalid, 11}});
  // In drop frame on base 30, where an hour has 107892 frames; with the mark of a second field.
  ExpectBreaks(Spec(Rate::k59_94, {23, 0, 0, 0}, 9), {{8, 0x23008009}},
               {{6, 2, 23 * 107892 + 3, 23 * 107892 + 9}});
  // Each value in two frames at 50: the hour is one of base 50 all the same.
  const auto pair = [](std::uint32_t f) {
    return At25(day - 25 + f / 2) ^ (f % 2 == 1 ? 0x80000000 : 0);
  };
  ClipSpec pairs = Spec(Rate::k50, {23, 59, 59, 0}, 120);
  pairs.timecodeWords = WordsOf(0, 120, pair);
  ExpectBreaks(pairs, {}, {});
  ExpectBreaks(pairs, {{60, 0x00000200}}, {{58, 2, 8, 100}, {60, 3, 100, 12}});
}

TEST(Continuity, ReadsFiftyFramesInEachSpelling) {
  constexpr std::uint32_t start = 36000 * 50;
  // Values up to 39, also with a flag that is no digit.
  const ClipSpec low = Spec(Rate::k50, {10, 0, 0, 5}, 30);
  ExpectBreaks(low, {}, {});
  ExpectBreaks(
      low,
      WordsOf(0, 30, [](auto f) { return TimecodeWord(start + f + 5, Rate::k50, false) | 0x40; }),
      {});
  // The tens digit 4 in the place of the drop frame flag.
  ExpectBreaks(Spec(Rate::k50, {10, 0, 0, 0}, 120), {{45, 0x10000044}},
               {{44, 4, start + 44, start + 44}, {45, 2, start + 44, start + 46}});
  // Two frames a value with a field mark.
  const auto half = [](std::uint32_t f) { return At25(start / 2 + f / 2); };
  ClipSpec pairs = Spec(Rate::k50, {10, 0, 0, 0}, 120);
  pairs.timecodeWords =
      WordsOf(0, 120, [&](auto f) { return half(f) | (f % 2 == 0 ? 0x80000000 : 0); });
  ExpectBreaks(pairs, {}, {});
  ExpectBreaks(pairs, WordsOf(60, 120, [&](auto f) { return half(f + 100); }),
               {{58, 2, start + 58, start + 160}});
  // Pairs without a mark, also with one bit of a word flipped; but no value in three frames.
  ClipSpec plain = Spec(Rate::k50, {10, 0, 0, 0}, 7);
  plain.timecodeWords = WordsOf(0, 7, [](auto f) { return At25(start / 2 + (f + 1) / 2); });
  ExpectBreaks(plain, {}, {});
  ExpectBreaks(plain, {{2, 0x90000001}}, {});
  ExpectBreaks(
      plain, {{3, 0x10000001}},
      {{1, 4, start + 1, start + 1}, {2, 4, start + 1, start + 1}, {5, 4, start + 3, start + 3}});
  // Two frames of the same word that is no timecode are no pair.
  ExpectBreaks(Spec(Rate::k50, {10, 0, 0, 0}, 2), {{0, 0x7000}, {1, 0x7000}},
               {{0, 4, kInvalid, kInvalid}});
}

TEST(Continuity, StaysWithinTheClipWhateverItsIndexClaims) {
  ClipSpec spec = Spec(Rate::k25);
  spec.indexEdits.push_back([](auto& all) { all[0].duration = 0x7FFFFFFFFFFFFFFF; });
  ExpectBreaks(spec, {}, {});
  // An entry that leads into the middle of another frame.
  ClipSpec astray = Spec(Rate::k25);
  astray.indexEdits.push_back([](auto& all) { all[1].entries[2].streamOffset += 77; });
  LoadedClip clip(astray);
  EXPECT_EQ(Check(&clip, false), kContinuityBreaks);
  const std::vector<Break> mapped = BreaksOf(clip.app.mxf.timecode);
  EXPECT_EQ(mapped.front()[0], 8u);
  EXPECT_EQ(Check(&clip, true), kContinuityBreaks);
  EXPECT_EQ(BreaksOf(clip.app.mxf.timecode), mapped);
}

TEST(Continuity, SurvivesAClipThatWasCutShort) {
  LoadedClip clip(Spec(Rate::k25));
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
  LoadedClip clip(LongClip());
  MXF_TIMECODE_INFO& timecode = clip.app.mxf.timecode;
  std::jthread operatorThread([&](const std::stop_token& ended) {
    while (!ended.stop_requested())
      timecode.stopRequest = 1;  // cleared at the start of each check
  });
  for (const bool fileIo : {false, true}) {
    std::int32_t result = 0;
    for (int attempt = 0; attempt < 100 && result != kCancelled; ++attempt)
      result = Check(&clip, fileIo);  // may be over before the operator's thread gets a turn
    EXPECT_EQ(result, kCancelled);
    EXPECT_EQ(timecode.errorCount, 0u);
    EXPECT_LT(timecode.progressFrame, 19999u);
  }
}

TEST(Continuity, RefusesWhatItCannotWorkWith) {
  LoadedClip clip(Spec(Rate::k25));
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
