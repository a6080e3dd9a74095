#include "platform/text.h"

namespace quorvan::platform {

void AppendInSystemEncoding(std::string_view utf8, std::string* text) {
  text->append(utf8);
}

}  // namespace quorvan::platform
