#include "wav/size_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "platform/text.h"

namespace quorvan {
namespace {

struct SizeUnit {
  std::uint64_t divisor;  // bytes
  const char* name;
};
constexpr std::array<SizeUnit, 4> kUnits = {
    {{1, "bytes"}, {1ull << 10, "KB"}, {1ull << 20, "MB"}, {1ull << 30, "GB"}}};

const SizeUnit& UnitFor(std::uint64_t size) {
  const auto larger = std::find_if(std::next(kUnits.begin()), kUnits.end(),
                                   [size](const SizeUnit& unit) { return size < unit.divisor; });
  return *std::prev(larger);
}

}  // namespace

int FormatFileSize(std::uint64_t size, char16_t* buffer, std::size_t bufferChars) {
  if (buffer == nullptr) return 1;
  const SizeUnit& unit = UnitFor(size);
  const float quotient = static_cast<float>(size) / static_cast<float>(unit.divisor);
  const std::string text = fmt::format("{:.2f} {}", static_cast<double>(quotient), unit.name);
  platform::CopyText(buffer, bufferChars, platform::ToUtf16(text));
  return 0;
}

}  // namespace quorvan
