// Writes the seeds of the fuzz targets: clips into FOLDER/mxf and WAV files into FOLDER/wav.

#include <filesystem>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "support/clip_builder.h"
#include "support/temp_folder.h"
#include "support/wav_builder.h"

namespace quorvan::fuzz {
namespace {

using Seeds = std::vector<std::pair<std::string, std::vector<std::uint8_t>>>;

Seeds WavSeeds() {
  test::WavSpec plain;
  plain.sampleFrames = 8;

  test::WavSpec broadcast = plain;
  broadcast.channels = 2;
  broadcast.fmtSize = 40;
  broadcast.timeReference = 48000ull * 3600 * 23 + 1600;

  test::WavSpec large = broadcast;
  large.formId = "RF64";
  large.chunksFirst = {{"JUNK", std::vector<std::uint8_t>(5, 'd'), 0xFFFFFFFFu}};

  test::WavSpec late = broadcast;
  late.bextBehindData = true;

  test::WavSpec noAudio = plain;
  noAudio.omit = {"data"};

  test::WavSpec shortFmt = plain;
  shortFmt.fmtSize = 2;

  return {{"plain", BuildWav(plain).bytes},          {"broadcast", BuildWav(broadcast).bytes},
          {"large", BuildWav(large).bytes},          {"late", BuildWav(late).bytes},
          {"no_audio", BuildWav(noAudio).bytes},     {"short_fmt", BuildWav(shortFmt).bytes},
          {"form", {'F', 'O', 'R', 'M', 0, 0, 0, 0}}};
}

Seeds ClipSeeds() {
  test::ClipSpec small;
  small.rate = test::Rate::k60;
  small.frames = 4;
  small.framesPerPartition = 2;
  small.tracks = 2;
  small.bits = 16;
  small.kagSize = small.elementKag = 256;
  small.pictureSize = 64;
  small.pictureStep = 16;

  test::ClipSpec drop = small;
  drop.rate = test::Rate::k59_94;
  drop.dropFrame = true;
  drop.start = {23, 59, 59, 59};
  drop.waveAudio = true;
  drop.codec = 5;
  drop.indexPlacement = test::IndexPlacement::kFollowingAndFooter;

  test::ClipSpec data = small;
  data.dataTrack = data.dataElement = true;
  data.indexPlacement = test::IndexPlacement::kFooter;
  data.posTableCount = 1;

  test::ClipSpec wholeFrames = small;
  wholeFrames.sliceCount = 0;
  wholeFrames.umidSize = 64;
  wholeFrames.fillBetweenSegments = true;

  return {{"small", BuildClip(small).bytes},
          {"drop", BuildClip(drop).bytes},
          {"data", BuildClip(data).bytes},
          {"whole_frames", BuildClip(wholeFrames).bytes}};
}

bool WriteSeeds(const std::filesystem::path& folder, const Seeds& seeds) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  for (const auto& [name, bytes] : seeds) {
    if (!test::WriteBytes(folder / name, bytes)) return false;
  }
  return true;
}

}  // namespace
}  // namespace quorvan::fuzz

int main(int argc, char** argv) {
  using namespace quorvan::fuzz;
  if (argc != 2) {
    std::cerr << "usage: make_seeds FOLDER\n";
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  const bool written =
      WriteSeeds(folder / "mxf", ClipSeeds()) && WriteSeeds(folder / "wav", WavSeeds());
  return written ? 0 : 1;
}
