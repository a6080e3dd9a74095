#include "wav/wav_library.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/failing_memory.h"
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

  std::u16string Column(WavColumn column) const { return head_.prev->columnText[column]; }

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
      {kWavOtherWidth, [](WavSpec& w) { w.blockAlign = 2; }},
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
    EXPECT_EQ(WavFailureText(cases[i].first, u"p").empty(), cases[i].first == kWavOk);
  }
}

TEST_F(WavLibrary, StaysAsItWasWhenMemoryIsOut) {
  ASSERT_EQ(Add("a"), kWavOk);
  const std::u16string path = folder_.Write("b", BuildWav({}).bytes);
  WavResult result = kWavNoMemory;
  for (int nth = 1; result != kWavOk; ++nth) {
    EXPECT_EQ(result, kWavNoMemory);
    EXPECT_EQ(Names(), "a");
    test::FailAllocation(nth);
    result = AddWavFile(path.c_str(), &head_, mxf_.base);
    ASSERT_EQ(test::AllocationFailed(), result != kWavOk);
  }
  test::FailAllocation(0);
  EXPECT_EQ(Names(), "ab");
}

TEST_F(WavLibrary, RefusesAPathThatItCouldOnlyKeepCutShort) {
  const std::u16string path = folder_.Write("a", BuildWav({}).bytes);
  const std::size_t slash = path.rfind(u'/');
  const auto withLength = [&](std::size_t length) {
    return path.substr(0, slash) + std::u16string(length - path.size(), u'/') + path.substr(slash);
  };
  EXPECT_EQ(AddWavFile(withLength(1024).c_str(), &head_, mxf_.base), kWavPathTooLong);
  ASSERT_EQ(AddWavFile(withLength(1023).c_str(), &head_, mxf_.base), kWavOk);
  EXPECT_EQ(std::u16string(head_.next->filePath), withLength(1023));
}

TEST_F(WavLibrary, FillsColumnsAndKeysForTheTable) {
  WavSpec spec;
  spec.timeReference = 48000ull * 3600 + 500;
  spec.sampleFrames = 24000;
  const std::u16string path = folder_.Write("take.wav", BuildWav(spec).bytes);
  auto file = platform::File::Open(path, platform::OpenMode::kRewrite);
  const platform::FileTimes times{file.Times()->creation, 117000000000000000, 118000000000000000};
  ASSERT_TRUE(file.SetTimes(times));
  file.Close();
  ASSERT_EQ(AddWavFile(path.c_str(), &head_, mxf_.base), kWavOk);
  EXPECT_EQ(Column(kNameColumn), u"take.wav");
  EXPECT_EQ(Column(kChannelsColumn), u" 1");
  EXPECT_EQ(Column(kBitsColumn), u"24");
  EXPECT_EQ(Column(kSampleRateColumn), u"48000");
  EXPECT_EQ(Column(kStartColumn), u"01:00:00:00 *0500");
  EXPECT_EQ(Column(kEndColumn), u"01:00:00:12 *1460");
  EXPECT_EQ(Column(kDurationColumn), u"00:00:00:12 *0960");
  EXPECT_EQ(Column(kUpdatedColumn).size(), 19u);
  EXPECT_EQ(Column(kSizeColumn), u"70.95 KB");
  const std::vector<std::uint64_t> keys = {
      1, 24, 48000, 90000, 90012, 12, times.creation, times.lastWrite, 72654};
  EXPECT_EQ(std::vector(std::begin(head_.next->sortKey), std::end(head_.next->sortKey)), keys);

  mxf_.timecode.dropFrame = 255;  // shows as drop frame, counts as none
  ASSERT_EQ(Add("drop.wav", spec), kWavOk);
  EXPECT_EQ(Column(kStartColumn), u"01:00:00.00 *0500");
}

TEST_F(WavLibrary, SortsALengthAcrossMidnightAsNegative) {
  WavSpec spec;
  spec.timeReference = 48000ull * (24 * 3600 - 1) + 1;
  spec.sampleFrames = 96000;
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

  test::FailAllocation(1);
  EXPECT_EQ(BuildWavIndex(&head_, std::move(index)), nullptr);
  ASSERT_TRUE(test::AllocationFailed());
  EXPECT_EQ(Names(), "ad") << "the list outlives its index";
  index = BuildWavIndex(&head_, nullptr);

  EXPECT_EQ(FreeWavList(&head_), 1);
  EXPECT_EQ(FreeWavList(&head_), 0);
  EXPECT_EQ(FreeWavList(nullptr), 0);
  EXPECT_EQ(head_.entryCount, 0);
  EXPECT_EQ(BuildWavIndex(&head_, std::move(index)), nullptr);
}

TEST(SizeText, StepsUnitsBy1024AndNeverBeyondGigabytes) {
  const struct {
    std::uint64_t size;
    const char16_t* text;
  } rows[] = {
      {0, u"0.00 bytes"},
      {1023, u"1023.00 bytes"},
      {1024, u"1.00 KB"},
      {1536, u"1.50 KB"},
      {(1ull << 20) - 1, u"1024.00 KB"},
      {1ull << 20, u"1.00 MB"},
      {(1ull << 30) - 1, u"1024.00 MB"},
      {1ull << 30, u"1.00 GB"},
      {1ull << 40, u"1024.00 GB"},
      {~0ull, u"17179869184.00 GB"},
  };
  for (const auto& row : rows) {
    char16_t buffer[64];
    EXPECT_EQ(FormatFileSize(row.size, buffer, 64), 0);
    EXPECT_EQ(std::u16string(buffer), row.text) << row.size;
  }
}

TEST(SizeText, StaysInsideAShortBuffer) {
  char16_t buffer[5] = {u'x', u'x', u'x', u'x', u'x'};
  EXPECT_EQ(FormatFileSize(1024, buffer, 4), 0);
  EXPECT_EQ(std::u16string(buffer), u"1.0");
  EXPECT_EQ(buffer[4], u'x');
  EXPECT_EQ(FormatFileSize(1024, buffer, 0), 0);
  EXPECT_EQ(FormatFileSize(1, nullptr, 16), 1);
}

TEST(WavFailureText, FillsInPathAndCodeOnce) {
  EXPECT_EQ(WavFailureText(kWavNoPath, u"p"), u"ファイルパスが無効です。\nERR: 1");
  EXPECT_EQ(WavFailureText(kWavHeaderIncomplete, u"p"),
            u"p\n\n最低限のヘッダー情報が見つかりません。");
  EXPECT_EQ(WavFailureText(kWavAlreadyAdded, u"/%d/%s"),
            u"/%d/%s\n\nすでに追加されています。\nERR: 91");
  EXPECT_EQ(WavFailureText(kWavOk, u"p"), u"");
}

}  // namespace
}  // namespace quorvan
