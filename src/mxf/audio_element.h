// Where the audio of a clip lies: the value of an audio element in a frame, found through the index
// and proven by the frame's own keys and lengths.

#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "mxf/records.h"
#include "platform/file.h"
#include "platform/mapping.h"

namespace quorvan {

// Largest number of samples of one track in a frame.
inline constexpr std::uint32_t kLargestFrameSamples = 2002;

// Place of the audio of one track in one frame. Only LocateElementValue makes one.
class ElementValue {
 public:
  std::uint64_t fileOffset() const { return fileOffset_; }
  std::uint32_t bytes() const { return bytes_; }

  // File offset of the element's key.
  std::uint64_t keyOffset() const { return fileOffset_ - kElementHeaderBytes; }

  // File offset behind the value.
  std::uint64_t end() const { return fileOffset_ + bytes_; }

 private:
  friend std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                                        const INDEX_ENTRY_ARRAY& entry,
                                                        std::uint32_t track);
  ElementValue(std::uint64_t fileOffset, std::uint32_t bytes)
      : fileOffset_(fileOffset), bytes_(bytes) {}

  std::uint64_t fileOffset_;
  std::uint32_t bytes_;
};

// Where the audio of `track` (from 0) lies in the frame of `entry`: blockAlign x audioSamples
// bytes. Nothing when the index has no element for the track or the value would reach behind the
// file.
std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                               const INDEX_ENTRY_ARRAY& entry, std::uint32_t track);

enum class ElementState {
  kSound,
  kMisplaced,  // no such element where it was looked for
  kFault,      // the storage failed
};

// True when the kElementHeaderBytes at `header` are the key and the four-byte length of an element
// of the kind that the analysis found, whose value holds the bytes of `value` and at most one
// sample more.
bool IsHeaderOf(const std::uint8_t* header, const ElementValue& value, const MXF_AUDIO_INFO& audio);

// The same of the header in front of `value` in the clip behind `view`, which must cover both.
ElementState CheckElement(const platform::MappedView& view, const ElementValue& value,
                          const MXF_AUDIO_INFO& audio);

// An audio element as the frame itself shows it.
struct AudioElement {
  std::uint64_t keyOffset;   // in the file
  std::uint64_t valueBytes;  // 0 unless its length field has four bytes
  AudioElementKind kind;
};

// The first audio elements of a frame, in the order in which they stand in it: the n-th belongs to
// track n.
struct FrameElements {
  std::uint32_t count;
  std::array<AudioElement, kMaxTracks> element;
};

// Goes from key to key through the frame in [start, end) of the clip and collects its first
// `wanted` audio elements. kMisplaced when what stands there is no row of KLVs with so many, or
// `view` does not cover the frame that far.
ElementState WalkFrame(const platform::MappedView& view, std::uint64_t start, std::uint64_t end,
                       std::uint32_t wanted, FrameElements* elements);
ElementState WalkFrame(const platform::File& file, std::uint64_t start, std::uint64_t end,
                       std::uint32_t wanted, FrameElements* elements);

// True when `element` is the one that IsHeaderOf describes and starts where the index says.
bool IsElementOf(const AudioElement& element, const ElementValue& value,
                 const MXF_AUDIO_INFO& audio);

}  // namespace quorvan
