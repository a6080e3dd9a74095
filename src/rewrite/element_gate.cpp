#include "rewrite/element_gate.h"

#include <cstring>

#include "platform/fault_guard.h"

namespace quorvan {
namespace {

bool LiesIn(const platform::MappedView& view, const void* address) {
  const auto* p = static_cast<const std::uint8_t*>(address);
  return p >= view.data() && p < view.data() + view.size();
}

}  // namespace

GateResult WriteElement(const platform::MappedView& view, const ElementValue& value,
                        std::span<const std::uint8_t> samples) {
  if (samples.size() != value.bytes() || !view.Covers(value.fileOffset(), value.bytes())) {
    return GateResult::kRefused;
  }
  std::uint8_t* target = view.data() + (value.fileOffset() - view.fileOffset());
  auto copy = [&] { std::memcpy(target, samples.data(), samples.size()); };
  const platform::GuardResult guarded = platform::RunGuarded(copy);
  if (guarded.completed) return GateResult::kDone;
  return LiesIn(view, guarded.address) ? GateResult::kClipFault : GateResult::kSourceFault;
}

GateResult WriteElement(platform::File* clip, const ElementValue& value,
                        std::span<const std::uint8_t> samples) {
  if (samples.size() != value.bytes()) return GateResult::kRefused;
  return clip->WriteAt(value.fileOffset(), samples.data(), samples.size()) ? GateResult::kDone
                                                                           : GateResult::kClipFault;
}

}  // namespace quorvan
