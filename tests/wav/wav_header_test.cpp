#include "wav/wav_header.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/file.h"
#include "support/temp_folder.h"
#include "support/wav_builder.h"

namespace quorvan {
namespace {

using test::BuildWav;
using test::WavChunk;
using test::WavFile;
using test::WavSpec;

std::vector<std::uint8_t> Raw(const std::string& text) {
  return {text.begin(), text.end()};
}

class WavHeader : public ::testing::Test {
 protected:
  WavResult Read(const std::vector<std::uint8_t>& bytes) {
    header_ = {};
    return ReadWavHeader(folder_.Write("a.wav", bytes).c_str(), &header_);
  }

  WavResult Read(const WavSpec& spec) {
    file_ = BuildWav(spec);
    return Read(file_.bytes);
  }

  std::uint64_t TimeReference() const {
    return static_cast<std::uint64_t>(header_.timeReferenceHigh) << 32 | header_.timeReferenceLow;
  }

  test::TempFolder folder_;
  WavFile file_;
  WAV_HEADER_INFO header_{};
};

TEST_F(WavHeader, ReadsFormatAndAudioPlaceWhateverTheFmtSize) {
  for (const std::uint32_t fmtSize : {16u, 18u, 40u, 200u}) {
    WavSpec spec{.channels = 6, .fmtSize = fmtSize};
    ASSERT_EQ(Read(spec), kWavOk) << fmtSize;
    EXPECT_EQ(header_.formatTag, 1);
    EXPECT_EQ(header_.channels, 6);
    EXPECT_EQ(header_.sampleRate, 48000u);
    EXPECT_EQ(header_.avgBytesPerSec, 48000u * 18);
    EXPECT_EQ(header_.blockAlign, 18);
    EXPECT_EQ(header_.bitsPerSample, 24);
    EXPECT_EQ(header_.dataOffset, file_.dataOffset);
    EXPECT_EQ(header_.dataChunkSize, file_.dataBytes);
    EXPECT_EQ(header_.riffSize, file_.bytes.size() - 8);
    EXPECT_EQ(header_.isRF64 | header_.hasBext, 0u);
  }
}

// The long size counts in RF64 and nowhere else; without any the audio goes on to the end of the
// file, in whole samples.
TEST_F(WavHeader, KnowsTheBytesOfAudioByTheSizeThatCounts) {
  constexpr std::uint32_t kElsewhere = 0xFFFFFFFF;
  using Row = std::tuple<std::string, std::uint32_t, std::uint64_t, std::uint64_t, std::uint64_t>;
  const Row rows[] = {
      {"RIFF", 120, 60, 120, 0},         {"RIFF", 0, 60, 300, 0},
      {"RIFF", kElsewhere, 60, 300, 0},  {"RIFF", kElsewhere, 60, 297, 1},
      {"RF64", kElsewhere, 300, 300, 0}, {"RF64", kElsewhere, 1ull << 33, 1ull << 33, 0},
      {"RF64", 120, 60, 60, 0},          {"RF64", 0, 0, 300, 0},
      {"RF64", 0, ~0ull, 299 / 3 * 3, 2}};
  for (const auto& [form, dataSize, longSize, bytes, cut] : rows) {
    WavFile file = BuildWav(
        {.formId = "RF64", .sampleFrames = 100, .dataSize = dataSize, .ds64DataSize = longSize});
    std::copy_n(form.begin(), 4, file.bytes.begin());
    file.bytes.resize(file.bytes.size() - cut);
    EXPECT_EQ(Read(file.bytes), kWavOk);
    EXPECT_EQ(AudioBytes(header_), bytes) << form << dataSize << ' ' << longSize;
    EXPECT_EQ(header_.isRF64, form[1] == 'F');
    header_.timeReferenceLow = 99;  // counts only with a bext
    EXPECT_EQ(ComputeWavPosition(&header_, 1, 1, 0), 1);
    EXPECT_EQ(header_.samplePosition[1], bytes / 3);
  }
  // An empty data chunk with a chain of chunks to the end of the file is no stream.
  const std::tuple<std::vector<WavChunk>, std::size_t, std::uint64_t> empty[] = {
      {{{"LIST", {1, 2, 3, 4}}}, 0, 0},
      {{{"LIST", {1, 2, 3}}}, 1, 0},  // without its pad
      {{{"LIST", {1, 2, 3, 4}}, {"note", {1}}}, 0, 0},
      {{{"LIST", {1, 2, 3, 4}, 5}}, 0, 12},
      {{{"LIST", {1, 2, 3, 4}, 2}}, 0, 12}};
  for (const auto& [behind, cut, bytes] : empty) {
    WavFile file = BuildWav({.sampleFrames = 0, .chunksBehindData = behind});
    file.bytes.resize(file.bytes.size() - cut);
    EXPECT_EQ(Read(file.bytes), kWavOk);
    EXPECT_EQ(AudioBytes(header_), bytes) << behind.back().id << cut;
  }
}

TEST_F(WavHeader, PassesUnknownChunksOfAnyClaimedSizeAcrossEveryReadBoundary) {
  constexpr std::size_t kBlock = 65536;
  const std::size_t beforeTag = 44;  // and the next block begins with the last three bytes
  for (const std::size_t edge : {kBlock, 2 * kBlock - 3}) {
    for (std::size_t pad = edge - beforeTag - 16; pad < edge - beforeTag + 8; ++pad) {
      WavSpec spec{
          .sampleFrames = 1,
          .chunksBeforeData = {{"JUNK", std::vector<std::uint8_t>(pad, 'd'), 0xFFFFFFF0u}}};
      ASSERT_EQ(Read(spec), kWavOk) << pad;
      EXPECT_EQ(header_.dataOffset, file_.dataOffset) << pad;
    }
  }
}

TEST_F(WavHeader, TakesTheLettersOfATagInAnUnknownChunkForTheTag) {
  WavSpec spec{.chunksBeforeData = {{"note", Raw("..data\x10\1\1\1..."), {}}}};
  ASSERT_EQ(Read(spec), kWavOk);
  EXPECT_EQ(header_.dataOffset, file_.fmtOffset + 16 + 8 + 2 + 8);
}

// Neither the bodies of known chunks nor anything behind the head of the audio.
TEST_F(WavHeader, DoesNotScanWhatItNeedNot) {
  WavSpec spec{.timeReference = 0x123456789Aull};
  WavFile file = BuildWav(spec);
  std::copy_n("data", 4, file.bytes.begin() + static_cast<std::ptrdiff_t>(file.bextOffset) + 400);
  ASSERT_EQ(Read(file.bytes), kWavOk);
  EXPECT_EQ(header_.dataOffset, file.dataOffset);
  EXPECT_EQ(header_.hasBext, 1u);
  EXPECT_EQ(TimeReference(), 0x123456789Aull);
  spec.bextBehindData = true;
  ASSERT_EQ(Read(spec), kWavOk);
  EXPECT_EQ(header_.hasBext, 0u);
}

TEST_F(WavHeader, TellsWhatIsNoWaveFromAnIncompleteHeader) {
  for (const char* text : {"", "R", "RIF", "XRIFF\1\1\1\1WAVE", "FORM\1\1\1\1RIFF"})
    EXPECT_EQ(Read(Raw(text)), kWavNotWave) << text;
  for (const char* text : {"RIFF", "FORM\1\1\1", "RIFF\1\1\1\1WAVEfmt ", "fmt \3\1\1\1"})
    EXPECT_EQ(Read(Raw(text)), kWavHeaderIncomplete) << text;
  const auto swallowing = [](const char* tag) {
    return WavChunk{tag, std::vector<std::uint8_t>(8), 0xFFFFFFFFu};
  };
  const std::function<void(WavSpec&)> faults[] = {
      [](WavSpec& w) { w.channels = 0, w.blockAlign = 3; },
      [](WavSpec& w) { w.channels = 4, w.blockAlign = 3; },
      [](WavSpec& w) { w.fmtSize = 8; },  // ends before the block size
      [&](WavSpec& w) { w.chunksBeforeData = {swallowing("ds64")}; },
      [&](WavSpec& w) { w.chunksBeforeData = {swallowing("bext")}; },
      [&](WavSpec& w) { w.chunksBeforeData = {swallowing("fmt ")}; },
  };
  for (const auto& fault : faults) {
    WavSpec spec{.formId = "RF64"};
    fault(spec);
    EXPECT_EQ(Read(spec), kWavHeaderIncomplete) << &fault - faults;
  }
  WavSpec rf64{.formId = "RF64"};
  const WavFile whole = BuildWav(rf64);
  for (const std::size_t tag :
       {std::size_t{8}, std::size_t{12}, whole.fmtOffset - 8, whole.dataOffset - 8}) {
    std::vector<std::uint8_t> unknown = whole.bytes;
    unknown[tag] = 'x';
    EXPECT_EQ(Read(unknown), kWavHeaderIncomplete) << tag;
  }
}

TEST_F(WavHeader, EveryCutBeforeTheAudioIsRefusedAndNoneBehindIt) {
  WavSpec spec{.formId = "RF64", .sampleFrames = 4, .timeReference = 48000};
  ASSERT_EQ(Read(spec), kWavOk);
  for (std::size_t size = file_.bytes.size(); size-- > 0;) {
    std::filesystem::resize_file(folder_.Path() / "a.wav", size);
    const WavResult refused = size < 4 ? kWavNotWave : kWavHeaderIncomplete;
    EXPECT_EQ(ReadWavHeader(folder_.PathOf("a.wav").c_str(), &header_),
              size < file_.dataOffset ? refused : kWavOk)
        << size;
  }
}

TEST_F(WavHeader, ReadsNothingWithoutArgumentsOrWhileItIsWrittenOrStopped) {
  const std::u16string path = folder_.Write("held.wav", BuildWav({}).bytes);
  EXPECT_EQ(ReadWavHeader(nullptr, &header_), kWavNoPath);
  EXPECT_EQ(ReadWavHeader(path.c_str(), nullptr), kWavNoRecord);
  EXPECT_EQ(ReadWavHeader(folder_.PathOf("none.wav").c_str(), &header_), kWavCannotOpen);
  platform::File reader = platform::File::Open(path, platform::OpenMode::kReadShared);
  EXPECT_EQ(ReadWavHeader(path.c_str(), &header_), kWavOk) << "another program reads it, too";
  reader.Close();
  platform::File held = platform::File::Open(path, platform::OpenMode::kRewrite);
  ASSERT_TRUE(held.IsOpen());
  EXPECT_EQ(ReadWavHeader(path.c_str(), &header_), kWavCannotOpen);
  held.Close();
  const std::atomic<std::uint32_t> stop = 1;
  EXPECT_EQ(ReadWavHeader(path.c_str(), &header_, &stop), kWavStopped);
}

}  // namespace
}  // namespace quorvan
