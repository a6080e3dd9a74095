// Finds the frames of a clip by a walk over the keys of its essence, without an index table
// (SMPTE ST 379): a frame starts with the element that opens the essence, a system element or a
// picture, and ends in front of the next such element.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "conform/partition_map.h"
#include "conform/picture_type.h"
#include "conform/reason.h"

namespace quorvan {

// One frame of the clip that is copied.
struct SourceFrame {
  std::uint64_t offset;       // file offset of its first key
  std::uint32_t bytes;        // with the fill behind its elements
  std::uint32_t partition;    // its place in SourceClip.partitions
  std::uint32_t sliceOffset;  // bytes in front of its first audio element
  std::uint32_t laidSlice;    // the same in the layout of LayFrame
  std::uint32_t behindAudio;  // bytes behind the fill of its last audio element
};

struct FrameMap {
  std::vector<SourceFrame> frames;     // in file order
  std::vector<PictureFacts> pictures;  // of each frame
  std::uint32_t bodySid = 0;           // of the partitions that hold the frames
  std::uint32_t pictureOffset = 0;     // bytes from the first frame's start to its picture
  std::uint32_t elements = 0;          // in the first frame, without fill
  std::vector<std::uint32_t> deltas;   // bytes from the first audio element to each, first frame
  bool hasDataElement = true;          // ancillary data stand behind the audio of every frame
  bool dataDeltaHolds = true;          // and always as far from the first audio element
  std::uint32_t dataDelta = 0;         // as far as in the first frame, bytes
  // True when the deltas hold for every frame, and the first element and the audio elements of
  // every frame have length fields of four bytes: the readers then find the audio as it stands.
  bool isRegular = true;
  // For each audio element, bytes that hold its header with four bytes of length, its largest value
  // and a fill that fits every frame.
  std::vector<std::uint32_t> slots;
  std::uint64_t lostBytes = 0;  // of a frame at the end of the essence that is not whole
};

// Walks over the essence of `clip` in `file` and puts its frames into `*map`. A frame at the very
// end of the essence that is not whole is left out. `codingLabel` is the coding of the picture.
// Returns false when a read fails or is stopped, or when the essence is no sequence of frames that
// all hold the same audio elements; `*reason` then tells why. Throws std::bad_alloc.
bool ReadFrames(const platform::File& file, const SourceClip& clip, PictureCoding coding,
                FrameMap* map, Reason* reason);

// Appends the frame `frame` of the clip, whose bytes are `source`, to `*out` in the layout in which
// every audio element has its slot: audio elements and the frame's first element get length fields
// of four bytes, audio elements get fill up to their slots, and all values stay. Returns false when
// the bytes are not those of the frame. Throws std::bad_alloc.
bool LayFrame(const FrameMap& map, std::span<const std::uint8_t> source,
              std::vector<std::uint8_t>* out);

// Bytes that LayFrame appends for `frame`.
std::uint64_t LaidBytes(const FrameMap& map, const SourceFrame& frame);

}  // namespace quorvan
