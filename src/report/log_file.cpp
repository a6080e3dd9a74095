#include "report/log_file.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/path.h"
#include "platform/text.h"

namespace quorvan {
namespace {

constexpr std::size_t kMostPending = std::size_t{64} << 10;
constexpr int kMostNames = 1000;

// The name is short, so that it fits wherever the name of a log does.
constexpr std::u16string_view kTemporaryName = u"quorvan_log.part";

// True when `path` names the clip or a file of the library.
bool IsMaterial(const std::u16string& path, const APP_STATE_INFO& app) {
  if (platform::IsSameFile(path, app.mxfPath)) return true;
  for (const auto* entry = app.wavList->next; entry != nullptr; entry = entry->next) {
    if (platform::IsSameFile(path, entry->filePath)) return true;
  }
  return false;
}

// The system's error number that tells why a log must not replace the file at `path`. 0 when the
// log may replace the file: when there is no regular file, when `path` is a link, and when the file
// can be read and does not begin as MXF, RIFF or FORM.
std::uint32_t WhyNotToReplace(const std::u16string& path) {
  constexpr std::array<std::string_view, 6> starts = {
      "\x06\x0E\x2B\x34", "RIFF", "RF64", "BW64", "riff", "FORM"};
  if (!platform::QueryFileInfo(path) || platform::IsLink(path)) return 0;
  const auto file = platform::File::Open(path, platform::OpenMode::kReadShared);
  char head[4] = {};
  const std::size_t held = file.IsOpen() ? file.ReadAt(0, head, sizeof head) : 0;
  if (!file.IsOpen() || file.Trouble() != platform::ReadTrouble::kNone) {
    return platform::LastSystemError();
  }
  const bool material =
      std::find(starts.begin(), starts.end(), std::string_view(head, held)) != starts.end();
  return material ? platform::NameTakenError() : 0;
}

}  // namespace

LogFile::LogFile(std::u16string path, const APP_STATE_INFO& app) : path_(std::move(path)) {
  error_ = IsMaterial(path_, app) ? platform::NameTakenError() : WhyNotToReplace(path_);
  if (error_ != 0) {
    failed_ = true;
    return;
  }
  OpenTemporary();
  if (file_.IsOpen()) return;
  // The earlier log is overwritten in place only when no file can be created in its folder, and not
  // when the file has another name, under which the log would show too.
  if (platform::MeansNoRights(error_) && platform::QueryFileInfo(path_) &&
      !platform::IsLink(path_)) {
    platform::File old = platform::File::Open(path_, platform::OpenMode::kRewrite);
    inPlace_ = old.IsOpen() && !old.HasOtherNames();
    if (inPlace_) file_ = std::move(old);
  }
  failed_ = !inPlace_;
}

LogFile::~LogFile() {
  if (!file_.IsOpen()) return;
  file_.Close();
  if (!inPlace_) platform::RemoveFile(temporaryPath_);
}

void LogFile::OpenTemporary() {
  const std::size_t nameLength = platform::LastComponent(path_).size();
  const std::u16string base = path_.substr(0, path_.size() - nameLength).append(kTemporaryName);
  for (int n = 0; n < kMostNames; ++n) {
    temporaryPath_ = base;
    for (const char digit : std::to_string(n))
      temporaryPath_ += static_cast<char16_t>(digit);
    file_ = platform::File::Open(temporaryPath_, platform::OpenMode::kCreateNew);
    if (file_.IsOpen()) return;
    error_ = platform::LastSystemError();
    if (!platform::IsNameTaken(temporaryPath_)) return;
  }
}

void LogFile::Write(std::string_view text) {
  platform::AppendInSystemEncoding(text, &pending_);
  if (pending_.size() >= kMostPending) Flush();
}

bool LogFile::Finish() {
  Flush();
  if (failed_) return false;
  if (inPlace_ ? EndInPlace() : TakePlace()) return true;
  Fail();
  if (!inPlace_) platform::RemoveFile(temporaryPath_);
  return false;
}

bool LogFile::TakePlace() {
  if (!file_.Flush() || !file_.Close() || !platform::RenameReplacing(temporaryPath_, path_)) {
    return false;
  }
  platform::FlushFolderOf(path_);  // the log is there even when this fails
  return true;
}

bool LogFile::EndInPlace() {
  return file_.Resize(file_.Position()) && file_.Flush() && file_.Close();
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
