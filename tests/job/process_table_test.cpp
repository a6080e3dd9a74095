#include "job/process_table.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/text.h"
#include "support/golden.h"

namespace quorvan {
namespace {

using platform::ToUtf8;

constexpr std::u16string_view kFiller = u"エラーコード未定です。";

// The page names each stage, a number that is none at the end, and every result with a text there.
TEST(FailureText, IsTheOneOfItsResultInEveryStage) {
  std::string page;
  for (const std::uint32_t stage : {0u, 100u, 200u, 300u, 400u, 500u, 600u, 700u, 800u, 900u, 1000u,
                                    2000u, 3000u, 4000u, 5000u, 6000u, 1234u}) {
    page += std::to_string(stage) + " \"" + ToUtf8(StageName(stage)) + "\" \"" +
            ToUtf8(StageText(stage)) + "\"\n";
    for (std::int32_t result = -1; result < 7000; ++result) {
      const std::u16string_view text = FailureText(stage, result);
      if (text != kFiller) page += std::to_string(result) + " " + ToUtf8(text) + "\n";
    }
    page += "\n";
  }
  EXPECT_EQ(page, test::GoldenText("job/golden/failure_texts.txt"));
  EXPECT_EQ(FailureText(100, std::numeric_limits<std::int32_t>::min()), kFiller);
  EXPECT_EQ(FailureText(std::numeric_limits<std::uint32_t>::max(), -1), kFiller);
}

// The name of the clip as it is, how much of it has changed, which frame and file are at fault, and
// which UMIDs it holds.
TEST(Messages, SayWhatTheOperatorHasToKnow) {
  std::u16string page =
      LoadFailureMessage(u"/clips/A%s.mxf", 900, 901, Method::kGenericFileIo) + u"\n===\n" +
      LoadFailureMessage(u"/A.mxf", 500, 510, Method::kMemoryMapping, true) + u"\n===";
  AUDIOTRACK_IO_INFO tracks{};
  MXF_TIMECODE_INFO timecode{};
  timecode.fpsIndex = 1;
  timecode.startFrames = 90000;
  tracks.inFrame = {90010, 90010};
  page += WrittenFrames(tracks, timecode, 2018) + u"\n===";
  tracks.fault.framesBegun = 5;
  page += WrittenFrames(tracks, timecode, 2024) + u"\n===";
  page += WrittenFrames(tracks, timecode, 3027) + u"\n===";
  tracks.inFrame = {2159998, 2159998};  // up to midnight and behind it
  page += WrittenFrames(tracks, timecode, 2024) + u"\n===";
  page += FaultDetails(tracks.fault, timecode) + u"\n===";
  tracks.fault.frame = 3;
  std::u16string(u"/a/b.wav").copy(tracks.fault.path, 9);
  page += FaultDetails(tracks.fault, timecode) + u"\n===\n";
  for (const UmidState state : {kUmidsKept, kUmidsOld, kUmidsMixed, kUmidsUndated, kUmidsUnknown}) {
    for (const bool hasLog : {false, true})
      page += JobNoticeMessage(u"/A.mxf", state, hasLog) + u"\n===\n";
  }
  for (const bool keepsUmids : {false, true})
    page.append(BackupQuestion(keepsUmids)).append(u"\n");
  EXPECT_EQ(ToUtf8(page), test::GoldenText("job/golden/messages.txt"));
}

}  // namespace
}  // namespace quorvan
