#include "platform/file.h"

#include <windows.h>
#include <winioctl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "platform/fault_guard.h"
#include "platform/fault_seam.h"
#include "platform/mapping.h"
#include "platform/path.h"
#include "platform/windows/file_time.h"
#include "platform/windows/wide_text.h"

namespace quorvan::platform {
namespace {

constexpr std::size_t kGatherBytes = std::size_t{256} << 10;  // on the stack of a thread
constexpr std::size_t kLongestPath = 32767;                   // for the calls of the system
constexpr std::size_t kLongestComponent = 255;                // in its file systems
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE SystemHandle(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

// True, with the last error set, when the seam decides that the call is not made.
bool ComesToNothing(CallOutcome outcome) {
  if (outcome == CallOutcome::kFails) SetLastError(ERROR_IO_DEVICE);
  return outcome == CallOutcome::kFails;
}

// Makes a system call that returns whether it has succeeded, and returns its result. False, with
// the last error set, when the seam decides that the call is not made.
template <typename Call>
bool Through(SystemCall kind, Call call) {
  return !ComesToNothing(OutcomeOf(kind)) && call();
}

// Makes a system call that transfers up to the given number of bytes at a file offset, and returns
// how many it has transferred. `call` gets `length` bytes, at least 1, or half of them when the
// seam decides so. Nothing, with the last error set, when the call fails or the seam decides that
// the call is not made.
template <typename Call>
std::optional<std::size_t> TransferThrough(SystemCall kind, std::uint64_t offset,
                                           std::size_t length, Call call) {
  const CallOutcome outcome = OutcomeOf(kind);
  if (ComesToNothing(outcome)) return std::nullopt;
  if (outcome == CallOutcome::kComesShort) length = std::max<std::size_t>(length / 2, 1);
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD done = 0;
  if (!call(static_cast<DWORD>(length), &done, &place)) return std::nullopt;
  return done;
}

// Makes a system call about the name of a file, and repeats the call for a while where another
// program has the file open: a scanner looks at each new file for a moment.
template <typename Call>
bool Patiently(Call call) {
  constexpr int kMostAttempts = 20;
  constexpr DWORD kPauseMilliseconds = 100;
  for (int attempt = 1; !call(); ++attempt) {
    const DWORD error = GetLastError();
    const bool isHeld = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
    if (!isHeld || attempt == kMostAttempts) return false;
    Sleep(kPauseMilliseconds);
  }
  return true;
}

// True for the errors of storage that does not support flushing: its flush loses nothing.
bool KnowsNoFlush(DWORD error) {
  return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

// What CreateFileW is told for an open mode. The flag about random access is the system's only
// place for ExpectScattered: it keeps the system from reading ahead in a clip.
struct OpenArguments {
  DWORD access;
  DWORD sharing;  // what other programs may open the file for
  DWORD disposition;
  DWORD flags;
};

OpenArguments ArgumentsOf(OpenMode mode) {
  constexpr DWORD readWrite = GENERIC_READ | GENERIC_WRITE;
  switch (mode) {
    case OpenMode::kReadAlone:
      return {GENERIC_READ, 0, OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS};
    case OpenMode::kReadShared:
      return {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, 0};
    case OpenMode::kRewrite:
      return {readWrite, 0, OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS};
    case OpenMode::kCreateNew:
      return {readWrite, 0, CREATE_NEW, 0};
  }
  return {};
}

// True when the last component of the absolute path `name` is no name of a file. A ':' would lead
// to a stream of another file.
bool HasBadName(std::wstring_view name) {
  const std::wstring_view last = name.substr(name.find_last_of(L'\\') + 1);
  return last.find_first_of(LR"(<>:"|?*)") != std::wstring_view::npos ||
         std::any_of(last.begin(), last.end(), [](wchar_t unit) { return unit < L' '; });
}

bool IsRegularFile(HANDLE handle) {
  if (GetFileType(handle) == FILE_TYPE_DISK) return true;
  SetLastError(ERROR_INVALID_NAME);
  return false;
}

// What the system tells of the file or folder at `path`, also while the file is open in any mode.
// With FILE_FLAG_OPEN_REPARSE_POINT in `flags` a link counts as itself, else it is followed.
std::optional<BY_HANDLE_FILE_INFORMATION> Describe(const wchar_t* path, DWORD flags) {
  const HANDLE handle = CreateFileW(path, FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  BY_HANDLE_FILE_INFORMATION info{};
  const bool told = GetFileInformationByHandle(handle, &info);
  CloseHandle(handle);
  return told ? std::optional(info) : std::nullopt;
}

bool IsSame(const BY_HANDLE_FILE_INFORMATION& a, const BY_HANDLE_FILE_INFORMATION& b) {
  return a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
         a.nFileIndexLow == b.nFileIndexLow;
}

// Prefetches through a view that moves along the file in large steps, because making a view takes
// longer than asking for a frame.
class Prefetching {
 public:
  // Takes over `mapping`, a mapping of a whole file of `fileBytes` bytes.
  Prefetching(HANDLE mapping, std::uint64_t fileBytes) : mapping_(mapping), fileBytes_(fileBytes) {}
  Prefetching(const Prefetching&) = delete;
  Prefetching& operator=(const Prefetching&) = delete;
  ~Prefetching() {
    if (view_ != nullptr) UnmapViewOfFile(view_);
    CloseHandle(mapping_);
  }

  // Asks the system to fetch the bytes [offset, offset + length) of the file. What lies behind the
  // view that begins with the step of `offset` is not fetched.
  void Ask(std::uint64_t offset, std::uint64_t length) {
    const std::uint64_t step = offset / kStep;
    if (view_ == nullptr || step != step_) MoveTo(step);
    const std::uint64_t start = offset - step * kStep;
    if (view_ == nullptr || start >= bytes_) return;
    WIN32_MEMORY_RANGE_ENTRY range = {static_cast<char*>(view_) + start,
                                      static_cast<std::size_t>(std::min(length, bytes_ - start))};
    PrefetchVirtualMemory(GetCurrentProcess(), 1, &range, 0);
  }

 private:
  static constexpr std::uint64_t kStep = std::uint64_t{1} << 30;     // bytes between two views
  static constexpr std::uint64_t kOverlap = std::uint64_t{1} << 25;  // the longest row fits

  void MoveTo(std::uint64_t step) {
    if (view_ != nullptr) UnmapViewOfFile(view_);
    view_ = nullptr;
    step_ = step;
    const std::uint64_t start = step * kStep;
    if (start >= fileBytes_) return;
    bytes_ = std::min(kStep + kOverlap, fileBytes_ - start);
    view_ = MapViewOfFile(mapping_, FILE_MAP_READ, static_cast<DWORD>(start >> 32),
                          static_cast<DWORD>(start), static_cast<std::size_t>(bytes_));
  }

  HANDLE mapping_;
  std::uint64_t fileBytes_;
  void* view_ = nullptr;
  std::uint64_t step_ = 0;   // the view begins at this multiple of kStep
  std::uint64_t bytes_ = 0;  // length of the view
};

// The Prefetching of an open file; null when the system has no mapping or no memory for it.
std::unique_ptr<void, void (*)(void*)> MakePrefetching(HANDLE file) {
  const auto destroy = [](void* made) { delete static_cast<Prefetching*>(made); };
  LARGE_INTEGER size{};
  const HANDLE mapping = GetFileSizeEx(file, &size)
                             ? CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr)
                             : nullptr;
  if (mapping == nullptr) return {nullptr, destroy};
  auto* made = new (std::nothrow) Prefetching(mapping, static_cast<std::uint64_t>(size.QuadPart));
  if (made == nullptr) CloseHandle(mapping);
  return {made, destroy};
}

}  // namespace

File File::Open(const std::u16string& path, OpenMode mode) {
  // Nothing that can fail stands between the call and the File that owns its handle.
  if (path.empty() || path.find(u'\0') != std::u16string::npos) return File();
  std::filesystem::path name(SystemPath(path));
  if (HasBadName(name.native())) {
    SetLastError(ERROR_INVALID_NAME);
    return File();
  }
  const OpenArguments with = ArgumentsOf(mode);
  HANDLE handle = INVALID_HANDLE_VALUE;
  const bool opened = Through(SystemCall::kOpen, [&] {
    handle = CreateFileW(name.c_str(), with.access, with.sharing, nullptr, with.disposition,
                         FILE_ATTRIBUTE_NORMAL | with.flags, nullptr);
    return handle != INVALID_HANDLE_VALUE;
  });
  if (!opened) return File();
  File file(reinterpret_cast<std::intptr_t>(handle), std::move(name));
  return IsRegularFile(handle) ? std::move(file) : File();
}

// A file of the system's folder for such files. The system keeps a temporary file in memory as long
// as it has room there, and a sparse file holds only what is written.
File File::OpenInMemory() {
  std::array<wchar_t, MAX_PATH + 1> folder{};
  std::array<wchar_t, MAX_PATH> name{};
  HANDLE handle = INVALID_HANDLE_VALUE;
  const bool opened = Through(SystemCall::kOpen, [&] {
    if (GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()) == 0 ||
        GetTempFileNameW(folder.data(), L"qvn", 0, name.data()) == 0) {
      return false;
    }
    handle =
        CreateFileW(name.data(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr, OPEN_EXISTING,
                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle == INVALID_HANDLE_VALUE) DeleteFileW(name.data());
    return handle != INVALID_HANDLE_VALUE;
  });
  if (!opened) return File();
  File file(reinterpret_cast<std::intptr_t>(handle), {});
  DWORD unused = 0;
  const bool sparse =
      DeviceIoControl(handle, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &unused, nullptr);
  return sparse ? std::move(file) : File();
}

bool File::Close() {
  bool closed = true;
  if (IsOpen()) {
    const CallOutcome outcome = OutcomeOf(SystemCall::kClose);
    prefetching_.reset();
    closed = CloseHandle(SystemHandle(handle_)) && !ComesToNothing(outcome);
  }
  handle_ = kNoHandle;
  position_ = 0;
  stopRequest_ = nullptr;
  return closed;
}

std::optional<std::uint64_t> File::Size() const {
  LARGE_INTEGER size{};
  if (!Through(SystemCall::kSize, [&] { return GetFileSizeEx(SystemHandle(handle_), &size); })) {
    trouble_ = ReadTrouble::kFailed;
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::optional<std::size_t> File::ReadOnce(std::uint64_t offset, void* buffer,
                                          std::size_t length) const {
  const auto step = TransferThrough(
      SystemCall::kRead, offset, length, [&](DWORD part, DWORD* read, OVERLAPPED* place) {
        return ReadFile(SystemHandle(handle_), buffer, part, read, place);
      });
  return !step && GetLastError() == ERROR_HANDLE_EOF ? 0 : step;
}

std::optional<std::size_t> File::WriteOnce(SystemCall kind, std::uint64_t offset, const void* data,
                                           std::size_t length) {
  return TransferThrough(kind, offset, length, [&](DWORD part, DWORD* written, OVERLAPPED* place) {
    return WriteFile(SystemHandle(handle_), data, part, written, place);
  });
}

// The system does not tell what it has in memory.
bool File::ReadCachedAt(std::uint64_t, void*, std::size_t) const {
  return false;
}

// Said when the file is opened (ArgumentsOf), of a clip that is opened alone.
void File::ExpectScattered() const {}

// The system prefetches views alone.
void File::Prefetch(std::uint64_t offset, std::uint64_t length) const {
  if (prefetching_ == nullptr) prefetching_ = MakePrefetching(SystemHandle(handle_));
  if (prefetching_ != nullptr) static_cast<Prefetching*>(prefetching_.get())->Ask(offset, length);
}

// The system gathers only whole pages. The pieces are therefore copied into a buffer, which holds
// all of a usual row and is written at once.
WriteResult File::WriteGathered(std::uint64_t offset,
                                std::span<const std::span<const std::uint8_t>> pieces) {
  std::array<std::uint8_t, kGatherBytes> buffer;
  std::size_t skipped = 0;  // bytes of the first remaining piece that are written already
  while (!pieces.empty()) {
    std::size_t held = 0;
    auto gather = [&] {
      while (!pieces.empty() && held < buffer.size()) {
        const auto rest = pieces.front().subspan(skipped);
        const std::size_t part = std::min(rest.size(), buffer.size() - held);
        std::copy_n(rest.begin(), part, buffer.begin() + static_cast<std::ptrdiff_t>(held));
        held += part;
        skipped = part < rest.size() ? skipped + part : 0;
        if (skipped == 0) pieces = pieces.subspan(1);
      }
    };
    if (!RunGuarded(gather).completed) return WriteResult::kSourceFault;
    if (!WriteAll(SystemCall::kGatheredWrite, offset, buffer.data(), held)) {
      return WriteResult::kFailed;
    }
    offset += held;
  }
  return WriteResult::kDone;
}

bool File::Flush() {
  return Through(SystemCall::kFlush, [&] { return FlushFileBuffers(SystemHandle(handle_)); }) ||
         KnowsNoFlush(GetLastError());
}

bool File::Resize(std::uint64_t size) {
  FILE_END_OF_FILE_INFO end{};
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
  return size <= kMostFileOffset && Through(SystemCall::kWrite, [&] {
           return SetFileInformationByHandle(SystemHandle(handle_), FileEndOfFileInfo, &end,
                                             sizeof end);
         });
}

std::optional<FileTimes> File::Times() const {
  FILETIME creation{}, lastAccess{}, lastWrite{};
  const auto ask = [&] {
    return GetFileTime(SystemHandle(handle_), &creation, &lastAccess, &lastWrite);
  };
  if (!Through(SystemCall::kTimes, ask)) return std::nullopt;
  return FileTimes{FromSystem(creation), FromSystem(lastAccess), FromSystem(lastWrite)};
}

bool File::IsStillAtItsPath() const noexcept {
  BY_HANDLE_FILE_INFORMATION here{};
  const auto there = Describe(name_.c_str(), 0);
  return there && GetFileInformationByHandle(SystemHandle(handle_), &here) && IsSame(here, *there);
}

bool File::HasOtherNames() const {
  BY_HANDLE_FILE_INFORMATION info{};
  return !GetFileInformationByHandle(SystemHandle(handle_), &info) || info.nNumberOfLinks > 1;
}

bool File::SetTimes(const FileTimes& times) {
  const FILETIME lastAccess = ToSystem(times.lastAccess);
  const FILETIME lastWrite = ToSystem(times.lastWrite);
  return Through(SystemCall::kTimes, [&] {
    return SetFileTime(SystemHandle(handle_), nullptr, &lastAccess, &lastWrite);
  });
}

std::optional<FileInfo> QueryFileInfo(const std::u16string& path) {
  const auto info = Describe(SystemPath(path).c_str(), 0);
  if (!info || (info->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return std::nullopt;
  return FileInfo{std::uint64_t{info->nFileSizeHigh} << 32 | info->nFileSizeLow,
                  {FromSystem(info->ftCreationTime), FromSystem(info->ftLastAccessTime),
                   FromSystem(info->ftLastWriteTime)}};
}

std::optional<std::uint64_t> FreeBytesBeside(const std::u16string& path) {
  std::u16string folder = AbsolutePath(path);
  folder.resize(folder.size() - LastComponent(folder).size());
  ULARGE_INTEGER available{};
  if (!GetDiskFreeSpaceExW(SystemPath(folder).c_str(), &available, nullptr, nullptr)) {
    return std::nullopt;
  }
  return available.QuadPart;
}

bool IsNameTaken(const std::u16string& path) {
  return GetFileAttributesW(SystemPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsLink(const std::u16string& path) {
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW(SystemPath(path).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         found.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
}

bool IsSameFile(const std::u16string& a, const std::u16string& b) {
  const std::wstring firstName = SystemPath(a);
  const std::wstring name = SystemPath(b);
  const auto first = Describe(firstName.c_str(), FILE_FLAG_OPEN_REPARSE_POINT);
  // Some servers number no files.
  if (first && first->nFileIndexHigh == 0 && first->nFileIndexLow == 0) {
    return CompareStringOrdinal(firstName.c_str(), -1, name.c_str(), -1, TRUE) == CSTR_EQUAL;
  }
  const auto same = [&](DWORD flags) {
    const auto second = Describe(name.c_str(), flags);
    return second && IsSame(*first, *second);
  };
  return first && (same(FILE_FLAG_OPEN_REPARSE_POINT) || same(0));
}

bool RemoveFile(const std::u16string& path) noexcept {
  try {
    const std::wstring name = SystemPath(path);
    return Patiently([&] { return DeleteFileW(name.c_str()); });
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// The system has no flush of a folder. A rename is written through, and the flush of a new file
// brings its name along. Only the seam is asked.
bool FlushFolderOf(const std::u16string&) {
  return Through(SystemCall::kFlush, [] { return true; });
}

bool CanBeNamed(const std::u16string& path) {
  const std::wstring name = SystemPath(path);
  return !HasBadName(name) && name.size() <= kLongestPath &&
         name.size() - (name.find_last_of(L'\\') + 1) <= kLongestComponent;
}

bool RenameWithoutReplacing(const std::u16string& from, const std::u16string& to) {
  const std::wstring source = SystemPath(from);
  const std::wstring target = SystemPath(to);
  if (Through(SystemCall::kRename, [&] {
        return MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH);
      })) {
    return true;
  }
  if (GetLastError() == ERROR_ALREADY_EXISTS) SetLastError(NameTakenError());
  return false;
}

bool RenameReplacing(const std::u16string& from, const std::u16string& to) {
  const std::wstring source = SystemPath(from);
  const std::wstring target = SystemPath(to);
  return Through(SystemCall::kRename, [&] {
    return Patiently([&] {
      return MoveFileExW(source.c_str(), target.c_str(),
                         MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    });
  });
}

std::uint32_t NameTakenError() {
  return ERROR_FILE_EXISTS;
}

bool MeansNoRights(std::uint32_t systemError) {
  return systemError == ERROR_ACCESS_DENIED || systemError == ERROR_WRITE_PROTECT;
}

std::uint32_t LastSystemError() {
  return GetLastError();
}

}  // namespace quorvan::platform
