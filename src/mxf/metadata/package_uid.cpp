#include "mxf/metadata/package_uid.h"

namespace quorvan {

int UmidToHexText(const std::uint8_t* umid, char16_t* text) {
  if (umid == nullptr || text == nullptr) return -1;
  constexpr char16_t digits[] = u"0123456789ABCDEF";
  for (std::size_t i = 0; i < kUmidBytes; ++i) {
    text[2 * i] = digits[umid[i] >> 4];
    text[2 * i + 1] = digits[umid[i] & 0x0F];
  }
  text[2 * kUmidBytes] = 0;
  return 0;
}

}  // namespace quorvan
