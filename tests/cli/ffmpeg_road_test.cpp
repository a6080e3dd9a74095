// The whole road on clips that ffmpeg makes: conform, analyse, rewrite; every place and every
// sample against what ffmpeg's own demuxer and decoder find.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/clip_builder.h"
#include "support/command.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

struct Road {
  const char* name;
  FfmpegClip clip;
  // What the analysis has to say of it.
  std::uint32_t fpsIndex, rateIndex, dropFrame, startFrames, codecIndex;
};
void PrintTo(const Road& road, std::ostream* out) {
  *out << road.name;
}

constexpr std::uint32_t kHour23At25 = (23 * 3600 + 59 * 60 + 58) * 25;
const Road kRoads[] = {
    {"OneTrackAt24", {"24", 2, 1, 16}, 0, 0, 0, 864000, 1},
    {"TwoTracksAt25", {"25", 22, 2, 24}, 1, 1, 0, 900000, 1},
    {"FourTracksAt30", {"30", 2, 4, 16}, 2, 2, 0, 1080000, 1},
    {"EightTracksAt2398", {"24000/1001", 2.002, 8, 24}, 0, 5, 0, 864000, 1},
    {"SixteenTracksAt2997Drop",
     {"30000/1001", 4.004, 16, 24, false, "23:59:58;00"},
     2,
     6,
     1,
     2589348,
     1},
    {"TwentyFourTracksAt5994Drop",
     {"60000/1001", 2.002, 24, 24, false, "00:00:59;00"},
     4,
     7,
     1,
     3540,
     1},
    {"TwoTracksAt50", {"50", 3, 2, 24, false, "10:00:59:00"}, 3, 3, 0, 1802950, 1},
    {"AvcIntraAcrossMidnight", {"25", 4, 4, 24, true, "23:59:58:00"}, 1, 1, 0, kHour23At25, 5},
    {"TenMinutes",
     {"25", 600, 2, 16, false, "10:00:00:00", "color=c=gray:s=64x64"},
     1,
     1,
     0,
     900000,
     1},
};

class FfmpegRoad : public ::testing::TestWithParam<Road> {
 protected:
  std::string Path(const std::string& name) const { return (folder_.Path() / name).string(); }

  void SetUp() override {
    ASSERT_EQ(MakeFfmpegClip(Path("made.mxf"), GetParam().clip), "");
    const CommandResult conformed =
        RunCommand(COMPANION " conform " + Path("made.mxf") + " " + Path("clip.mxf"));
    ASSERT_EQ(conformed.status, 0) << conformed.error;
  }

  nlohmann::json Info() const {
    const CommandResult info = RunCommand(COMPANION " info --json --index " + Path("clip.mxf"));
    EXPECT_EQ(info.status, 0) << info.error;
    return nlohmann::json::parse(info.output);
  }

  std::string RawFormat() const { return "s" + std::to_string(GetParam().clip.bits) + "le"; }

  // Raw little-endian samples of all audio streams of the clip, as ffmpeg decodes them.
  std::vector<Bytes> DecodeTracks() const {
    std::string outputs;
    const int tracks = GetParam().clip.tracks;
    for (int t = 0; t < tracks; ++t) {
      outputs += " -map 0:a:" + std::to_string(t) + " -f " + RawFormat() + " " +
                 Path("raw" + std::to_string(t));
    }
    const CommandResult decoded = RunCommand("ffmpeg -v error -y -i " + Path("clip.mxf") + outputs);
    EXPECT_EQ(decoded.status, 0) << decoded.error;
    std::vector<Bytes> samples;
    samples.reserve(static_cast<std::size_t>(tracks));
    for (int t = 0; t < tracks; ++t)
      samples.push_back(ReadAll(Path("raw" + std::to_string(t))));
    return samples;
  }

  // Has ffmpeg write noise of 20 seconds into a WAV file for each track, and as raw samples.
  void MakeSources() const {
    std::string inputs;
    std::string outputs;
    for (int t = 0; t < GetParam().clip.tracks; ++t) {
      const std::string n = std::to_string(t);
      inputs += " -f lavfi -i anoisesrc=r=48000:a=0.5:d=20:seed=" + n;
      outputs += " -map " + n + " -c:a pcm_" + RawFormat() + " " + Path("new" + n + ".wav");
      outputs += " -map " + n + " -f " + RawFormat() + " " + Path("new" + n + ".raw");
    }
    const CommandResult made = RunCommand("ffmpeg -v error -y" + inputs + outputs);
    ASSERT_EQ(made.status, 0) << made.error;
  }

  std::string PictureChecksum() const {
    return RunCommand("ffmpeg -v error -i " + Path("clip.mxf") + " -map 0:v -c copy -f md5 -")
        .output;
  }

  void ExpectPlaces(const Road& road);
  void ExpectSamples(const Road& road);
  void ExpectReadableBwf(const std::string& file, std::size_t samples);
  void ExpectExports(const std::string& range, std::size_t samplesBefore, std::size_t samples);

  TempFolder folder_;
};

// Every element and field where ffmpeg finds it.
void FfmpegRoad::ExpectPlaces(const Road& road) {
  const nlohmann::json info = Info();
  EXPECT_EQ(info["result"], 0);
  EXPECT_EQ(info["MXF_TIMECODE_INFO"]["fpsIndex"], road.fpsIndex);
  EXPECT_EQ(info["MXF_TIMECODE_INFO"]["rateIndex"], road.rateIndex);
  EXPECT_EQ(info["MXF_TIMECODE_INFO"]["dropFrame"], road.dropFrame);
  EXPECT_EQ(info["MXF_TIMECODE_INFO"]["startFrames"], road.startFrames);
  EXPECT_EQ(info["MXF_AUDIO_INFO"]["trackCount"], road.clip.tracks);
  EXPECT_EQ(info["MXF_AUDIO_INFO"]["quantizationBits"], road.clip.bits);
  EXPECT_EQ(info["MXF_VIDEO_INFO"]["codecIndex"], road.codecIndex);
  EXPECT_EQ(info["MXF_BASE_INFO"]["materialUmid"].get<std::string>().size(), 64u);

  const CommandResult probed =
      RunCommand("ffprobe -v error -of json -show_streams -show_format " + Path("clip.mxf"));
  const nlohmann::json probe = nlohmann::json::parse(probed.output);
  const auto& tags = probe["format"]["tags"];
  const auto& picture = probe["streams"][0];
  const auto& base = info["MXF_BASE_INFO"];
  const auto& video = info["MXF_VIDEO_INFO"];
  const auto hex = [](const nlohmann::json& umid) { return "0x" + umid.get<std::string>(); };
  EXPECT_EQ(hex(base["materialUmid"]), tags["material_package_umid"]);
  EXPECT_EQ(hex(base["sourceUmid"]), picture["tags"]["file_package_umid"]);
  EXPECT_EQ(base["fileSize"].dump(), probe["format"]["size"].get<std::string>());
  EXPECT_EQ(base["companyName"].get<std::string>().substr(0, 6), tags["company_name"]);
  EXPECT_EQ(base["productName"].get<std::string>().substr(0, 10), tags["product_name"]);
  EXPECT_EQ(base["hasAncillaryData"], 0);
  EXPECT_EQ(video["width"], picture["width"]);
  EXPECT_EQ(video["height"], picture["height"]);
  EXPECT_EQ(info["MXF_TIMECODE_INFO"]["editRateNumerator"].dump() + "/" +
                info["MXF_TIMECODE_INFO"]["editRateDenominator"].dump(),
            picture["r_frame_rate"]);
  EXPECT_EQ(info["MXF_AUDIO_INFO"]["blockAlign"], road.clip.bits / 8);
  EXPECT_EQ(info["MXF_AUDIO_INFO"]["sampleRate"].dump(),
            probe["streams"][1]["sample_rate"].get<std::string>());
  // A body partition each ten seconds, between header and footer.
  EXPECT_EQ(info["MXF_PARTITION_INFO"].size(), 2 + std::ceil(road.clip.seconds / 10.01));

  const auto& entries = info["INDEX_ENTRY_ARRAY"];
  const CommandResult packets =
      RunCommand("ffprobe -v error -of csv=p=0 -show_entries packet=stream_index,size,pos " +
                 Path("clip.mxf"));
  ASSERT_EQ(packets.status, 0) << packets.error;
  std::vector<std::size_t> seen(static_cast<std::size_t>(road.clip.tracks) + 1);
  std::istringstream lines(packets.output);
  std::size_t stream = 0, size = 0;
  std::uint64_t pos = 0;
  char comma = 0;
  while (lines >> stream >> comma >> size >> comma >> pos) {
    ASSERT_LT(stream, seen.size());
    const std::size_t frame = seen[stream]++;
    ASSERT_LT(frame, entries.size());
    const auto& e = entries[frame];
    const std::uint64_t start = e["fileOffset"];
    if (stream == 0) {
      ASSERT_EQ(start + e["delta"][1]["elementDelta"].get<std::uint64_t>(), pos) << frame;
      continue;
    }
    const std::uint64_t slice = e["sliceOffset"];
    ASSERT_EQ(start + slice + e["delta"][stream + 1]["elementDelta"].get<std::uint64_t>(), pos)
        << "frame " << frame << " of stream " << stream;
    ASSERT_EQ(e["audioSamples"].get<std::size_t>() * static_cast<std::size_t>(road.clip.bits) / 8,
              size);
    lines.ignore(1000, '\n');
  }
  for (const std::size_t frames : seen)
    EXPECT_EQ(frames, entries.size());
  EXPECT_EQ(info["MXF_TIMECODE_INFO"]["duration"], entries.size());
}

// The samples of a rewrite where ffmpeg decodes them, and the picture as it was.
void FfmpegRoad::ExpectSamples(const Road& road) {
  const auto entries = Info()["INDEX_ENTRY_ARRAY"];
  const std::size_t frames = entries.size();
  const std::size_t in = frames / 4;
  const std::size_t out = frames / 2;
  const std::uint32_t start = road.startFrames;
  const std::string picture = PictureChecksum();
  const std::vector<Bytes> before = DecodeTracks();
  MakeSources();
  std::string tracks;
  for (int t = 0; t < road.clip.tracks; ++t) {
    // The last track of several stays as it is.
    if (t > 0 && t + 1 == road.clip.tracks) break;
    tracks += " --track " + std::to_string(t + 1) + "=" + Path("new" + std::to_string(t) + ".wav");
  }
  // The points as the companion shows them, so that drop frame and midnight are written as the
  // operator would.
  const auto timecode = [&](std::size_t frame) {
    const std::uint32_t base[] = {24, 25, 30, 50, 60};
    std::uint32_t label = start + static_cast<std::uint32_t>(frame);
    if (road.dropFrame == 1) {
      const std::uint32_t scale = road.fpsIndex == 4 ? 2 : 1;
      const std::uint32_t tens = label / (17982 * scale);
      const std::uint32_t rest = label % (17982 * scale);
      const std::uint32_t minutes =
          rest < 1800 * scale ? 0 : 1 + (rest - 1800 * scale) / (1798 * scale);
      label += scale * (18 * tens + 2 * minutes);
    }
    const std::uint32_t seconds = label / base[road.fpsIndex];
    char text[32];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u:%02u", seconds / 3600 % 24, seconds / 60 % 60,
                  seconds % 60, label % base[road.fpsIndex]);
    return std::string(text);
  };
  const std::string range = " --in '" + timecode(in) + "' --out '" + timecode(out) + "'";
  const std::string method = road.clip.tracks % 3 == 1 ? "file --buffer 0" : "mapped";
  const CommandResult rewrapped = RunCommand(COMPANION " rewrap " + Path("clip.mxf") + tracks +
                                             range + " --yes --method " + method);
  ASSERT_EQ(rewrapped.status, 0) << rewrapped.error;
  EXPECT_FALSE(ReadAll(Path("clip_LOG.txt")).empty());
  const CommandResult verified =
      RunCommand(COMPANION " verify " + Path("clip.mxf") + tracks + range);
  EXPECT_EQ(verified.status, 0) << verified.error;

  std::size_t samplesBefore = 0, samples = 0;
  for (std::size_t f = 0; f <= out; ++f) {
    (f < in ? samplesBefore : samples) += entries[f]["audioSamples"].get<std::size_t>();
  }
  const std::size_t width = static_cast<std::size_t>(road.clip.bits) / 8;
  const std::vector<Bytes> after = DecodeTracks();
  for (int t = 0; t < road.clip.tracks; ++t) {
    Bytes expected = before[static_cast<std::size_t>(t)];
    if (t == 0 || t + 1 < road.clip.tracks) {
      Bytes wanted = ReadAll(Path("new" + std::to_string(t) + ".raw"));
      wanted.resize(samples * width);  // silence behind its end
      std::copy(wanted.begin(), wanted.end(),
                expected.begin() + static_cast<long>(samplesBefore * width));
    }
    ASSERT_TRUE(after[static_cast<std::size_t>(t)] == expected) << "track " << t + 1;
  }
  EXPECT_EQ(PictureChecksum(), picture);
  ExpectExports(range, samplesBefore, samples);
}

// BWF files of all tracks as other programs read them.
void FfmpegRoad::ExpectExports(const std::string& range, std::size_t samplesBefore,
                               std::size_t samples) {
  const FfmpegClip& clip = GetParam().clip;
  std::filesystem::create_directory(Path("out"));
  const CommandResult exported =
      RunCommand(COMPANION " export " + Path("clip.mxf") + " --tracks 1-" +
                 std::to_string(clip.tracks) + " --folder " + Path("out") + range + " --method " +
                 (clip.tracks % 2 == 1 ? "file" : "mapped"));
  ASSERT_EQ(exported.status, 0) << exported.error;
  const std::size_t width = static_cast<std::size_t>(clip.bits) / 8;
  const std::vector<Bytes> decoded = DecodeTracks();
  for (std::size_t t = 0; t < decoded.size(); ++t) {
    const std::string file = Path("out/Track-" + std::to_string(t + 1) + ".wav");
    const std::string raw = Path("exported.raw");
    ASSERT_EQ(RunCommand("ffmpeg -v error -y -i " + file + " -f " + RawFormat() + " " + raw).status,
              0);
    const auto from = decoded[t].begin() + static_cast<long>(samplesBefore * width);
    ASSERT_TRUE(ReadAll(raw) == Bytes(from, from + static_cast<long>(samples * width)))
        << "track " << t + 1;
  }
  ExpectReadableBwf(Path("out/Track-1.wav"), samples);
}

void FfmpegRoad::ExpectReadableBwf(const std::string& file, std::size_t samples) {
  const auto probe = nlohmann::json::parse(
      RunCommand("ffprobe -v error -of json -show_streams -show_format " + file).output);
  const auto& stream = probe["streams"][0];
  const std::string bits = std::to_string(GetParam().clip.bits);
  EXPECT_EQ(stream["codec_name"], "pcm_s" + bits + "le");
  EXPECT_EQ(stream["sample_rate"], "48000");
  EXPECT_EQ(stream["channels"], 1);
  EXPECT_EQ(stream["duration_ts"], samples);
  const std::string reference = probe["format"]["tags"]["time_reference"];

  const auto soxi = [&](const std::string& what) {
    const std::string text = RunCommand("soxi -" + what + " " + file).output;
    return text.substr(0, text.find('\n'));
  };
  EXPECT_EQ(soxi("r") + " " + soxi("c") + " " + soxi("b") + " " + soxi("s"),
            "48000 1 " + bits + " " + std::to_string(samples));

  char sndfileReference[48];
  const std::uint64_t position = std::stoull(reference);
  std::snprintf(sndfileReference, sizeof sndfileReference, "Time ref                 : 0x%x%08x ",
                static_cast<unsigned>(position >> 32), static_cast<unsigned>(position));
  const std::string sndfile = RunCommand("sndfile-info --broadcast " + file).output +
                              RunCommand("sndfile-info " + file).output;
  EXPECT_NE(sndfile.find(sndfileReference), std::string::npos) << sndfile;
  EXPECT_NE(sndfile.find("Frames      : " + std::to_string(samples)), std::string::npos) << sndfile;

  const CommandResult media = RunCommand(
      "mediainfo '--Output=Audio;%SamplingRate% %BitDepth% %Channels% %SamplingCount% "
      "%Delay/String4%' " +
      file);
  EXPECT_EQ(media.output.find("48000 " + bits + " 1 " + std::to_string(samples)), 0u)
      << media.output;
}

TEST_P(FfmpegRoad, HoldsFromConformToRewrite) {
  ExpectPlaces(GetParam());
  ExpectSamples(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Clips, FfmpegRoad, ::testing::ValuesIn(kRoads),
                         [](const auto& road) { return std::string(road.param.name); });

}  // namespace
}  // namespace quorvan::test
