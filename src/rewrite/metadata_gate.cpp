#include "rewrite/metadata_gate.h"

namespace quorvan {

bool WriteMetadata(platform::File* clip, const MetadataPlace& place,
                   std::span<const std::uint8_t> bytes) {
  return bytes.size() == place.bytes() &&
         clip->WriteAt(place.fileOffset(), bytes.data(), bytes.size());
}

}  // namespace quorvan
