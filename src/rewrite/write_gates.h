// The two functions through which all writes into a clip go: WriteRow takes only values of audio
// elements, WriteMetadata only places within items of the header metadata. Nothing else of a clip
// can be changed.

#pragma once

#include <cstdint>
#include <span>

#include "mxf/essence/audio_element.h"
#include "mxf/metadata/header_block.h"
#include "platform/file.h"

namespace quorvan {

enum class GateResult {
  kDone,
  kRefused,
  kClipFault,    // the clip could not be written
  kSampleFault,  // the samples lie in a view whose storage has failed
};

// What becomes of one value of a row.
struct RowPiece {
  ElementValue value;
  const std::uint8_t* samples;  // value.bytes() of them
  // The bytes between the value before and this one as they stand in the file, so that both can be
  // written at one go; null where they are not at hand.
  const std::uint8_t* between;
};

// Writes the pieces, whose values lie in ascending order, into the open clip. What lies between two
// values is left alone or written as it is. kRefused, with nothing written, when values overlap or
// there are more than kMaxTracks. After a fault part of the row may be written.
GateResult WriteRow(platform::File* clip, std::span<const RowPiece> row);

// Writes `bytes`, of which there are as many as the place has, to `place` in the open clip. False
// when they do not fit, with nothing written, or when the write fails, with some of them written
// maybe.
bool WriteMetadata(platform::File* clip, const MetadataPlace& place,
                   std::span<const std::uint8_t> bytes);

}  // namespace quorvan
