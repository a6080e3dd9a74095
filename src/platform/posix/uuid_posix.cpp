#include "platform/uuid.h"

#include <uuid.h>

namespace quorvan::platform {

std::optional<std::array<std::uint8_t, 16>> NewUuid() {
  std::array<std::uint8_t, 16> bytes{};
  uuid_generate(bytes.data());
  return bytes;
}

}  // namespace quorvan::platform
