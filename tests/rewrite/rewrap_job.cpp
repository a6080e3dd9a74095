#include "rewrap_job.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/mxf_tags.h"

namespace quorvan::test {
namespace {

constexpr std::size_t kStampBytes = 8;

// Sample `index` of one channel in the clip's width, low byte first; zero behind the end and
// without a file.
void PutSample(const WavSpec* wav, std::uint32_t channel, std::uint64_t index, std::uint32_t bits,
               std::uint8_t* place) {
  std::uint32_t word = 0;
  if (wav != nullptr && index < wav->sampleFrames) {
    const std::int32_t value =
        wav->sample ? wav->sample(channel, index) : PatternSample(channel, index);
    word = static_cast<std::uint32_t>(value) << (bits - wav->bits);
  }
  for (std::uint32_t b = 0; b < bits / 8; ++b)
    place[b] = static_cast<std::uint8_t>(word >> (8 * b));
}

}  // namespace

void RewrapJob::Put(std::uint32_t track, const WavSpec& wav) {
  const std::string name = "track" + std::to_string(track) + ".wav";
  const std::u16string file = folder.Write(name, BuildWav(wav).bytes);
  ASSERT_EQ(AddWavFile(file.c_str(), app.info.wavList, app.mxf.base), kWavOk);
  ASSERT_EQ(AssignWavFile(&app.info, app.info.wavList->prev, static_cast<std::int32_t>(track)),
            AssignResult::kAssigned);
  for (std::uint32_t c = 0; c < wav.channels; ++c)
    app.tracks.rewrapSwitch[track + c] = kSwitchOn;
  sources_.push_back({track, wav});
}

void RewrapJob::Silence(std::uint32_t track) {
  app.tracks.rewrapSwitch[track] = kSwitchOn;
  silent_.push_back(track);
}

void RewrapJob::Range(std::uint32_t in, std::uint32_t out) {
  SetRange(kRewrapRange, in, out);
  in_ = in;
  out_ = out;
}

std::vector<RewrapJob::Place> RewrapJob::IdentityPlaces() const {
  const ClipLayout& layout = clip.layout;
  std::vector<Place> places;
  for (const auto& umids : {layout.materialUmids, layout.sourceUmids}) {
    EXPECT_FALSE(umids.empty());
    for (const std::uint64_t at : umids)
      places.push_back({at, kUmidBytes});
  }
  for (const SetKind kind : {SetKind::kMaterialPackage, SetKind::kSourcePackage})
    places.push_back({layout.TagValueOffset(kind, tag::kPackageModifiedDate), kStampBytes});
  return places;
}

void RewrapJob::FillTrack(std::uint32_t track, const WavSpec* wav, std::uint32_t channel,
                          Bytes* bytes) const {
  std::uint64_t index = 0;
  for (std::uint32_t f = in_; f <= out_; ++f) {
    const FramePlace& frame = clip.layout.frames[f];
    std::uint8_t* value = bytes->data() + frame.audio[track].value;
    for (std::uint32_t s = 0; s < frame.samples; ++s, ++index)
      PutSample(wav, channel, index, spec.bits, value + s * (spec.bits / 8));
  }
}

void RewrapJob::FillTracks(bool silent, Bytes* bytes) const {
  for (const Source& source : sources_) {
    for (std::uint32_t c = 0; c < source.wav.channels; ++c) {
      if (app.tracks.rewrapSwitch[source.track + c] != kSwitchOn) continue;
      FillTrack(source.track + c, silent ? nullptr : &source.wav, c, bytes);
    }
  }
  for (const std::uint32_t track : silent_)
    FillTrack(track, nullptr, 0, bytes);
}

Bytes RewrapJob::Without(Bytes bytes, bool identity, bool audio) const {
  if (audio) FillTracks(true, &bytes);
  if (!identity) return bytes;
  for (const Place& place : IdentityPlaces())
    std::fill_n(bytes.begin() + static_cast<long>(place.at), place.bytes, std::uint8_t{0});
  return bytes;
}

Bytes RewrapJob::ExpectedAudio() const {
  Bytes expected = clip.bytes;
  FillTracks(false, &expected);
  return expected;
}

Bytes RewrapJob::Expected(bool renewed) const {
  Bytes expected = ExpectedAudio();
  const Bytes now = Now();
  EXPECT_EQ(now.size(), expected.size());
  if (now.size() != expected.size()) return expected;
  for (const Place& place : IdentityPlaces()) {
    const auto from = now.begin() + static_cast<long>(place.at);
    const auto old = expected.begin() + static_cast<long>(place.at);
    EXPECT_EQ(std::equal(old, old + static_cast<long>(place.bytes), from), !renewed)
        << "at " << place.at;
    std::copy_n(from, place.bytes, old);
  }
  return expected;
}

}  // namespace quorvan::test
