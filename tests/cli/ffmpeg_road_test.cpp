// The whole road on clips that ffmpeg makes: conform, analyse, rewrite; every place and every
// sample against what ffmpeg's own demuxer and decoder find.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/clip_builder.h"
#include "support/command.h"
#include "support/golden.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

const std::string kCompanion = CompanionOf(COMPANION);

// A clip of ffmpeg's, what the analysis has to say of it, and the range that is rewritten: frames
// from 0, both included, and their timecodes.
struct Road {
  std::string name;
  FfmpegClip clip;
  std::uint32_t fpsIndex, rateIndex, dropFrame, startFrames, codecIndex;
  std::size_t inFrame, outFrame;
  std::string in, out;
};
void PrintTo(const Road& road, std::ostream* out) {
  *out << road.name;
}

std::vector<Road> Roads() {
  std::vector<Road> roads;
  std::istringstream rows(GoldenText("cli/golden/roads.txt"));
  for (Road r; rows >> r.name;) {
    FfmpegClip& clip = r.clip;
    rows >> clip.rate >> clip.seconds >> clip.tracks >> clip.bits >> clip.avcIntra >> clip.start;
    rows >> r.fpsIndex >> r.rateIndex >> r.dropFrame >> r.startFrames >> r.codecIndex;
    rows >> r.inFrame >> r.in >> r.outFrame >> r.out >> clip.picture;
    roads.push_back(r);
  }
  return roads;
}

class FfmpegRoad : public ::testing::TestWithParam<Road> {
 protected:
  std::string Path(const std::string& name) const { return (folder_.Path() / name).string(); }

  void SetUp() override {
    ASSERT_EQ(MakeFfmpegClip(Path("made.mxf"), GetParam().clip), "");
    const CommandResult conformed =
        RunCommand(kCompanion + " conform " + Path("made.mxf") + " " + Path("clip.mxf"));
    ASSERT_EQ(conformed.status, 0) << conformed.error;
  }

  // What a command says that has to succeed on the clip.
  std::string Run(const std::string& command, const std::string& arguments) const {
    const CommandResult result =
        RunCommand(kCompanion + " " + command + " " + Path("clip.mxf") + arguments);
    EXPECT_EQ(result.status, 0) << result.error;
    return result.output;
  }

  // The range as the companion takes it.
  std::string Points() const { return " --in " + GetParam().in + " --out " + GetParam().out; }

  std::string RawFormat() const { return "s" + std::to_string(GetParam().clip.bits) + "le"; }

  // Raw little-endian samples of all audio streams of the clip, as ffmpeg decodes them.
  std::vector<Bytes> DecodeTracks() const {
    std::string outputs;
    const int tracks = GetParam().clip.tracks;
    for (int t = 0; t < tracks; ++t) {
      outputs += " -map 0:a:" + std::to_string(t) + " -f " + RawFormat() + " " +
                 Path("raw" + std::to_string(t));
    }
    EXPECT_EQ(RunCommand("ffmpeg -v error -y -i " + Path("clip.mxf") + outputs).status, 0);
    std::vector<Bytes> samples(static_cast<std::size_t>(tracks));
    for (std::size_t t = 0; t < samples.size(); ++t)
      samples[t] = ReadAll(Path("raw" + std::to_string(t)));
    return samples;
  }

  // Has ffmpeg write noise of five seconds into a WAV file for each track, and as raw samples.
  void MakeSources() const {
    std::string inputs;
    std::string outputs;
    for (int t = 0; t < GetParam().clip.tracks; ++t) {
      const std::string n = std::to_string(t);
      inputs += " -f lavfi -i anoisesrc=r=48000:a=0.5:d=5:seed=" + n;
      outputs += " -map " + n + " -c:a pcm_" + RawFormat() + " " + Path("new" + n + ".wav");
      outputs += " -map " + n + " -f " + RawFormat() + " " + Path("new" + n + ".raw");
    }
    ASSERT_EQ(RunCommand("ffmpeg -v error -y" + inputs + outputs).status, 0);
  }

  void ExpectPlaces(const nlohmann::json& info) const;
  void ExpectPackets(const nlohmann::json& entries) const;
  void ExpectSamples(const nlohmann::json& entries) const;

  TempFolder folder_;
};

// Every field as ffmpeg finds it.
void FfmpegRoad::ExpectPlaces(const nlohmann::json& info) const {
  const Road& road = GetParam();
  const auto probe = nlohmann::json::parse(
      RunCommand("ffprobe -v error -of json -show_streams -show_format " + Path("clip.mxf"))
          .output);
  const auto& tags = probe["format"]["tags"];
  const auto& picture = probe["streams"][0];
  const auto& base = info["MXF_BASE_INFO"];
  const auto& timecode = info["MXF_TIMECODE_INFO"];
  const auto& audio = info["MXF_AUDIO_INFO"];
  const auto& video = info["MXF_VIDEO_INFO"];
  const auto text = [](const nlohmann::json& field, std::size_t count = std::string::npos) {
    return field.get<std::string>().substr(0, count);
  };
  const std::pair<nlohmann::json, nlohmann::json> fields[] = {
      {info["result"], 0},
      {timecode["fpsIndex"], road.fpsIndex},
      {timecode["rateIndex"], road.rateIndex},
      {timecode["dropFrame"], road.dropFrame},
      {timecode["startFrames"], road.startFrames},
      {timecode["editRateNumerator"].dump() + "/" + timecode["editRateDenominator"].dump(),
       picture["r_frame_rate"]},
      {audio["trackCount"], road.clip.tracks},
      {audio["quantizationBits"], road.clip.bits},
      {audio["blockAlign"], road.clip.bits / 8},
      {audio["sampleRate"].dump(), probe["streams"][1]["sample_rate"]},
      {video["codecIndex"], road.codecIndex},
      {video["width"], picture["width"]},
      {video["height"], picture["height"]},
      {"0x" + text(base["materialUmid"]), tags["material_package_umid"]},
      {"0x" + text(base["sourceUmid"]), picture["tags"]["file_package_umid"]},
      {base["fileSize"].dump(), probe["format"]["size"]},
      {text(base["companyName"], 6), tags["company_name"]},
      {text(base["productName"], 10), tags["product_name"]},
      {base["hasAncillaryData"], 0},
      // A body partition each ten seconds, between header and footer.
      {info["MXF_PARTITION_INFO"].size(), 2 + std::ceil(road.clip.seconds / 10.01)},
      {timecode["duration"], info["INDEX_ENTRY_ARRAY"].size()}};
  for (const auto& [found, wanted] : fields)
    EXPECT_EQ(found, wanted);
}

// Every element where ffmpeg finds its packet.
void FfmpegRoad::ExpectPackets(const nlohmann::json& entries) const {
  const FfmpegClip& clip = GetParam().clip;
  std::vector<std::size_t> seen(static_cast<std::size_t>(clip.tracks) + 1);
  std::istringstream lines(
      RunCommand("ffprobe -v error -of csv=p=0 -show_entries packet=stream_index,size,pos " +
                 Path("clip.mxf"))
          .output);
  std::size_t stream = 0, size = 0;
  std::uint64_t pos = 0;
  char comma = 0;
  for (; lines >> stream >> comma >> size >> comma >> pos; lines.ignore(1000, '\n')) {
    ASSERT_LT(stream, seen.size());
    const std::size_t frame = seen[stream]++;
    ASSERT_LT(frame, entries.size());
    const auto& e = entries[frame];
    const std::uint64_t slice = stream == 0 ? 0 : e["sliceOffset"].get<std::uint64_t>();
    const std::uint64_t delta = e["delta"][stream + 1]["elementDelta"];
    ASSERT_EQ(e["fileOffset"].get<std::uint64_t>() + slice + delta, pos)
        << "frame " << frame << " of stream " << stream;
    if (stream == 0) continue;
    ASSERT_EQ(e["audioSamples"].get<int>() * clip.bits / 8, static_cast<int>(size));
  }
  EXPECT_EQ(seen, std::vector<std::size_t>(seen.size(), entries.size()));
}

// The samples of a rewrite where ffmpeg decodes them.
void FfmpegRoad::ExpectSamples(const nlohmann::json& entries) const {
  const Road& road = GetParam();
  std::vector<Bytes> expected = DecodeTracks();
  MakeSources();
  std::size_t from = 0, bytes = 0;
  for (std::size_t f = 0; f <= road.outFrame; ++f) {
    (f < road.inFrame ? from : bytes) += entries[f]["audioSamples"].get<std::size_t>() *
                                         static_cast<std::size_t>(road.clip.bits) / 8;
  }
  // The last track of several stays as it is.
  const auto written = static_cast<std::size_t>(std::max(road.clip.tracks - 1, 1));
  std::string tracks;
  for (std::size_t t = 0; t < written; ++t) {
    const std::string source = Path("new" + std::to_string(t));
    tracks += " --track " + std::to_string(t + 1) + "=" + source + ".wav";
    Bytes wanted = ReadAll(source + ".raw");
    wanted.resize(bytes);  // silence behind its end
    std::copy(wanted.begin(), wanted.end(), expected[t].begin() + static_cast<long>(from));
  }
  const std::string method = road.clip.tracks % 3 == 1 ? "file --buffer 0" : "mapped";
  Run("rewrap", tracks + Points() + " --yes --method " + method);
  EXPECT_FALSE(ReadAll(Path("clip_LOG.txt")).empty());
  Run("verify", tracks + Points());
  const std::vector<Bytes> after = DecodeTracks();
  for (std::size_t t = 0; t < after.size(); ++t)
    ASSERT_TRUE(after[t] == expected[t]) << "track " << t + 1;

  // The same samples from BWF files.
  std::filesystem::create_directory(Path("out"));
  Run("export", " --tracks 1-" + std::to_string(after.size()) + " --folder " + Path("out") +
                    Points() + " --method " + (after.size() % 2 == 1 ? "file" : "mapped"));
  for (const std::size_t t : {std::size_t{0}, after.size() - 1}) {
    RunCommand("ffmpeg -v error -y -i " + Path("out/Track-" + std::to_string(t + 1) + ".wav") +
               " -f " + RawFormat() + " " + Path("exported"));
    const auto wanted = after[t].begin() + static_cast<long>(from);
    EXPECT_TRUE(ReadAll(Path("exported")) == Bytes(wanted, wanted + static_cast<long>(bytes)));
  }
  const std::string bits = std::to_string(road.clip.bits);
  const std::string samples = std::to_string(bytes * 8 / static_cast<std::size_t>(road.clip.bits));
  const std::string file = " " + Path("out/Track-1.wav");
  const std::string opinions =
      RunCommand("soxi" + file + "; sndfile-info" + file + "; sndfile-info --broadcast" + file +
                 "; mediainfo '--Output=Audio;%SamplingRate% %BitDepth% %Channels% "
                 "%SamplingCount%'" +
                 file)
          .output;
  for (const std::string& line : {"= " + samples + " samples", "Frames      : " + samples + "\n",
                                  std::string("Time ref   "), "48000 " + bits + " 1 " + samples})
    EXPECT_NE(opinions.find(line), std::string::npos) << line << opinions;
}

TEST_P(FfmpegRoad, HoldsFromConformToRewrite) {
  const auto info = nlohmann::json::parse(Run("info", " --json --index"));
  ExpectPlaces(info);
  ExpectPackets(info["INDEX_ENTRY_ARRAY"]);
  ExpectSamples(info["INDEX_ENTRY_ARRAY"]);
}

INSTANTIATE_TEST_SUITE_P(Clips, FfmpegRoad, ::testing::ValuesIn(Roads()),
                         [](const auto& road) { return road.param.name; });

}  // namespace
}  // namespace quorvan::test
