// Finds the audio of a clip: the index tells where the value of an audio element lies in a frame,
// and the frame's own keys and lengths prove it.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "mxf/metadata/klv.h"
#include "mxf/records.h"
#include "platform/mapping.h"

namespace quorvan {

// The place in the file of the audio of one track in one frame. Only LocateElementValue makes an
// ElementValue, so code that takes one cannot be given any other place of the clip.
class ElementValue {
 public:
  // File offset of the first byte of the value.
  std::uint64_t fileOffset() const { return fileOffset_; }

  // Length of the value in bytes.
  std::uint32_t bytes() const { return bytes_; }

  // File offset of the element's key.
  std::uint64_t keyOffset() const { return fileOffset_ - kElementHeaderBytes; }

  // File offset of the byte behind the value.
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

// The place of the audio of `track` (zero-based) in the frame of `entry`, as the index gives it.
// The length is blockAlign x audioSamples bytes. Nothing when `track` is kMaxTracks or more, when
// the index has no element for it, or when the value would reach behind the end of the file. Throws
// nothing.
std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                               const INDEX_ENTRY_ARRAY& entry, std::uint32_t track);

// What the proof of the audio elements in a frame has found.
enum class ElementState {
  kProven,       // the frame holds the elements that the index gives
  kMisplaced,    // an element is not where the index says
  kOtherLength,  // an element is there, but does not hold exactly the samples of its frame
  kFault,        // the clip could not be read
};

// Proves that the frame `entryIndex` (zero-based) holds the audio elements of `tracks`, zero-based
// and ascending, where the index says. Goes through the frame from key to key; the n-th audio
// element (zero-based) belongs to track n. Compares the place of each element with the index, its
// kind with the kind that the analysis found, and its length, in a length field of four bytes, with
// blockAlign x audioSamples.
//
// Returns kProven when all of this agrees, also for no tracks; kMisplaced when a place, a kind or
// the form of a length field differs, when the frame is not a sequence of KLVs, or when `view` does
// not cover the frame up to the last element; kOtherLength when only a length differs; kFault when
// the storage behind `view` fails. Throws nothing. RowReader proves a frame in the same way without
// a view.
ElementState ProveElements(const platform::MappedView& view, const MXF_BASE_INFO& mxf,
                           std::uint32_t entryIndex, std::span<const std::uint32_t> tracks);

// An audio element as its own key and length field in the frame describe it.
struct AudioElement {
  std::uint64_t keyOffset;                  // file offset
  std::optional<std::uint64_t> valueBytes;  // nothing when the length field is not of four bytes
  AudioElementKind kind;
};

// The audio elements that a walk through a frame has found so far, in file order.
struct FrameElements {
  std::uint32_t count = 0;  // valid entries of element
  std::array<AudioElement, kMaxTracks> element;
};

// The kind of the audio element with the 16 bytes of key at `key`; kNoAudioElement for the key of
// anything else. Throws nothing.
AudioElementKind KindOfElement(const std::uint8_t* key);

// Takes one step of the walk through a frame: reads the header of the KLV whose key is at `key`,
// and adds the KLV to `*elements`, which must have room for it, when it is an audio element.
// `keyOffset` is the file offset of the key, and `rest` the number of bytes from the key to the end
// of the frame. At `key` there must be the smaller of kMostKlvHeaderBytes and `rest` bytes.
// Returns the bytes from this key to the next key; nothing when no KLV starts at `key` or it does
// not end within `rest`. Throws nothing.
std::optional<std::uint64_t> TakeElement(const std::uint8_t* key, std::uint64_t keyOffset,
                                         std::uint64_t rest, FrameElements* elements);

// Compares the elements of `tracks` (zero-based) that a walk has found in the frame of `entry` with
// the index and the analysis, as ProveElements describes. Returns kProven, or kMisplaced or
// kOtherLength for the first track whose element differs. Throws nothing.
ElementState CompareWithIndex(const FrameElements& elements, const MXF_BASE_INFO& mxf,
                              const INDEX_ENTRY_ARRAY& entry,
                              std::span<const std::uint32_t> tracks);

// Number of tracks from track 0 up to and including the last track of an ascending list; 0 for an
// empty list. It is also the number of audio elements that a walk must find in a frame to prove the
// listed tracks.
std::uint32_t TracksUpToLast(std::span<const std::uint32_t> tracks);

// The file offset at which the frame `entryIndex` (zero-based) ends at the latest: the start of the
// next frame in the index, or the end of the file.
std::uint64_t FrameEnd(const MXF_BASE_INFO& mxf, std::uint32_t entryIndex);

}  // namespace quorvan
