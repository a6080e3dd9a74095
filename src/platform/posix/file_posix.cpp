#include "platform/file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "platform/fault_seam.h"
#include "platform/path.h"
#include "platform/posix/file_time.h"
#include "platform/text.h"

namespace quorvan::platform {
namespace {

constexpr std::size_t kMostPieces = 64;  // of one gathered write

int Descriptor(std::intptr_t handle) {
  return static_cast<int>(handle);
}

// True, with errno set, when the seam decides that the call is not made.
bool ComesToNothing(CallOutcome outcome) {
  if (outcome == CallOutcome::kFails) errno = EIO;
  if (outcome == CallOutcome::kIsInterrupted) errno = EINTR;
  return outcome == CallOutcome::kFails || outcome == CallOutcome::kIsInterrupted;
}

// Makes a system call that returns 0 or a handle, and returns its result. Returns -1 with errno set
// when the seam decides that the call is not made.
template <typename Call>
int Through(SystemCall kind, Call call) {
  return ComesToNothing(OutcomeOf(kind)) ? -1 : call();
}

// Makes the call as Through does, and repeats it as often as it is interrupted.
template <typename Call>
int Uninterrupted(SystemCall kind, Call call) {
  int result = -1;
  do {
    result = Through(kind, call);
  } while (result < 0 && errno == EINTR);
  return result;
}

// Makes a system call that transfers up to the given number of bytes and returns how many it has
// transferred. `call` gets `length` bytes, at least 1, or half of them when the seam decides so.
// Returns -1 with errno set when the seam decides that the call is not made.
template <typename Call>
ssize_t TransferThrough(SystemCall kind, std::size_t length, Call call) {
  const CallOutcome outcome = OutcomeOf(kind);
  if (ComesToNothing(outcome)) return -1;
  return call(outcome == CallOutcome::kComesShort ? std::max<std::size_t>(length / 2, 1) : length);
}

// Makes the call as TransferThrough does, and repeats it as often as it is interrupted. Nothing
// when it fails otherwise.
template <typename Call>
std::optional<std::size_t> TransferAnyway(SystemCall kind, std::size_t length, Call call) {
  ssize_t step = -1;
  do {
    step = TransferThrough(kind, length, call);
  } while (step < 0 && errno == EINTR);
  return step < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(step));
}

std::size_t BytesOf(std::span<const iovec> pieces) {
  std::size_t bytes = 0;
  for (const iovec& piece : pieces)
    bytes += piece.iov_len;
  return bytes;
}

// Cuts the list of pieces to its first `bytes` bytes, fewer than the list holds. Returns the number
// of pieces that remain.
std::size_t CutTo(std::size_t bytes, std::span<iovec> pieces) {
  std::size_t count = 0;
  while (bytes > pieces[count].iov_len)
    bytes -= pieces[count++].iov_len;
  pieces[count].iov_len = bytes;
  return count + 1;
}

// True for the errors of storage that does not support flushing: its flush loses nothing.
bool KnowsNoFlush(int error) {
  return error == EINVAL || error == ENOTSUP;
}

FileTime ToFileTime(std::int64_t seconds, std::int64_t nanoseconds) {
  return static_cast<FileTime>(seconds * kTicksPerSecond + nanoseconds / 100 +
                               kUnixEpochAsFileTime);
}

timespec ToTimespec(FileTime time) {
  const std::int64_t ticks = static_cast<std::int64_t>(time) - kUnixEpochAsFileTime;
  timespec result{};
  result.tv_sec = static_cast<time_t>(ticks / kTicksPerSecond);
  result.tv_nsec = static_cast<long>(ticks % kTicksPerSecond * 100);
  if (result.tv_nsec < 0) {
    result.tv_nsec += 1000000000;
    --result.tv_sec;
  }
  return result;
}

int OpenFlags(OpenMode mode) {
  constexpr int common = O_CLOEXEC | O_NONBLOCK;
  switch (mode) {
    case OpenMode::kReadAlone:
    case OpenMode::kReadShared:
      return O_RDONLY | common;
    case OpenMode::kRewrite:
      return O_RDWR | common;
    case OpenMode::kCreateNew:
      return O_RDWR | O_CREAT | O_EXCL | common;
  }
  return -1;
}

// Takes the advisory lock for the sharing of `mode`. False when another program holds a conflicting
// lock. When a file system has no locks, or wants write access for an exclusive lock, reading goes
// on without the lock and writing is refused.
bool LockFor(int handle, OpenMode mode) {
  const int kind = mode == OpenMode::kReadShared ? LOCK_SH : LOCK_EX;
  if (Uninterrupted(SystemCall::kLock, [&] { return flock(handle, kind | LOCK_NB); }) == 0) {
    return true;
  }
  const bool readsOnly = mode == OpenMode::kReadAlone || mode == OpenMode::kReadShared;
  return readsOnly && errno != EWOULDBLOCK;
}

bool IsRegularFile(int handle) {
  struct stat status {};
  if (fstat(handle, &status) != 0) return false;
  if (!S_ISREG(status.st_mode)) errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  return S_ISREG(status.st_mode);
}

FileTimes TimesOf(const struct statx& status) {
  const statx_timestamp& born =
      (status.stx_mask & STATX_BTIME) != 0 ? status.stx_btime : status.stx_ctime;
  return {ToFileTime(born.tv_sec, born.tv_nsec),
          ToFileTime(status.stx_atime.tv_sec, status.stx_atime.tv_nsec),
          ToFileTime(status.stx_mtime.tv_sec, status.stx_mtime.tv_nsec)};
}

constexpr unsigned kStatxMask = STATX_BASIC_STATS | STATX_BTIME;

}  // namespace

File File::Open(const std::u16string& path, OpenMode mode) {
  // Nothing that can fail stands between the call and the File that owns its handle.
  std::filesystem::path name(ToUtf8(path));
  if (name.empty() || name.native().find('\0') != std::string::npos) return File();
  const int handle =
      Uninterrupted(SystemCall::kOpen, [&] { return open(name.c_str(), OpenFlags(mode), 0666); });
  if (handle < 0) return File();
  File file(handle, std::move(name));
  if (!IsRegularFile(handle) || !LockFor(handle, mode)) {
    if (mode == OpenMode::kCreateNew) unlink(file.name_.c_str());
    return File();
  }
  return file;
}

File File::OpenInMemory() {
  const int handle =
      Uninterrupted(SystemCall::kOpen, [] { return memfd_create("unnamed", MFD_CLOEXEC); });
  return handle < 0 ? File() : File(handle, {});
}

bool File::Close() {
  bool closed = true;
  if (IsOpen()) {
    const CallOutcome outcome = OutcomeOf(SystemCall::kClose);
    closed = (close(Descriptor(handle_)) == 0 || errno == EINTR) && outcome != CallOutcome::kFails;
  }
  handle_ = kNoHandle;
  position_ = 0;
  stopRequest_ = nullptr;
  return closed;
}

std::optional<std::uint64_t> File::Size() const {
  struct stat status {};
  if (Through(SystemCall::kSize, [&] { return fstat(Descriptor(handle_), &status); }) != 0) {
    trouble_ = ReadTrouble::kFailed;
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::size_t> File::ReadOnce(std::uint64_t offset, void* buffer,
                                          std::size_t length) const {
  return TransferAnyway(SystemCall::kRead, length, [&](std::size_t part) {
    return pread(Descriptor(handle_), buffer, part, static_cast<off_t>(offset));
  });
}

std::optional<std::size_t> File::WriteOnce(SystemCall kind, std::uint64_t offset, const void* data,
                                           std::size_t length) {
  return TransferAnyway(kind, length, [&](std::size_t part) {
    return pwrite(Descriptor(handle_), data, part, static_cast<off_t>(offset));
  });
}

bool File::ReadCachedAt(std::uint64_t offset, void* buffer, std::size_t length) const {
  if (offset > kMostFileOffset || length > kMostFileOffset - offset) return false;
  const iovec piece = {buffer, length};
  return OutcomeOf(SystemCall::kCachedRead) != CallOutcome::kFails &&
         preadv2(Descriptor(handle_), &piece, 1, static_cast<off_t>(offset), RWF_NOWAIT) ==
             static_cast<ssize_t>(length);
}

void File::ExpectScattered() const {
  posix_fadvise(Descriptor(handle_), 0, 0, POSIX_FADV_RANDOM);
}

void File::Prefetch(std::uint64_t offset, std::uint64_t length) const {
  if (offset > kMostFileOffset || length > kMostFileOffset - offset) return;
  posix_fadvise(Descriptor(handle_), static_cast<off_t>(offset), static_cast<off_t>(length),
                POSIX_FADV_WILLNEED);
}

WriteResult File::WriteGathered(std::uint64_t offset,
                                std::span<const std::span<const std::uint8_t>> pieces) {
  std::array<iovec, kMostPieces> calls;
  std::size_t skipped = 0;  // bytes of the first remaining piece that are written already
  while (!pieces.empty()) {
    const std::size_t count = std::min(pieces.size(), calls.size());
    for (std::size_t i = 0; i < count; ++i) {
      const auto piece = pieces[i].subspan(i == 0 ? skipped : 0);
      calls[i] = {const_cast<std::uint8_t*>(piece.data()), piece.size()};
    }
    if (offset > kMostFileOffset) return WriteResult::kFailed;
    const std::size_t total = BytesOf(std::span(calls).first(count));
    const ssize_t step = TransferThrough(SystemCall::kGatheredWrite, total, [&](std::size_t part) {
      const std::size_t used = part < total ? CutTo(part, calls) : count;
      return pwritev(Descriptor(handle_), calls.data(), static_cast<int>(used),
                     static_cast<off_t>(offset));
    });
    if (step < 0 && errno == EINTR) continue;
    if (step < 0) return errno == EFAULT ? WriteResult::kSourceFault : WriteResult::kFailed;
    offset += static_cast<std::uint64_t>(step);
    skipped += static_cast<std::size_t>(step);
    const std::size_t before = pieces.size();
    while (!pieces.empty() && skipped >= pieces.front().size()) {
      skipped -= pieces.front().size();
      pieces = pieces.subspan(1);
    }
    if (step == 0 && pieces.size() == before) return WriteResult::kFailed;
  }
  return WriteResult::kDone;
}

bool File::Flush() {
  return Uninterrupted(SystemCall::kFlush, [&] { return fsync(Descriptor(handle_)); }) == 0 ||
         KnowsNoFlush(errno);
}

bool File::Resize(std::uint64_t size) {
  return size <= kMostFileOffset &&
         Uninterrupted(SystemCall::kWrite, [&] {
           return ftruncate(Descriptor(handle_), static_cast<off_t>(size));
         }) == 0;
}

std::optional<FileTimes> File::Times() const {
  struct statx status {};
  const auto ask = [&] {
    return statx(Descriptor(handle_), "", AT_EMPTY_PATH, kStatxMask, &status);
  };
  if (Through(SystemCall::kTimes, ask) != 0) return std::nullopt;
  return TimesOf(status);
}

bool File::IsStillAtItsPath() const noexcept {
  struct stat here {};
  struct stat there {};
  return fstat(Descriptor(handle_), &here) == 0 && stat(name_.c_str(), &there) == 0 &&
         here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

bool File::HasOtherNames() const {
  struct stat status {};
  return fstat(Descriptor(handle_), &status) != 0 || status.st_nlink > 1;
}

bool File::SetTimes(const FileTimes& times) {
  const timespec values[2] = {ToTimespec(times.lastAccess), ToTimespec(times.lastWrite)};
  return Through(SystemCall::kTimes, [&] { return futimens(Descriptor(handle_), values); }) == 0;
}

std::optional<FileInfo> QueryFileInfo(const std::u16string& path) {
  const std::string name = ToUtf8(path);
  struct statx status {};
  if (name.empty() || statx(AT_FDCWD, name.c_str(), 0, kStatxMask, &status) != 0 ||
      !S_ISREG(status.stx_mode)) {
    return std::nullopt;
  }
  return FileInfo{status.stx_size, TimesOf(status)};
}

std::optional<std::uint64_t> FreeBytesBeside(const std::u16string& path) {
  const std::u16string absolute = AbsolutePath(path);
  const std::filesystem::path folder(
      ToUtf8(absolute.substr(0, absolute.size() - LastComponent(absolute).size())));
  std::error_code failed;
  const std::filesystem::space_info space = std::filesystem::space(folder, failed);
  return failed ? std::nullopt : std::optional<std::uint64_t>(space.available);
}

bool IsNameTaken(const std::u16string& path) {
  struct stat status {};
  return lstat(ToUtf8(path).c_str(), &status) == 0;
}

bool IsLink(const std::u16string& path) {
  struct stat status {};
  return lstat(ToUtf8(path).c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool IsSameFile(const std::u16string& a, const std::u16string& b) {
  struct stat first {};
  struct stat second {};
  const std::string name = ToUtf8(b);
  const auto same = [&] { return first.st_dev == second.st_dev && first.st_ino == second.st_ino; };
  return lstat(ToUtf8(a).c_str(), &first) == 0 && ((lstat(name.c_str(), &second) == 0 && same()) ||
                                                   (stat(name.c_str(), &second) == 0 && same()));
}

bool RemoveFile(const std::u16string& path) noexcept {
  try {
    return unlink(ToUtf8(path).c_str()) == 0;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool FlushFolderOf(const std::u16string& path) {
  const std::string folder = ToUtf8(FolderOf(AbsolutePath(path)));
  const int handle = Uninterrupted(
      SystemCall::kOpen, [&] { return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  // A folder that may be written but not read cannot be opened here: such a folder counts as
  // flushed.
  if (handle < 0) return errno == EACCES;
  const bool flushed =
      Uninterrupted(SystemCall::kFlush, [&] { return fsync(handle); }) == 0 || KnowsNoFlush(errno);
  close(handle);
  return flushed;
}

bool CanBeNamed(const std::u16string& path) {
  struct stat status {};
  return lstat(ToUtf8(path).c_str(), &status) == 0 || errno != ENAMETOOLONG;
}

bool RenameWithoutReplacing(const std::u16string& from, const std::u16string& to) {
  const std::string source = ToUtf8(from);
  const std::string target = ToUtf8(to);
  const auto move = [&] {
    return renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
  };
  if (Through(SystemCall::kRename, move) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // The file system cannot rename without replacing. A second name for the file does the same,
  // because link fails when the target exists.
  return link(source.c_str(), target.c_str()) == 0 && unlink(source.c_str()) == 0;
}

bool RenameReplacing(const std::u16string& from, const std::u16string& to) {
  const std::string target = ToUtf8(to);
  struct stat status {};
  const bool exists = stat(target.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    errno = EEXIST;
    return false;
  }
  const std::string source = ToUtf8(from);
  return Through(SystemCall::kRename, [&] { return rename(source.c_str(), target.c_str()); }) == 0;
}

std::uint32_t NameTakenError() {
  return EEXIST;
}

bool MeansNoRights(std::uint32_t systemError) {
  const auto error = static_cast<int>(systemError);
  return error == EACCES || error == EPERM || error == EROFS;
}

std::uint32_t LastSystemError() {
  return static_cast<std::uint32_t>(errno);
}

}  // namespace quorvan::platform
