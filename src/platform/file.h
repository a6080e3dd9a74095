// Files with 64-bit offsets, and operations on paths. Paths are UTF-16 and offsets and lengths
// count bytes. A function that takes a path throws std::bad_alloc when memory is out, unless it
// says otherwise; the other functions throw nothing.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace quorvan::platform {

enum class SystemCall;  // fault_seam.h

// How a file is opened, and who else may have the file open at the same time. On POSIX the sharing
// is an advisory lock, which binds only programs that ask for it, as all programs of this project
// do; on Windows it binds every program. A file on which another program holds a conflicting lock
// cannot be opened.
enum class OpenMode {
  kReadAlone,   // existing file, read only, shared with nobody
  kReadShared,  // existing file, read only, shared with other readers
  kRewrite,     // existing file, read and write, shared with nobody
  kCreateNew,   // new file, read and write, shared with nobody; fails when the name exists
};

// What became of a gathered write.
enum class WriteResult {
  kDone,         // all bytes were written
  kFailed,       // the file could not be written; some of the bytes may have been
  kSourceFault,  // a piece lies in a view whose storage has failed; some bytes may have been
                 // written
};

// Why a read gave fewer bytes than it was asked for, when the reason was not the end of the file.
enum class ReadTrouble {
  kNone,
  kFailed,   // the system has reported an error for a read or for the size of the file
  kStopped,  // the stop request of StopOn has come
};

// Largest offset that a file can have.
inline constexpr std::uint64_t kMostFileOffset = std::numeric_limits<std::int64_t>::max();

// A point in time in units of 100 ns since 1601-01-01 00:00 UTC.
using FileTime = std::uint64_t;

struct FileTimes {
  FileTime creation;  // birth of the file; last status change where the system keeps no birth time
  FileTime lastAccess;
  FileTime lastWrite;
};

// Size and times of a file, as the system tells them also while another program has the file open.
struct FileInfo {
  std::uint64_t size;  // bytes
  FileTimes times;
};

// An open file, closed on destruction. Not safe for use by two threads at once.
class File {
 public:
  File() = default;
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File();

  // Opens the regular file at `path`. Returns a File that is not open when there is no such file
  // (for kCreateNew: when the name exists), when rights are missing, or when another program holds
  // a conflicting lock; LastSystemError tells why. An empty path, and a path that contains a
  // zero, open no file either; LastSystemError then tells nothing. Where a file system has no
  // locks, files are opened for reading without a lock; kRewrite and kCreateNew fail.
  static File Open(const std::u16string& path, OpenMode mode);

  // Opens a new file that stands in memory as far as it is written, and that nobody else can open;
  // it is gone when it is closed. Returns a File that is not open when the system has none. Throws
  // nothing.
  static File OpenInMemory();

  bool IsOpen() const { return handle_ != kNoHandle; }

  // Closes the file. False when the system reports on closing that written data is lost. True for a
  // file that is not open.
  bool Close();

  // Why a read since the file was opened gave fewer bytes than it was asked for. A reader may take
  // a failed read for the end of the file, so its caller asks here afterwards. An error replaces a
  // stop; neither is ever reset.
  ReadTrouble Trouble() const { return trouble_; }

  // From now on a read returns no more bytes once `*request` is 1, so that every loop that reads
  // comes to an end. `*request` must outlive the file. With null, reads are no longer stopped.
  void StopOn(const std::atomic<std::uint32_t>* request) { stopRequest_ = request; }

  // True while the stop request of StopOn is 1. For loops that work without reading.
  bool StopAsked() const { return stopRequest_ != nullptr && *stopRequest_ == 1; }

  // Size in bytes. Nothing when the system cannot tell the size; Trouble is then kFailed.
  std::optional<std::uint64_t> Size() const;

  // Moves the file pointer to `offset` bytes from the start of the file. False, with the pointer
  // unchanged, for an offset above 2^63 - 1.
  bool Seek(std::uint64_t offset);

  // The file pointer: bytes from the start of the file.
  std::uint64_t Position() const { return position_; }

  // Reads up to `length` bytes at the file pointer into `buffer` and moves the pointer past the
  // bytes read. Returns their number: fewer than `length` at the end of the file or for the reason
  // that Trouble gives; 0 when the range ends above offset 2^63 - 1.
  std::size_t Read(void* buffer, std::size_t length);

  // Writes `length` bytes at the file pointer and moves the pointer past them. False, with the
  // pointer unchanged, when not all bytes could be written; some bytes may have been written.
  bool Write(const void* data, std::size_t length);

  // Reads as Read does, at `offset` bytes from the start of the file, and leaves the file pointer
  // alone.
  std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t length) const;

  // Writes as Write does, at `offset` bytes from the start of the file, and leaves the file pointer
  // alone.
  bool WriteAt(std::uint64_t offset, const void* data, std::size_t length);

  // Reads `length` bytes at `offset` only if the system has all of them in memory. Returns false at
  // once when a byte would have to come from the medium, lies beyond the end of the file, or when
  // the system cannot tell; `buffer` may then hold some of the bytes. Does not change Trouble.
  bool ReadCachedAt(std::uint64_t offset, void* buffer, std::size_t length) const;

  // Tells the system that reads and writes will be scattered over the file, so that it fetches
  // nothing around them.
  void ExpectScattered() const;

  // Asks the system to fetch the bytes [offset, offset + length) from the medium, because they are
  // going to be read or partly overwritten. Does not wait for the bytes.
  void Prefetch(std::uint64_t offset, std::uint64_t length) const;

  // Writes the pieces one after the other, without a gap, from `offset` on, in as few system calls
  // as possible. The pieces may lie in mapped views. Leaves the file pointer alone.
  WriteResult WriteGathered(std::uint64_t offset,
                            std::span<const std::span<const std::uint8_t>> pieces);

  // Waits until all written data, the size and the times of the file are on the medium. False when
  // the system reports that some of them are lost. Do not repeat a flush that failed: the system
  // forgets what was lost, so the second call could return true. Storage without such a request
  // counts as flushed.
  bool Flush();

  // Cuts the file to `size` bytes, or extends it with zeros. False when the system refuses.
  bool Resize(std::uint64_t size);

  // True when the path by which the file was opened still leads to this file, directly or through a
  // link.
  bool IsStillAtItsPath() const noexcept;

  // True when the file has more than one name, or the system cannot tell.
  bool HasOtherNames() const;

  // The times of the file. Nothing when the system cannot tell them.
  std::optional<FileTimes> Times() const;

  // Sets the times of the last access and the last write, and leaves the creation time as it is.
  // False when the system refuses.
  bool SetTimes(const FileTimes& times);

  // The system's own handle, -1 for a file that is not open. Only for the other services of
  // src/platform.
  std::intptr_t NativeHandle() const { return handle_; }

 private:
  static constexpr std::intptr_t kNoHandle = -1;

  File(std::intptr_t handle, std::filesystem::path&& name) noexcept
      : handle_(handle), name_(std::move(name)) {}

  // Asks the system once to read up to `length` bytes, at least 1, at `offset`. Returns how many
  // bytes were read: 0 at the end of the file. Nothing when the system reports an error. Begins
  // anew where a signal interrupts the call.
  std::optional<std::size_t> ReadOnce(std::uint64_t offset, void* buffer, std::size_t length) const;

  // Asks the system once, by a call that counts as `kind`, to write up to `length` bytes, at
  // least 1, at `offset`. Returns and begins anew as ReadOnce does.
  std::optional<std::size_t> WriteOnce(SystemCall kind, std::uint64_t offset, const void* data,
                                       std::size_t length);

  // Writes all bytes by calls of WriteOnce. False when not all bytes could be written.
  bool WriteAll(SystemCall kind, std::uint64_t offset, const void* data, std::size_t length);

  std::intptr_t handle_ = kNoHandle;
  std::filesystem::path name_;  // as the system takes it
  std::uint64_t position_ = 0;
  const std::atomic<std::uint32_t>* stopRequest_ = nullptr;
  mutable ReadTrouble trouble_ = ReadTrouble::kNone;
  // What the system needs for Prefetch, from the first call on; null on POSIX.
  mutable std::unique_ptr<void, void (*)(void*)> prefetching_{nullptr, nullptr};
};

// Size and times of the regular file at `path`, or of the regular file to which a link at `path`
// leads. Nothing when there is no such file or the file cannot be reached.
std::optional<FileInfo> QueryFileInfo(const std::u16string& path);

// The room in bytes that the file system of the folder of `path` has for this program. Nothing when
// the system cannot tell.
std::optional<std::uint64_t> FreeBytesBeside(const std::u16string& path);

// True when anything has the name `path`: a file, a folder, or a link, even one that leads nowhere.
bool IsNameTaken(const std::u16string& path);

// True when a symbolic link has the name `path`, wherever it leads.
bool IsLink(const std::u16string& path);

// True when `a` and `b` name the same file. A link at `a` counts as itself and is not followed; a
// link at `b` counts as itself and as the file to which it leads.
bool IsSameFile(const std::u16string& a, const std::u16string& b);

// Removes the file at `path`. False when the system refuses, or when memory is out. Throws nothing.
bool RemoveFile(const std::u16string& path) noexcept;

// Waits until the folder that contains the file at `path` is on the medium, and with it the file's
// name. False when the system reports an error. A folder that may not be read, and storage that
// cannot flush a folder, count as flushed.
bool FlushFolderOf(const std::u16string& path);

// False when `path`, or its last component, is too long for the file system of its folder, so that
// no file can have that name.
bool CanBeNamed(const std::u16string& path);

// Gives the file at `from` the name `to` on the same file system. False, with nothing changed, when
// `to` exists already or the system refuses. On a file system that cannot rename without replacing,
// a failure can also leave the file with both names.
bool RenameWithoutReplacing(const std::u16string& from, const std::u16string& to);

// Gives the file at `from` the name `to` on the same file system, and replaces a file or link of
// that name in one step: the name `to` is never missing in between. False, with nothing changed,
// when a folder, a device or a pipe has the name `to`, when a link of that name leads to a device
// or a pipe, or when the system refuses.
bool RenameReplacing(const std::u16string& from, const std::u16string& to);

// The system's error number for a name that exists already.
std::uint32_t NameTakenError();

// True when the error number `systemError` of the system means that rights are missing or that the
// medium is write protected.
bool MeansNoRights(std::uint32_t systemError);

// The system's error number of the last call of this header that failed on this thread. Valid only
// directly after a failure.
std::uint32_t LastSystemError();

}  // namespace quorvan::platform
