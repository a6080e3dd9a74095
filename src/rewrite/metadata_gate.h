// The one way into the header metadata of a clip: bytes of items' values. Nothing else of the
// metadata can be changed through here.

#pragma once

#include <cstdint>
#include <span>

#include "mxf/header_block.h"
#include "platform/file.h"

namespace quorvan {

// Writes `bytes`, of which there are as many as the place has, to `place` in the open clip. False
// when they do not fit, with nothing written, or when the write fails, with some of them written
// maybe.
bool WriteMetadata(platform::File* clip, const MetadataPlace& place,
                   std::span<const std::uint8_t> bytes);

}  // namespace quorvan
