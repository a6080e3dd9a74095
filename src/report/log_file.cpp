#include "report/log_file.h"

#include <utility>

#include "platform/path.h"

namespace quorvan {
namespace {

constexpr std::size_t kMostPending = std::size_t{64} << 10;
constexpr int kMostNames = 1000;

// Short, so that every name that a log can have leaves room for it.
constexpr std::u16string_view kTemporaryName = u"quorvan_log.part";

// True when `path` names the clip or one of its sources.
bool IsMaterial(const std::u16string& path, const APP_STATE_INFO& app) {
  if (platform::IsSameFile(path, app.mxfPath)) return true;
  for (const auto* entry = app.wavList->next; entry != nullptr; entry = entry->next) {
    if (platform::IsSameFile(path, entry->filePath)) return true;
  }
  return false;
}

}  // namespace

LogFile::LogFile(std::u16string path, const APP_STATE_INFO& app) : path_(std::move(path)) {
  if (IsMaterial(path_, app)) {
    error_ = platform::kNameTakenError;
    failed_ = true;
    return;
  }
  const std::size_t nameLength = platform::LastComponent(path_).size();
  const std::u16string base = path_.substr(0, path_.size() - nameLength).append(kTemporaryName);
  for (int n = 0; n < kMostNames; ++n) {
    temporaryPath_ = base;
    for (const char digit : std::to_string(n))
      temporaryPath_ += static_cast<char16_t>(digit);
    file_ = platform::File::Open(temporaryPath_, platform::OpenMode::kCreateNew);
    if (file_.IsOpen()) return;
    error_ = platform::LastSystemError();
    if (!platform::IsNameTaken(temporaryPath_)) break;
  }
  failed_ = true;
}

LogFile::~LogFile() {
  if (!file_.IsOpen()) return;
  file_.Close();
  platform::RemoveFile(temporaryPath_);
}

void LogFile::Write(std::string_view text) {
  pending_ += text;
  if (pending_.size() >= kMostPending) Flush();
}

bool LogFile::Finish() {
  Flush();
  if (failed_) return false;
  if (file_.Close() && platform::RenameReplacing(temporaryPath_, path_)) return true;
  Fail();
  platform::RemoveFile(temporaryPath_);
  return false;
}

void LogFile::Fail() {
  if (!failed_) error_ = platform::LastSystemError();
  failed_ = true;
}

void LogFile::Flush() {
  if (!failed_ && !file_.Write(pending_.data(), pending_.size())) Fail();
  pending_.clear();
}

}  // namespace quorvan
