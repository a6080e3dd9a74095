// Clips that ffmpeg writes, with short lengths, and what ffmpeg finds in their conformed form.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "conform/conform.h"
#include "mxf/analysis.h"
#include "support/clip_builder.h"
#include "support/command.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

std::int32_t Analyze(const std::u16string& path, MxfRecords* records) {
  auto file = platform::File::Open(path, platform::OpenMode::kReadShared);
  records->timecode.useFileIo = Method::kGenericFileIo;
  return AnalyzeMxfFile(&file, &records->base);
}

// What ffmpeg tells of the packets of each stream, in their order.
using Packets = std::map<std::string, std::vector<std::string>>;

Packets PacketsOf(const std::string& path) {
  std::istringstream lines(
      RunCommand("ffmpeg -v error -i " + path + " -map 0 -c copy -f framemd5 -").output);
  Packets packets;
  for (std::string line; std::getline(lines, line);) {
    if (line[0] != '#') packets[line.substr(0, line.find(','))].push_back(line);
  }
  return packets;
}

// Takes the time of display out of the packets of the picture; returns all of them in their order.
std::vector<long> TakeDisplayTimes(Packets* packets) {
  std::vector<long> times;
  for (std::string& line : (*packets)["0"]) {
    const std::size_t start = line.find(',', line.find(',') + 1);
    const std::size_t end = line.find(',', start + 1);
    times.push_back(std::stol(line.substr(start + 1, end - start - 1)));
    line.erase(start, end - start);
  }
  std::sort(times.begin(), times.end());
  return times;
}

using Place = Bytes::const_iterator;

// The copy of a clip that ends at `end` holds the packets of its `frames` whole frames, and shows
// each picture in a frame of its own.
void ExpectFirstPackets(const Bytes& clip, Place end, std::size_t frames, Packets packets) {
  const TempFolder folder;
  const std::u16string in = folder.Write("cut.mxf", {clip.begin(), end});
  JobProgress progress;
  const ConformResult result = ConformClip({.in = in, .out = folder.PathOf("out.mxf")}, &progress);
  ASSERT_TRUE(result.IsDone()) << result.reason.en;
  EXPECT_EQ(result.frames, frames);
  for (auto& [stream, lines] : packets)
    lines.resize(std::min(lines.size(), frames));
  Packets copied = PacketsOf(folder.Path() / "out.mxf");
  std::vector<long> everyFrame(frames);
  std::iota(everyFrame.begin(), everyFrame.end(), 0);
  EXPECT_EQ(TakeDisplayTimes(&copied), everyFrame);
  TakeDisplayTimes(&packets);
  EXPECT_TRUE(copied == packets);
}

// A clip as it is when the recorder loses its power: without its end, and in a picture.
void ExpectFirstPacketsWhereverItEnds(const Bytes& clip, std::size_t frames,
                                      const Packets& packets) {
  constexpr std::array<std::uint8_t, 14> kFooter{0x06, 0x0E, 0x2B, 0x34, 2, 5, 1,
                                                 1,    0x0D, 1,    2,    1, 1, 4};
  constexpr std::array<std::uint8_t, 13> kPicture{0x06, 0x0E, 0x2B, 0x34, 1, 2,   1,
                                                  1,    0x0D, 1,    3,    1, 0x15};
  const auto footer = std::find_end(clip.begin(), clip.end(), kFooter.begin(), kFooter.end());
  ExpectFirstPackets(clip, footer, frames, packets);

  const auto cut = clip.begin() + static_cast<long>(clip.size() / 6 * 5);
  std::size_t whole = 0;
  auto picture = clip.begin();
  const auto next = [&](Place from) {
    return std::search(from, clip.end(), kPicture.begin(), kPicture.end());
  };
  for (picture = next(picture); picture < cut; picture = next(picture + 1))
    ++whole;
  ASSERT_LT(whole, frames);
  ExpectFirstPackets(clip, picture + 30, whole, packets);
}

class FfmpegClipConformed : public ::testing::TestWithParam<FfmpegClip> {};

TEST_P(FfmpegClipConformed, LoadsAfterwardsAndHoldsTheSameEssence) {
  const TempFolder folder;
  const std::string inName = folder.Path() / "in.mxf", outName = folder.Path() / "out.mxf";
  const std::u16string in = folder.PathOf("in.mxf"), out = folder.PathOf("out.mxf");
  ASSERT_EQ(MakeFfmpegClip(inName, GetParam()), "");
  MxfRecords refused, records;
  const std::int32_t code = Analyze(in, &refused);
  EXPECT_TRUE(code == kRandomIndexNotFound || code == kPrefaceNotFound) << code;
  JobProgress progress;
  const ConformResult result = ConformClip({.in = in, .out = out}, &progress);
  ASSERT_TRUE(result.IsDone()) << result.reason.en;
  ASSERT_EQ(Analyze(out, &records), 0);
  EXPECT_EQ(records.timecode.frameCount, records.timecode.duration);
  EXPECT_EQ(records.audio.trackCount, GetParam().tracks);
  EXPECT_EQ(records.timecode.startFrames % 36000, 0U);

  for (const char* question :
       {"ffmpeg -v error -ss 1.5 -i {} -map 0 -c copy -f framemd5 -",
        "ffprobe -v error -of json -show_streams -show_entries "
        "format=nb_streams,nb_programs,format_name,start_time,duration:format_tags {}"}) {
    const auto answer = [&](const std::string& path) {
      return RunCommand(fmt::format(fmt::runtime(question), path)).output;
    };
    const std::string before = answer(inName);
    EXPECT_NE(before, "");
    EXPECT_EQ(before, answer(outName)) << question;
  }

  const Packets packets = PacketsOf(inName);
  EXPECT_EQ(packets.size(), 1U + static_cast<unsigned>(GetParam().tracks));
  EXPECT_TRUE(PacketsOf(outName) == packets);
  ExpectFirstPacketsWhereverItEnds(ReadAll(inName), result.frames, packets);

  ASSERT_TRUE(ConformClip({.in = out, .out = folder.PathOf("twice.mxf")}, &progress).IsDone());
  EXPECT_EQ(ReadAll(outName), ReadAll(folder.Path() / "twice.mxf"));
}

INSTANTIATE_TEST_SUITE_P(All, FfmpegClipConformed,
                         ::testing::Values(FfmpegClip{"25", 12, 2, 24},
                                           FfmpegClip{"30000/1001", 3, 8, 16},
                                           FfmpegClip{"50", 2, 4, 24, true}));

}  // namespace
}  // namespace quorvan::test
