#include "wav/wav_library.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/path.h"
#include "platform/text.h"
#include "support/golden.h"
#include "support/temp_folder.h"
#include "support/wav_builder.h"
#include "wav/size_text.h"

namespace quorvan {
namespace {

using test::BuildWav;
using test::WavSpec;

class WavLibrary : public ::testing::Test {
 protected:
  WavLibrary() {
    mxf_.audio.sampleRate = 48000;
    mxf_.audio.quantizationBits = 24;
    mxf_.audio.blockAlign = 3;
    mxf_.timecode.rateIndex = 1;
    mxf_.timecode.fpsIndex = 1;
  }
  ~WavLibrary() override { FreeWavList(&head_); }

  WavResult Add(const std::string& name, const WavSpec& spec = {}) {
    return AddWavFile(folder_.Write(name, BuildWav(spec).bytes).c_str(), &head_, mxf_.base);
  }

  std::string Names() const {
    std::string names;
    for (const WAV_FILE_INFO* entry = head_.next; entry != nullptr; entry = entry->next) {
      for (const char16_t c : std::u16string(entry->fileName))
        names += static_cast<char>(c);
      EXPECT_EQ(entry->prev->next, entry);
      EXPECT_EQ(entry->listHead, &head_);
    }
    return names;
  }

  test::TempFolder folder_;
  MxfRecords mxf_;
  WAV_FILE_INFO head_{};
};

TEST_F(WavLibrary, RefusesWhatDoesNotFitAndGoesOnWithTheNext) {
  WavSpec wrongRate, tooWide, tooMany, widest;
  wrongRate.sampleRate = 44100;
  tooWide.bits = 32;
  tooMany.channels = 9;
  widest.channels = 8;
  widest.bits = 16;
  EXPECT_EQ(Add("a"), kWavOk);
  EXPECT_EQ(Add("x", wrongRate), kWavOtherSampleRate);
  EXPECT_EQ(Add("y", tooWide), kWavTooManyBits);
  EXPECT_EQ(Add("z", tooMany), kWavTooManyChannels);
  EXPECT_EQ(Add("a"), kWavAlreadyAdded);
  EXPECT_EQ(AddWavFile(folder_.PathOf("none").c_str(), &head_, mxf_.base), kWavNotFound);
  EXPECT_EQ(AddWavFile(folder_.PathOf("").c_str(), &head_, mxf_.base), kWavInUse);
  EXPECT_EQ(AddWavFile(nullptr, &head_, mxf_.base), kWavNoPath);
  EXPECT_EQ(AddWavFile(u"a", nullptr, mxf_.base), kWavNoLibrary);
  EXPECT_EQ(Add("b", widest), kWavOk);
  EXPECT_EQ(Names(), "ab");
  EXPECT_EQ(head_.entryCount, 2);
  EXPECT_EQ(head_.prev->bytesPerChannelSample, 2);
}

// What a rewrite would refuse is refused at once, with words that fit.
TEST_F(WavLibrary, RefusesFilesThatNoRewriteTakes) {
  const auto format = [](std::uint16_t tag, std::uint16_t subFormat, std::uint32_t fmtSize) {
    return [=](WavSpec& w) {
      w.formatTag = tag;
      w.subFormat = subFormat;
      w.fmtSize = fmtSize;
    };
  };
  const auto chunk = [](const char* id, const std::string& body) {
    return [=](WavSpec& w) { w.chunksBeforeData = {{id, {body.begin(), body.end()}}}; };
  };
  const std::string otherFormat("fmt \x10\0\0\0\1\0\2\0\x80\xBB\0\0\0\xEE\2\0\4\0\x10\0", 24);
  const std::pair<WavResult, std::function<void(WavSpec&)>> cases[] = {
      {kWavOtherWidth, [](WavSpec& w) { w.bits = 8; }},
      {kWavOtherWidth, [](WavSpec& w) { w.blockAlign = 4; }},
      {kWavNotPcm, format(0xF1AC, 1, 16)},
      {kWavNotPcm, format(0xFFFE, 3, 40)},
      {kWavOk, format(0xFFFE, 1, 40)},
      {kWavOk, format(0xFFFE, 3, 18)},  // which has no room to say it
      {kWavOk, format(1, 3, 40)},       // says it where only the extensible format does
      {kWavCutShort, [](WavSpec& w) { w.dataSize = 200000; }},
      {kWavCutShort,
       [](WavSpec& w) {
         w.sampleFrames = 0;
         w.chunksBehindData = {{"LIST", {1, 2, 3, 4}}};
       }},
      {kWavOk,  // a stream without a size whose sound has the form of letters
       [](WavSpec& w) {
         w.dataSize = 0;
         w.sample = [](std::uint32_t, std::uint64_t) { return 0x434241; };
       }},
      {kWavOk,  // without a size in ds64: to the end of the file
       [](WavSpec& w) {
         w.formId = "RF64";
         w.ds64DataSize = 0;
       }},
      {kWavChunksDiffer, chunk("_PMX", "MetadataDate")},
      {kWavChunksDiffer, chunk("LIST", otherFormat)},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    WavSpec spec;
    cases[i].second(spec);
    EXPECT_EQ(Add(std::to_string(i), spec), cases[i].first) << i;
  }
}

TEST_F(WavLibrary, RefusesAPathThatItCouldOnlyKeepCutShort) {
  const std::u16string path = folder_.Write("a", BuildWav({}).bytes);
  const std::size_t slash = path.size() - platform::LastComponent(path).size() - 1;
  const auto withLength = [&](std::size_t length) {
    return path.substr(0, slash) + std::u16string(length - path.size(), path[slash]) +
           path.substr(slash);
  };
  EXPECT_EQ(AddWavFile(withLength(1024).c_str(), &head_, mxf_.base), kWavPathTooLong);
  ASSERT_EQ(AddWavFile(withLength(1023).c_str(), &head_, mxf_.base), kWavOk);
  EXPECT_EQ(std::u16string(head_.next->filePath), withLength(1023));
}

TEST_F(WavLibrary, FillsColumnsAndKeysForTheTable) {
  WavSpec spec{.sampleFrames = 24000, .timeReference = 48000ull * 3600 + 500};
  const std::u16string path = folder_.Write("take.wav", BuildWav(spec).bytes);
  auto file = platform::File::Open(path, platform::OpenMode::kRewrite);
  ASSERT_TRUE(file.SetTimes({0, 117000000000000000, 118000000000000000}));
  const platform::FileTimes times = file.Times().value();
  file.Close();
  ASSERT_EQ(AddWavFile(path.c_str(), &head_, mxf_.base), kWavOk);
  const auto& text = head_.next->columnText;
  std::u16string row;
  for (const WavColumn column : {kNameColumn, kChannelsColumn, kBitsColumn, kSampleRateColumn,
                                 kStartColumn, kEndColumn, kDurationColumn, kSizeColumn})
    row.append(text[column]).append(u"|");
  EXPECT_EQ(
      row, u"take.wav| 1|24|48000|01:00:00:00 *0500|01:00:00:12 *1460|00:00:00:12 *0960|70.95 KB|");
  EXPECT_EQ(std::u16string_view(text[kUpdatedColumn]).size(), 19u);
  const std::vector<std::uint64_t> keys = {
      1, 24, 48000, 90000, 90012, 12, times.creation, times.lastWrite, 72654};
  EXPECT_EQ(std::vector(std::begin(head_.next->sortKey), std::end(head_.next->sortKey)), keys);

  mxf_.timecode.dropFrame = 255;  // shows as drop frame, counts as none
  ASSERT_EQ(Add("drop.wav", spec), kWavOk);
  EXPECT_EQ(std::u16string(head_.prev->columnText[kStartColumn]), u"01:00:00.00 *0500");
}

TEST_F(WavLibrary, SortsALengthAcrossMidnightAsNegative) {
  WavSpec spec{.sampleFrames = 96000, .timeReference = 48000ull * (24 * 3600 - 1) + 1};
  ASSERT_EQ(Add("a", spec), kWavOk);
  EXPECT_EQ(head_.next->durationFrames, 50u);
  EXPECT_EQ(static_cast<std::int64_t>(head_.next->sortKey[SortKeyOf(kDurationColumn)]),
            50 - 24 * 3600 * 25);
}

TEST_F(WavLibrary, IndexFollowsTheList) {
  EXPECT_EQ(BuildWavIndex(&head_, nullptr), nullptr);
  for (const char* name : {"a", "b", "c"})
    ASSERT_EQ(Add(name), kWavOk);
  WavIndex index = BuildWavIndex(&head_, nullptr);
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(index[2], head_.prev);
  EXPECT_EQ(index[1]->listIndex, 1u);

  EXPECT_EQ(RemoveWavEntry(index[1]), index[2]);
  EXPECT_EQ(Names(), "ac");
  EXPECT_EQ(RemoveWavEntry(index[2]), nullptr);
  ASSERT_EQ(Add("d"), kWavOk);
  EXPECT_EQ(Names(), "ad");
  index = BuildWavIndex(&head_, std::move(index), 2);
  EXPECT_EQ(index[1]->listIndex, 1u);
  EXPECT_EQ(index[3], nullptr);

  EXPECT_EQ(FreeWavList(&head_), 1);
  EXPECT_EQ(FreeWavList(&head_), 0);
  EXPECT_EQ(head_.entryCount, 0);
  EXPECT_EQ(BuildWavIndex(&head_, std::move(index)), nullptr);
}

TEST(SizeText, StepsUnitsBy1024AndStaysInsideTheBuffer) {
  for (const auto& row : test::GoldenRows("wav/golden/size_texts.txt")) {
    char16_t buffer[64];
    EXPECT_EQ(FormatFileSize(std::stoull(platform::ToUtf8(row[0])), buffer, 64), 0);
    EXPECT_EQ(std::u16string(buffer), row[1]);
  }
  char16_t shorter[5] = {u'x', u'x', u'x', u'x', u'x'};
  EXPECT_EQ(FormatFileSize(1024, shorter, 4), 0);
  EXPECT_EQ(std::u16string(shorter), u"1.0");
  EXPECT_EQ(shorter[4], u'x');
}

TEST(WavFailureText, FillsInPathAndCodeOnce) {
  std::string page;
  for (int code = 0; code < 100; ++code) {
    const std::u16string text = WavFailureText(code, u"/%d/%s");
    if (!text.empty()) page += std::to_string(code) + '\n' + platform::ToUtf8(text) + "\n\n";
  }
  EXPECT_EQ(page, test::GoldenText("wav/golden/failure_texts.txt"));
}

}  // namespace
}  // namespace quorvan
