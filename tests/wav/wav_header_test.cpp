#include "wav/wav_header.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include <string>
#include <vector>

#include "platform/file.h"
#include "support/temp_folder.h"
#include "support/wav_builder.h"

namespace quorvan {
namespace {

using test::BuildWav;
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
    WavSpec spec;
    spec.channels = 6;
    spec.fmtSize = fmtSize;
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

TEST_F(WavHeader, TakesRf64SizesFromDs64) {
  WavSpec spec;
  spec.formId = "RF64";
  spec.timeReference = 0x123456789Aull;
  ASSERT_EQ(Read(spec), kWavOk);
  EXPECT_EQ(header_.isRF64, 1u);
  EXPECT_EQ(header_.hasBext, 1u);
  EXPECT_EQ(header_.dataChunkSize, 0xFFFFFFFFu);
  EXPECT_EQ(header_.ds64DataSize, file_.dataBytes);
  EXPECT_EQ(header_.ds64RiffSize, file_.bytes.size() - 8);
  EXPECT_EQ(header_.ds64SampleCount, 48000u);
  EXPECT_EQ(TimeReference(), 0x123456789Aull);
}

TEST_F(WavHeader, PassesUnknownChunksOfAnyClaimedSizeAcrossEveryReadBoundary) {
  for (std::size_t pad = 65536 - 64; pad < 65536 + 8; ++pad) {
    WavSpec spec;
    spec.sampleFrames = 1;
    spec.chunksBeforeData = {{"JUNK", std::vector<std::uint8_t>(pad, 'd'), 0xFFFFFFF0u}};
    ASSERT_EQ(Read(spec), kWavOk) << pad;
    EXPECT_EQ(header_.dataOffset, file_.dataOffset) << pad;
  }
}

TEST_F(WavHeader, TakesTheLettersOfATagInAnUnknownChunkForTheTag) {
  WavSpec spec;
  spec.chunksBeforeData = {{"note", Raw("..data\x10\1\1\1..."), {}}};
  ASSERT_EQ(Read(spec), kWavOk);
  EXPECT_EQ(header_.dataOffset, file_.fmtOffset + 16 + 8 + 2 + 8);
}

TEST_F(WavHeader, LooksAtNothingBehindTheHeadOfTheAudio) {
  WavSpec spec;
  spec.timeReference = 48000;
  spec.bextBehindData = true;
  ASSERT_EQ(Read(spec), kWavOk);
  EXPECT_EQ(header_.hasBext, 0u);
}

TEST_F(WavHeader, DoesNotScanTheBodiesOfKnownChunks) {
  WavSpec spec;
  spec.timeReference = 7;
  WavFile file = BuildWav(spec);
  const std::string falseTag = "data";
  std::copy(falseTag.begin(), falseTag.end(),
            file.bytes.begin() + static_cast<std::ptrdiff_t>(file.bextOffset) + 400);
  ASSERT_EQ(Read(file.bytes), kWavOk);
  EXPECT_EQ(header_.dataOffset, file.dataOffset);
}

TEST_F(WavHeader, RefusesWhatDoesNotBeginWithATag) {
  const std::string rows[] = {
      "", "R", "RIF", "XRIFF\1\1\1\1WAVE", "FORM\1\1\1\1RIFF", "fmt \3\1\1\1"};
  for (const std::string& row : rows) {
    const bool shortFmt = row.starts_with("fmt ");
    EXPECT_EQ(Read(Raw(row)), shortFmt ? kWavHeaderIncomplete : kWavNotWave) << row;
  }
}

TEST_F(WavHeader, RefusesAnIncompleteHeader) {
  EXPECT_EQ(Read(Raw("RIFF")), kWavHeaderIncomplete);
  EXPECT_EQ(Read(Raw("FORM\1\1\1")), kWavHeaderIncomplete);
  EXPECT_EQ(Read(Raw("RIFF\1\1\1\1WAVEfmt ")), kWavHeaderIncomplete);
  for (const std::string tag : {"ds64", "fmt ", "data"}) {
    WavSpec spec;
    spec.formId = "RF64";
    spec.omit = {tag};
    EXPECT_EQ(Read(spec), kWavHeaderIncomplete) << tag;
  }
  WavSpec noWave;
  noWave.waveId = "WAVY";
  EXPECT_EQ(Read(noWave), kWavHeaderIncomplete);
}

TEST_F(WavHeader, EveryCutBeforeTheAudioIsRefusedAndNoneBehindIt) {
  WavSpec spec;
  spec.formId = "RF64";
  spec.timeReference = 48000;
  spec.sampleFrames = 4;
  const WavFile whole = BuildWav(spec);
  for (std::size_t size = 0; size <= whole.bytes.size(); ++size) {
    const WavResult expected = size < 4                  ? kWavNotWave
                               : size < whole.dataOffset ? kWavHeaderIncomplete
                                                         : kWavOk;
    EXPECT_EQ(Read({whole.bytes.begin(), whole.bytes.begin() + static_cast<std::ptrdiff_t>(size)}),
              expected)
        << size;
  }
}

TEST_F(WavHeader, RefusesSamplesOfNoBytes) {
  const struct { std::uint16_t channels, blockAlign; } rows[] = {{1, 0}, {0, 3}, {4, 3}};
  for (const auto& row : rows) {
    WavSpec spec;
    spec.channels = row.channels;
    spec.blockAlign = row.blockAlign;
    EXPECT_EQ(Read(spec), kWavHeaderIncomplete) << row.channels;
  }
  WavSpec shortFmt;  // ends before the block size
  shortFmt.fmtSize = 8;
  EXPECT_EQ(Read(shortFmt), kWavHeaderIncomplete);
}

TEST_F(WavHeader, LeavesFieldsBehindAShortChunkAtZero) {
  WavSpec spec;
  spec.formId = "RF64";
  spec.ds64Size = 12;
  spec.timeReference = ~0ull;
  spec.bextSize = 344;
  ASSERT_EQ(Read(spec), kWavOk);
  EXPECT_EQ(header_.ds64RiffSize, file_.bytes.size() - 8);
  EXPECT_EQ(header_.ds64DataSize, 0u);
  EXPECT_EQ(TimeReference(), 0xFFFFFFFFu);
}

TEST_F(WavHeader, AKnownChunkThatClaimsMoreThanTheFileSwallowsTheRest) {
  for (const char* tag : {"ds64", "bext"}) {
    WavSpec spec;
    spec.chunksBeforeData = {{tag, std::vector<std::uint8_t>(8), 0xFFFFFFFFu}};
    EXPECT_EQ(Read(spec), kWavHeaderIncomplete) << tag;
  }
  WavSpec spec;
  spec.fmtClaim = 0xFFFFFFFFu;
  EXPECT_EQ(Read(spec), kWavHeaderIncomplete);
}

TEST_F(WavHeader, RefusesNullArgumentsAndFilesThatAreWritten) {
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
  EXPECT_EQ(ReadWavHeader(path.c_str(), &header_), kWavOk);
}

TEST_F(WavHeader, ReadsAStreamToTheEndOfTheFile) {
  for (const std::uint32_t claimed : {0u, 0xFFFFFFFFu}) {
    WavSpec stream;
    stream.sampleFrames = 100;
    stream.dataSize = claimed;
    EXPECT_EQ(Read(stream), kWavOk);
    EXPECT_EQ(AudioBytes(header_), 300u) << claimed;
  }
  WavSpec empty;
  empty.sampleFrames = 0;
  empty.chunksBehindData = {{"LIST", {1, 2, 3, 4}}};
  EXPECT_EQ(Read(empty), kWavOk);
  EXPECT_EQ(AudioBytes(header_), 0u) << "the chunk behind is no audio";
}

// Two terabytes without a tag.
TEST_F(WavHeader, StopsWhenItIsAsked) {
  const std::u16string path = folder_.Write("hole.wav", {'R', 'I', 'F', 'F', 0, 0, 0, 0});
  auto file = platform::File::Open(path, platform::OpenMode::kRewrite);
  if (!file.Resize(std::uint64_t{2} << 40)) GTEST_SKIP() << "no file of that size here";
  file.Close();
  std::atomic<std::uint32_t> stop = 0;
  WavResult result = kWavOk;
  std::thread reader([&] { result = ReadWavHeader(path.c_str(), &header_, &stop); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  stop = 1;
  const auto asked = std::chrono::steady_clock::now();
  reader.join();
  EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(1000));
  EXPECT_EQ(result, kWavStopped);
}

}  // namespace
}  // namespace quorvan
