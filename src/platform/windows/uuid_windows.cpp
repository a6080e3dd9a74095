#include "platform/uuid.h"

#include <windows.h>

#include <rpc.h>

#include <algorithm>

namespace quorvan::platform {

std::optional<std::array<std::uint8_t, 16>> NewUuid() {
  UUID uuid{};
  const RPC_STATUS status = UuidCreate(&uuid);
  if (status != RPC_S_OK && status != RPC_S_UUID_LOCAL_ONLY) return std::nullopt;
  // The system keeps the first three fields as numbers, in little-endian order.
  std::array<std::uint8_t, 16> bytes{};
  for (std::size_t i = 0; i < 4; ++i)
    bytes[i] = static_cast<std::uint8_t>(uuid.Data1 >> (24 - 8 * i));
  for (std::size_t i = 0; i < 2; ++i) {
    bytes[4 + i] = static_cast<std::uint8_t>(uuid.Data2 >> (8 - 8 * i));
    bytes[6 + i] = static_cast<std::uint8_t>(uuid.Data3 >> (8 - 8 * i));
  }
  std::copy(std::begin(uuid.Data4), std::end(uuid.Data4), bytes.begin() + 8);
  return bytes;
}

}  // namespace quorvan::platform
