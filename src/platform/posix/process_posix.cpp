#include "platform/process.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace quorvan::platform {
namespace {

std::string InstancePath(std::string_view name) {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder != nullptr && *folder != 0) return std::string(folder).append("/").append(name);
  return std::string("/tmp/").append(name).append("-").append(std::to_string(getuid()));
}

}  // namespace

void PrepareProcess() {}

bool TakeInstance(std::string_view name) {
  const std::string path = InstancePath(name);
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  // The file stays open, since the lock ends with it.
  if (file < 0 || flock(file, LOCK_EX | LOCK_NB) == 0) return true;
  const bool isTaken = errno == EWOULDBLOCK;
  close(file);
  return !isTaken;
}

}  // namespace quorvan::platform
