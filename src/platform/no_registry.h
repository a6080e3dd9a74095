// Keeps code that is not of this program from the user's part of the registry.

#pragma once

#include <memory>
#include <string>

namespace quorvan::platform {

// As long as an object lives, this process finds and changes another key in place of the user's
// part of the registry. That key holds nothing but the key `path` (names between '\'), stands in
// memory alone, takes no further keys, and is gone with the object. Does nothing where the system
// refuses, and on POSIX. No more than one object may live at a time. The constructor throws
// std::bad_alloc.
class NoRegistry {
 public:
  explicit NoRegistry(const std::u16string& path);

 private:
  std::unique_ptr<void, void (*)(void* key)> key_;
};

}  // namespace quorvan::platform
