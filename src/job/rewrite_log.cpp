#include "job/rewrite_log.h"

#include <string_view>

#include "job/process_table.h"
#include "report/rewrap_log.h"

namespace quorvan {

bool LogRewrite(std::int32_t result, APP_STATE_INFO* app, std::u16string* failure) {
  std::u16string_view notice;
  if (result == kDoneWithNotice) notice = UmidStateText(app->tracks->umidState);
  std::uint32_t error = 0;
  if (WriteRewrapLog(app, notice, &error)) return true;
  *failure = RewrapLogFailureMessage(app->mxfPath, error);
  return false;
}

}  // namespace quorvan
