#include "job/process_table.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/text.h"
#include "support/golden.h"

namespace quorvan {
namespace {

using platform::Language;
using platform::ToUtf8;

constexpr std::u16string_view kFiller = u"エラーコード未定です。";
constexpr std::u16string_view kEnglishFiller = u"There is no text for this error code.";

// The page names each stage, a number that is none at the end, and every result with a text there.
TEST(FailureText, IsTheOneOfItsResultInEveryStage) {
  std::string page;
  for (const std::uint32_t stage : {0u, 100u, 200u, 300u, 400u, 500u, 600u, 700u, 800u, 900u, 1000u,
                                    2000u, 3000u, 4000u, 5000u, 6000u, 1234u}) {
    page += std::to_string(stage) + " \"" + ToUtf8(StageName(stage)) + "\" \"" +
            ToUtf8(StageText(stage)) + "\"\n";
    for (std::int32_t result = -1; result < 7000; ++result) {
      const std::u16string_view text = FailureText(stage, result);
      EXPECT_EQ(text == kFiller, FailureText(stage, result, Language::kEnglish) == kEnglishFiller);
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
std::u16string MessagesIn(Language language) {
  std::u16string page =
      LoadFailureMessage(u"/clips/A%s.mxf", 900, 901, Method::kGenericFileIo, false, language) +
      u"\n===\n" + LoadFailureMessage(u"/A.mxf", 500, 510, Method::kMemoryMapping, true, language) +
      u"\n===";
  AUDIOTRACK_IO_INFO tracks{};
  MXF_TIMECODE_INFO timecode{};
  timecode.fpsIndex = 1;
  timecode.startFrames = 90000;
  tracks.inFrame = {90010, 90010};
  page += WrittenFrames(tracks, timecode, 2018, language) + u"\n===";
  tracks.fault.framesBegun = 5;
  page += WrittenFrames(tracks, timecode, 2024, language) + u"\n===";
  page += WrittenFrames(tracks, timecode, 3027, language) + u"\n===";
  tracks.inFrame = {2159998, 2159998};  // up to midnight and behind it
  page += WrittenFrames(tracks, timecode, 2024, language) + u"\n===";
  page += FaultDetails(tracks.fault, timecode, language) + u"\n===";
  tracks.fault.frame = 3;
  std::u16string(u"/a/b.wav").copy(tracks.fault.path, 9);
  page += FaultDetails(tracks.fault, timecode, language) + u"\n===\n";
  for (const UmidState state : {kUmidsKept, kUmidsOld, kUmidsMixed, kUmidsUndated, kUmidsUnknown}) {
    for (const bool hasLog : {false, true})
      page += JobNoticeMessage(u"/A.mxf", state, hasLog, language) + u"\n===\n";
  }
  for (const bool keepsUmids : {false, true})
    page.append(BackupQuestion(keepsUmids, language)).append(u"\n");
  return page;
}

TEST(Messages, SayWhatTheOperatorHasToKnow) {
  EXPECT_EQ(ToUtf8(MessagesIn(Language::kJapanese)), test::GoldenText("job/golden/messages.txt"));
  EXPECT_EQ(ToUtf8(MessagesIn(Language::kEnglish)), test::GoldenText("job/golden/messages_en.txt"));
}

}  // namespace
}  // namespace quorvan
