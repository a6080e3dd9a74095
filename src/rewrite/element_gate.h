// The one way into the essence of a clip: the value of an audio element. Nothing else of a clip can
// be written through here.

#pragma once

#include <cstdint>
#include <span>

#include "mxf/audio_element.h"
#include "platform/file.h"
#include "platform/mapping.h"

namespace quorvan {

enum class GateResult { kDone, kRefused, kClipFault, kSourceFault };

// Writes `samples`, exactly value.bytes() of them, over the value through `view`. A kSourceFault is
// one of the storage behind `samples`. After a fault part of the value may be written.
GateResult WriteElement(const platform::MappedView& view, const ElementValue& value,
                        std::span<const std::uint8_t> samples);

// The same through the open clip, from samples in memory.
GateResult WriteElement(platform::File* clip, const ElementValue& value,
                        std::span<const std::uint8_t> samples);

}  // namespace quorvan
