#include "platform/no_registry.h"

namespace quorvan::platform {

NoRegistry::NoRegistry(const std::u16string&) : key_(nullptr, [](void*) {}) {}

}  // namespace quorvan::platform
