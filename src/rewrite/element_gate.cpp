#include "rewrite/element_gate.h"

#include <cstring>

#include "mxf/klv.h"
#include "platform/fault_guard.h"

namespace quorvan {
namespace {

constexpr std::uint8_t kFourByteLength = 0x83;
constexpr std::size_t kLengthPlace = 16;

bool LiesIn(const platform::MappedView& view, const void* address) {
  const auto* p = static_cast<const std::uint8_t*>(address);
  return p >= view.data() && p < view.data() + view.size();
}

std::uint8_t* InView(const platform::MappedView& view, std::uint64_t fileOffset) {
  return view.data() + (fileOffset - view.fileOffset());
}

// True when an element that starts at the lower of two deltas, with a value of `bytes`, ends before
// the higher one.
bool FitsBetween(std::uint32_t lower, std::uint32_t higher, std::uint64_t bytes) {
  return higher > lower && higher - lower >= kElementHeaderBytes + bytes;
}

}  // namespace

std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                               const INDEX_ENTRY_ARRAY& entry,
                                               std::uint32_t track) {
  const std::uint32_t k = track + kDeltasBeforeAudio;
  if (track >= kMaxTracks || k >= entry.deltaCount) return std::nullopt;
  const std::uint64_t bytes = std::uint64_t{mxf.audio->blockAlign} * entry.audioSamples;
  const std::uint32_t delta = entry.delta[k].elementDelta;
  if (track > 0 && !FitsBetween(entry.delta[k - 1].elementDelta, delta, bytes)) {
    return std::nullopt;
  }
  if (k + 1 < entry.deltaCount && !FitsBetween(delta, entry.delta[k + 1].elementDelta, bytes)) {
    return std::nullopt;
  }
  const std::uint64_t inFrame =
      std::uint64_t{entry.sliceOffset} + delta + std::uint64_t{kElementHeaderBytes};
  if (entry.fileOffset >= mxf.fileSize || inFrame >= mxf.fileSize - entry.fileOffset ||
      bytes > mxf.fileSize - entry.fileOffset - inFrame) {
    return std::nullopt;
  }
  return ElementValue(entry.fileOffset + inFrame, static_cast<std::uint32_t>(bytes));
}

bool IsAudioElementHeader(std::span<const std::uint8_t, kElementHeaderBytes> header,
                          AudioElementKind kind, std::uint32_t bytes) {
  if (kind == kNoAudioElement) return false;
  const KlvKey& wanted = kind == kAes3Element ? keys::kAes3Element : keys::kWaveElement;
  return KeyMatches(header.data(), wanted) && header[kLengthPlace] == kFourByteLength &&
         ReadBe24(header.data() + kLengthPlace + 1) >= bytes;
}

GateResult CheckElement(const platform::MappedView& view, const ElementValue& value,
                        AudioElementKind kind) {
  if (!view.Covers(value.keyOffset(), kElementHeaderBytes + std::uint64_t{value.bytes()})) {
    return GateResult::kOutsideView;
  }
  std::array<std::uint8_t, kElementHeaderBytes> header{};
  auto copy = [&] { std::memcpy(header.data(), InView(view, value.keyOffset()), header.size()); };
  if (!platform::RunGuarded(copy).completed) return GateResult::kClipFault;
  return IsAudioElementHeader(header, kind, value.bytes()) ? GateResult::kDone
                                                           : GateResult::kOutsideView;
}

GateResult WriteElement(const platform::MappedView& view, const ElementValue& value,
                        std::span<const std::uint8_t> samples) {
  if (samples.size() != value.bytes() || !view.Covers(value.fileOffset(), value.bytes())) {
    return GateResult::kOutsideView;
  }
  std::uint8_t* target = InView(view, value.fileOffset());
  auto copy = [&] { std::memcpy(target, samples.data(), samples.size()); };
  const platform::GuardResult guarded = platform::RunGuarded(copy);
  if (guarded.completed) return GateResult::kDone;
  return LiesIn(view, guarded.address) ? GateResult::kClipFault : GateResult::kSourceFault;
}

}  // namespace quorvan
