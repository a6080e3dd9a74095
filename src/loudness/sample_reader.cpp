#include "loudness/sample_reader.h"

#include <bit>
#include <cstring>
#include <new>

#include "mxf/sample_pattern.h"
#include "platform/thread.h"

namespace quorvan {
namespace {

constexpr std::size_t kSlotFloats = std::size_t{kLargestFrameSamples} * kLoudnessChannels;

// Converts `count` little-endian signed samples of kWidth bytes to floats (full scale is 1), and
// writes them to every second float from `target` on. Each sample is put into the upper bytes of a
// 32-bit word, so that the word has the sample's sign. From the second sample on, one load of four
// bytes gets the sample and the bytes before it, which are then cleared.
template <std::uint32_t kWidth>
void Convert(const std::uint8_t* bytes, std::uint32_t count, float* target) {
  static_assert(std::endian::native == std::endian::little);
  constexpr std::uint32_t rest = sizeof(std::uint32_t) - kWidth;
  constexpr std::uint32_t sampleBits = ~std::uint32_t{0} << (8 * rest);
  constexpr float factor = 1.0F / static_cast<float>(std::uint32_t{1} << 31);
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t word = 0;
    if (i > 0) {
      std::memcpy(&word, bytes + i * kWidth - rest, sizeof word);
    } else {
      std::memcpy(&word, bytes, kWidth);
      word <<= 8 * rest;
    }
    target[i * kLoudnessChannels] =
        static_cast<float>(static_cast<std::int32_t>(word & sampleBits)) * factor;
  }
}

using Converter = void (*)(const std::uint8_t*, std::uint32_t, float*);

Converter ConverterOf(std::uint32_t blockAlign) {
  switch (blockAlign) {
    case 2:
      return Convert<2>;
    case 3:
      return Convert<3>;
    case 4:
      return Convert<4>;
    default:
      return nullptr;
  }
}

}  // namespace

bool SampleReader::CanConvert(std::uint32_t blockAlign) {
  return ConverterOf(blockAlign) != nullptr;
}

SampleReader::~SampleReader() {
  if (!thread_.joinable()) return;
  taken_.store(kStopped, std::memory_order_release);
  taken_.notify_one();
  thread_.join();
}

JobFault SampleReader::Start() {
  samples_.reset(new (std::nothrow) float[kSlotFloats * kSlots]());
  if (samples_ == nullptr || !rows_.Allocate()) return kOutOfMemory;
  return platform::StartThread(&thread_, [this] { ReadAll(); }) ? kNoFault : kNoThread;
}

SampleFrame SampleReader::Next() {
  std::uint32_t filled = filled_.load(std::memory_order_acquire);
  for (; filled == next_; filled = filled_.load(std::memory_order_acquire))
    filled_.wait(filled, std::memory_order_acquire);
  // The caller is done with the earlier frames. Their slots are given back kGivenBack at a time.
  if (next_ % kGivenBack == 0) {
    taken_.store(next_, std::memory_order_release);
    taken_.notify_one();
  }
  return frames_[next_++ % kSlots];
}

void SampleReader::ReadAll() {
  for (std::uint32_t frame = 0; frame < range_.total && WaitForSlot(frame); ++frame) {
    frames_[frame % kSlots] = Read(frame);
    filled_.store(frame + 1, std::memory_order_release);
    filled_.notify_one();
    if (frames_[frame % kSlots].state != ElementState::kProven) return;
  }
}

bool SampleReader::WaitForSlot(std::uint32_t frame) {
  for (;;) {
    const std::uint32_t taken = taken_.load(std::memory_order_acquire);
    if (taken == kStopped) return false;
    if (frame - taken < kSlots) return true;
    taken_.wait(taken, std::memory_order_acquire);
  }
}

SampleFrame SampleReader::Read(std::uint32_t frame) {
  const std::uint32_t entryIndex = range_.firstEntry + frame;
  const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
  // Without a selected track nothing else checks the count of samples.
  if (entry.audioSamples > kLargestFrameSamples) return {ElementState::kMisplaced};
  const ElementState state = rows_.Read(entryIndex);
  if (state != ElementState::kProven) return {state};
  float* const samples = samples_.get() + kSlotFloats * (frame % kSlots);
  const Converter convert = ConverterOf(mxf_.audio->blockAlign);
  for (std::size_t c = 0; c < tracks_.size(); ++c) {
    const auto value = LocateElementValue(mxf_, entry, tracks_[c]);
    const std::uint8_t* bytes = value ? rows_.At(value->fileOffset(), value->bytes()) : nullptr;
    if (bytes == nullptr) return {ElementState::kMisplaced};
    convert(bytes, entry.audioSamples, samples + c);
  }
  return {ElementState::kProven, entry.audioSamples, samples};
}

}  // namespace quorvan
