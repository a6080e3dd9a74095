#include "view/file_drop.h"

#include "platform/path.h"

namespace quorvan {
namespace {
constexpr std::size_t kMostExtensionChars = 4;  // with the dot
}

DropDecision DecideDrop(std::span<const std::u16string> paths, bool loaded) {
  DropDecision decision;
  bool seenMxf = false;
  for (const std::u16string& path : paths) {
    const std::u16string extension = platform::LowerCaseExtension(path);
    if (extension.size() > kMostExtensionChars) continue;
    const bool isMxf = extension == u".mxf";
    if (loaded) {
      if (extension == u".wav" || extension == u".bwf") decision.wavFiles.push_back(path);
      decision.refuseMxf = decision.refuseMxf || isMxf;
      continue;
    }
    decision.load.reset();
    if (isMxf && !seenMxf) decision.load = path;
    seenMxf = seenMxf || isMxf;
  }
  return decision;
}

}  // namespace quorvan
