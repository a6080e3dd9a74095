#include "rewrap_job.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/mxf_tags.h"

namespace quorvan::test {
namespace {

constexpr std::size_t kStampBytes = 8;

// Sample `index` of one channel in the clip's width, low byte first; zero behind the end.
void PutSample(const WavSpec& wav, std::uint32_t channel, std::uint64_t index, std::uint32_t bits,
               std::uint8_t* place) {
  std::int32_t value = 0;
  if (index < wav.sampleFrames) {
    value = wav.sample ? wav.sample(channel, index) : PatternSample(channel, index);
  }
  const auto word = static_cast<std::uint32_t>(value) << (bits - wav.bits);
  for (std::uint32_t b = 0; b < bits / 8; ++b)
    place[b] = static_cast<std::uint8_t>(word >> (8 * b));
}

void TakeOver(const Bytes& now, std::uint64_t place, std::size_t count, bool renewed,
              Bytes* expected) {
  const auto at = static_cast<long>(place);
  const bool same = std::equal(now.begin() + at, now.begin() + at + static_cast<long>(count),
                               expected->begin() + at);
  EXPECT_EQ(same, !renewed) << "at " << place;
  std::copy_n(now.begin() + at, count, expected->begin() + at);
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

void RewrapJob::FillTrack(std::uint32_t track, const WavSpec* wav, std::uint32_t channel,
                          Bytes* bytes) const {
  std::uint64_t index = 0;
  for (std::uint32_t f = in_; f <= out_; ++f) {
    const FramePlace& frame = clip.layout.frames[f];
    std::uint8_t* value = bytes->data() + frame.audio[track].value;
    for (std::uint32_t s = 0; s < frame.samples; ++s, ++index) {
      std::uint8_t* place = value + s * (spec.bits / 8);
      if (wav != nullptr) {
        PutSample(*wav, channel, index, spec.bits, place);
      } else {
        std::fill_n(place, spec.bits / 8, std::uint8_t{0});
      }
    }
  }
}

Bytes RewrapJob::ExpectedAudio() const {
  Bytes expected = clip.bytes;
  for (const Source& source : sources_) {
    for (std::uint32_t c = 0; c < source.wav.channels; ++c) {
      FillTrack(source.track + c, &source.wav, c, &expected);
    }
  }
  for (const std::uint32_t track : silent_)
    FillTrack(track, nullptr, 0, &expected);
  return expected;
}

Bytes RewrapJob::Expected(bool renewed) const {
  Bytes expected = ExpectedAudio();
  const Bytes now = Now();
  EXPECT_EQ(now.size(), expected.size());
  if (now.size() != expected.size()) return expected;
  const ClipLayout& layout = clip.layout;
  for (const auto& places : {layout.materialUmids, layout.sourceUmids}) {
    EXPECT_FALSE(places.empty());
    for (const std::uint64_t place : places)
      TakeOver(now, place, kUmidBytes, renewed, &expected);
  }
  for (const SetKind kind : {SetKind::kMaterialPackage, SetKind::kSourcePackage}) {
    TakeOver(now, layout.TagValueOffset(kind, tag::kPackageModifiedDate), kStampBytes, renewed,
             &expected);
  }
  return expected;
}

}  // namespace quorvan::test
