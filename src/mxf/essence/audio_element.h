// Where the audio of a clip lies: the value of an audio element in a frame, found through the index
// and proven by the frame's own keys and lengths.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "mxf/metadata/klv.h"
#include "mxf/records.h"
#include "platform/mapping.h"

namespace quorvan {

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
  kProven,
  kMisplaced,    // no such element where it was looked for
  kOtherLength,  // the element is there, but does not hold exactly the samples of its frame
  kFault,        // the storage failed
};

// Proves the values of `tracks`, from 0 and ascending, in the frame of entry `entryIndex`: goes
// from key to key through the frame, whose n-th audio element is that of track n, and compares what
// it finds with what the index says: the place, the kind that the analysis found, and a four-byte
// length that is the value's own. kMisplaced when place or kind differ, what stands there is no row
// of KLVs, or `view` does not cover the frame that far; kOtherLength when only the length differs.
// Without a view, RowReader does the same.
ElementState ProveElements(const platform::MappedView& view, const MXF_BASE_INFO& mxf,
                           std::uint32_t entryIndex, std::span<const std::uint32_t> tracks);

// An audio element as the frame itself shows it.
struct AudioElement {
  std::uint64_t keyOffset;                  // in the file
  std::optional<std::uint64_t> valueBytes;  // nothing unless its length field has four bytes
  AudioElementKind kind;
};

// The first audio elements of a frame.
struct FrameElements {
  std::uint32_t count = 0;
  std::array<AudioElement, kMaxTracks> element;
};

// The KLV whose key stands at the first of the `rest` bytes at `key`, which lie at `keyOffset` in
// the file and hold kMostKlvHeaderBytes or as many as the frame still has: adds it to `elements`
// when it is an audio element. The bytes up to the next key; nothing when that is no KLV that ends
// within `rest`.
std::optional<std::uint64_t> TakeElement(const std::uint8_t* key, std::uint64_t keyOffset,
                                         std::uint64_t rest, FrameElements* elements);

// kProven when the elements of `tracks` are the ones that the index and the analysis speak of, each
// with exactly the samples of the frame; else what is wrong with the first that is not.
ElementState CompareWithIndex(const FrameElements& elements, const MXF_BASE_INFO& mxf,
                              const INDEX_ENTRY_ARRAY& entry,
                              std::span<const std::uint32_t> tracks);

// Tracks up to and with the last one of an ascending list.
std::uint32_t TracksUpToLast(std::span<const std::uint32_t> tracks);

// Where a frame ends at the latest: at the next one, or at the end of the file.
std::uint64_t FrameEnd(const MXF_BASE_INFO& mxf, std::uint32_t entryIndex);

}  // namespace quorvan
