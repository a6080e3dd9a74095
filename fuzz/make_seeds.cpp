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

using test::Bytes;
using Seeds = std::vector<std::pair<std::string, Bytes>>;

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

test::ClipSpec SmallClip() {
  test::ClipSpec small;
  small.rate = test::Rate::k60;
  small.frames = 4;
  small.framesPerPartition = 2;
  small.tracks = 2;
  small.bits = 16;
  small.kagSize = small.elementKag = 256;
  small.pictureSize = 64;
  small.pictureStep = 16;
  return small;
}

Seeds ClipSeeds() {
  const test::ClipSpec small = SmallClip();

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

// Clips as other writers lay them out.
Seeds LayoutSeeds() {
  test::ClipSpec plain = SmallClip();
  plain.references = true;

  test::ClipSpec inTurn = plain;
  inTurn.setsInTurn = inTurn.metadataEverywhere = true;

  test::ClipSpec segments = plain;
  segments.framesPerSegment = 3;
  segments.indexPlacement = test::IndexPlacement::kFooter;

  test::ClipSpec oneSegment = plain;
  oneSegment.frames = 6;
  oneSegment.framesPerSegment = 6;
  oneSegment.indexPlacement = test::IndexPlacement::kFollowingAndFooter;

  test::ClipSpec constant = plain;
  constant.constantBytes = true;
  constant.framesPerPartition = 0;

  test::ClipSpec constantUneven = constant;
  constantUneven.rate = test::Rate::k59_94;
  constantUneven.patternStart = 3;
  constantUneven.framesPerPartition = 2;

  test::ClipSpec slices = plain;
  slices.rate = test::Rate::k29_97;
  slices.noFill = true;
  slices.audioSlices = 2;

  test::ClipSpec packed = plain;
  packed.noFill = true;
  packed.systemElement = false;

  test::ClipSpec unaligned = plain;
  unaligned.kagSize = 1;
  unaligned.indexPlacement = test::IndexPlacement::kOwnPartition;

  test::ClipSpec uneven = plain;
  uneven.rate = test::Rate::k59_94;
  uneven.patternStart = 2;
  uneven.elementKag = 0;

  test::ClipSpec lengths = plain;
  lengths.mixedLengths = lengths.mixedElementLengths = true;
  lengths.dataTrack = lengths.dataElement = true;

  test::ClipSpec lengthsPacked = plain;
  lengthsPacked.mixedElementLengths = true;
  lengthsPacked.noFill = true;
  lengthsPacked.systemElement = false;

  return {{"in_turn", BuildClip(inTurn).bytes},
          {"segments", BuildClip(segments).bytes},
          {"one_segment", BuildClip(oneSegment).bytes},
          {"constant", BuildClip(constant).bytes},
          {"constant_uneven", BuildClip(constantUneven).bytes},
          {"slices", BuildClip(slices).bytes},
          {"packed", BuildClip(packed).bytes},
          {"unaligned", BuildClip(unaligned).bytes},
          {"uneven", BuildClip(uneven).bytes},
          {"lengths", BuildClip(lengths).bytes},
          {"lengths_packed", BuildClip(lengthsPacked).bytes}};
}

// Gives the pictures of `clip` the headers `heads`, in turn.
Bytes WithPictures(test::Clip clip, const std::vector<Bytes>& heads) {
  const auto& frames = clip.layout.frames;
  for (std::size_t i = 0; i < frames.size(); ++i)
    test::Patch(clip.bytes, frames[i].picture.value, heads[i % heads.size()]);
  return std::move(clip.bytes);
}

// A clip without an index table, whose pictures are those of a coding.
Seeds PictureSeeds() {
  test::ClipSpec mpeg = SmallClip();
  mpeg.references = true;
  mpeg.indexEdits = {[](std::vector<test::IndexSegment>& segments) { segments.clear(); }};
  test::ClipSpec avc = mpeg;
  avc.codec = 5;
  // Sequence header, GOP header and picture headers: I, P and two B pictures, stored out of order.
  const std::vector<Bytes> mpegHeads = {
      {0, 0, 1, 0xB3, 0, 0, 1, 0xB8, 0, 8, 0, 0, 0, 0, 1, 0, 0, 0x88, 0, 0},
      {0, 0, 1, 0, 0, 0xD0, 0, 0},
      {0, 0, 1, 0, 0, 0x18, 0, 0},
      {0, 0, 1, 0, 0, 0x58, 0, 0}};
  // Delimiter, sequence parameter set and IDR slice; a predicted slice.
  const std::vector<Bytes> avcHeads = {{0, 0, 1, 9, 0x10, 0, 0, 1, 0x67, 1, 0, 0, 1, 0x65, 0x88},
                                       {0, 0, 1, 0x41, 0xC0}};
  return {{"mpeg", WithPictures(BuildClip(mpeg), mpegHeads)},
          {"avc", WithPictures(BuildClip(avc), avcHeads)}};
}

Bytes CutAt(Bytes bytes, std::uint64_t size) {
  bytes.resize(size);
  return bytes;
}

// A clip without pictures, whose frames begin with audio elements.
Bytes AudioAlone() {
  test::ClipSpec spec = SmallClip();
  spec.references = spec.noFill = spec.mixedElementLengths = true;
  spec.systemElement = false;
  test::Clip clip = BuildClip(spec);
  for (auto frame = clip.layout.frames.rbegin(); frame != clip.layout.frames.rend(); ++frame) {
    const auto picture = clip.bytes.begin() + static_cast<std::ptrdiff_t>(frame->picture.key);
    clip.bytes.erase(picture, picture + static_cast<std::ptrdiff_t>(frame->picture.totalBytes));
  }
  return std::move(clip.bytes);
}

// Clips that were never finished, or were cut off.
Seeds BrokenSeeds() {
  test::ClipSpec spec = SmallClip();
  spec.references = true;
  const test::Clip clip = BuildClip(spec);
  const auto& [bytes, layout] = clip;
  Bytes open = bytes;
  for (const test::PartitionPlace& partition : layout.partitions)
    test::Patch(open, partition.offset + test::pack::kStatus, {1});
  Bytes noFooter = bytes;
  test::Patch(noFooter, layout.partitions.back().offset + test::pack::kKind, {3});
  Bytes wrongCount = bytes;
  test::Patch(wrongCount, test::pack::kHeaderByteCount, test::Big64(1000));
  Bytes zerosBehind = CutAt(bytes, layout.frames[3].offset);
  zerosBehind.resize(zerosBehind.size() + 600);
  const std::uint64_t footerIndex = layout.partitions.back().indexOffset;
  return {{"no_random_index", CutAt(bytes, layout.randomIndex.key)},
          {"cut_random_index", CutAt(bytes, bytes.size() - 1)},
          {"cut_index", CutAt(bytes, footerIndex + 29)},
          {"cut_audio", CutAt(bytes, layout.frames[3].audio[1].value + 1)},
          {"cut_picture", CutAt(bytes, layout.frames[1].picture.value)},
          {"cut_key", CutAt(bytes, layout.frames[2].picture.key + 7)},
          {"zeros_behind", zerosBehind},
          {"bytes_behind", CutAt(bytes, bytes.size() + 100)},
          {"audio_alone", AudioAlone()},
          {"open", open},
          {"no_footer", noFooter},
          {"wrong_count", wrongCount}};
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
  for (const Seeds& seeds : {ClipSeeds(), LayoutSeeds(), PictureSeeds(), BrokenSeeds()}) {
    if (!WriteSeeds(folder / "mxf", seeds)) return 1;
  }
  return WriteSeeds(folder / "wav", WavSeeds()) ? 0 : 1;
}
