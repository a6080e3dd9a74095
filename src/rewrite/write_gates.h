// The two functions through which a rewrite makes all its writes into a clip. WriteRow changes only
// values of audio elements, and may write the bytes between them again as they are. WriteMetadata
// overwrites only places within items of the header metadata. Nothing else of a clip can change. A
// row is the audio elements of one frame in file order.

#pragma once

#include <cstdint>
#include <span>

#include "mxf/essence/audio_element.h"
#include "mxf/metadata/header_block.h"
#include "platform/file.h"

namespace quorvan {

enum class GateResult {
  kDone,
  kRefused,      // invalid arguments; nothing was written
  kClipFault,    // the clip could not be written
  kSampleFault,  // the samples lie in a view whose storage has failed
};

// One value of a row and the samples to write into the value.
struct RowPiece {
  ElementValue value;
  const std::uint8_t* samples;  // value.bytes() bytes
  // The file's bytes between the value of the piece before and this value, so that both values can
  // be written in one go. Null when the bytes are not known; the values are then written
  // separately. Not used in the first piece.
  const std::uint8_t* between;
};

// Writes the samples of a row into the open clip, together with the bytes of `between` where they
// are known. The values must ascend in the file. Returns kDone; kRefused, with nothing written,
// when values overlap or descend or there are more than kMaxTracks pieces; kClipFault or
// kSampleFault, after which part of the row may have been written. Throws nothing.
GateResult WriteRow(platform::File* clip, std::span<const RowPiece> row);

// Writes `bytes` to `place` in the open clip. Returns false, with nothing written, when `bytes` and
// `place` differ in length; or false when the write fails, after which some bytes may have been
// written. Throws nothing.
bool WriteMetadata(platform::File* clip, const MetadataPlace& place,
                   std::span<const std::uint8_t> bytes);

}  // namespace quorvan
