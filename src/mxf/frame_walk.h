// The walk from key to key through a frame, for those who prove where its audio lies.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "mxf/audio_element.h"
#include "mxf/klv.h"
#include "mxf/records.h"

namespace quorvan {

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
