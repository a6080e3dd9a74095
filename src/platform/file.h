// Files with 64-bit offsets, as the readers and engines need them.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace quorvan::platform {

// How a file is opened, and who else may have it open meanwhile. On POSIX the sharing is an
// advisory lock that every program of this project takes; a file that another one holds in a
// conflicting way cannot be opened.
enum class OpenMode {
  kReadAlone,   // existing file, read only, shared with nobody
  kReadShared,  // existing file, read only, shared with other readers
  kRewrite,     // existing file, read and write, shared with nobody
  kCreateNew,   // new file, read and write, shared with nobody; fails where the name exists
};

enum class WriteResult {
  kDone,
  kFailed,       // not all of it was written
  kSourceFault,  // what was to be written is a view whose storage has failed
};

// What has kept a read from giving all that was asked for, beside the end of the file.
enum class ReadTrouble {
  kNone,
  kFailed,   // the system has reported an error: of the size of a file, too
  kStopped,  // the request of StopOn has come
};

// Largest offset that a file can have.
inline constexpr std::uint64_t kMostFileOffset = std::numeric_limits<std::int64_t>::max();

// A point in time in units of 100 ns since 1601-01-01 00:00 UTC.
using FileTime = std::uint64_t;

struct FileTimes {
  FileTime creation;  // of last status change or birth, whichever the system keeps
  FileTime lastAccess;
  FileTime lastWrite;
};

// What a directory tells of a file without opening it.
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

  // Opens the regular file at `path`. Returns a File that is not open when there is no such file,
  // when rights are missing, or when another holder excludes this mode.
  static File Open(const std::u16string& path, OpenMode mode);

  bool IsOpen() const { return handle_ != kNoHandle; }

  // Closes the file. False when the system reports only now that what was written is lost; true for
  // a file that is not open.
  bool Close();

  // What reads have met since the file was opened, in the first place an error: a reader that took
  // a read which failed for the end of the file finds out here. It stays.
  ReadTrouble Trouble() const { return trouble_; }

  // From now on reads give nothing once `*request` is 1, so that whoever reads comes to an end. The
  // request must outlive the file; null takes it back.
  void StopOn(const std::atomic<std::uint32_t>* request) { stopRequest_ = request; }

  // True once the request of StopOn has come: for loops that work without reading.
  bool StopAsked() const { return stopRequest_ != nullptr && *stopRequest_ == 1; }

  // Size in bytes, or nothing when the system cannot tell, which counts as a read that failed.
  std::optional<std::uint64_t> Size() const;

  // Moves the file pointer to an absolute offset. Offsets above kMostFileOffset are refused:
  // returns false and leaves the pointer where it was.
  bool Seek(std::uint64_t offset);

  // The file pointer.
  std::uint64_t Position() const { return position_; }

  // Reads up to `length` bytes at the file pointer, moves the pointer behind what came, and returns
  // the number of bytes read: fewer than asked at the end of the file, or for the reason that
  // Trouble gives.
  std::size_t Read(void* buffer, std::size_t length);

  // Writes `length` bytes at the file pointer and moves the pointer behind them. Returns false
  // unless all of them were written.
  bool Write(const void* data, std::size_t length);

  // The same at an absolute offset, without reading or moving the file pointer.
  std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t length) const;
  bool WriteAt(std::uint64_t offset, const void* data, std::size_t length);

  // The same as ReadAt, when all of it is in memory already; false, at once, when some of it would
  // have to come from the medium, or when the system cannot tell.
  bool ReadCachedAt(std::uint64_t offset, void* buffer, std::size_t length) const;

  // Tells the system that reads and writes go to places here and there: nothing around them is
  // worth fetching.
  void ExpectScattered() const;

  // Asks for bytes that are going to be read or partly overwritten, and does not wait for them.
  void Prefetch(std::uint64_t offset, std::uint64_t length) const;

  // Writes the pieces one behind the other, from `offset` on, in as few calls as the system allows.
  WriteResult WriteGathered(std::uint64_t offset,
                            std::span<const std::span<const std::uint8_t>> pieces);

  // Waits until all that was written, with size and times, is on the medium. False when the system
  // reports that some of it is lost; a second call could be told otherwise and means nothing then.
  // Storage that knows no such request counts as flushed.
  bool Flush();

  // Cuts or extends the file to `size` bytes.
  bool Resize(std::uint64_t size);

  // True when the path by which the file was opened, or a link there, still leads to it.
  bool IsStillAtItsPath() const noexcept;

  // True when the file has more than one name, or the system cannot tell.
  bool HasOtherNames() const;

  std::optional<FileTimes> Times() const;

  // Sets last access and last write. The creation time stays what it is.
  bool SetTimes(const FileTimes& times);

  // The system's own handle, for the other services of this folder only.
  std::intptr_t NativeHandle() const { return handle_; }

 private:
  static constexpr std::intptr_t kNoHandle = -1;

  File(std::intptr_t handle, std::filesystem::path name)
      : handle_(handle), name_(std::move(name)) {}

  std::intptr_t handle_ = kNoHandle;
  std::filesystem::path name_;  // as the system takes it
  std::uint64_t position_ = 0;
  const std::atomic<std::uint32_t>* stopRequest_ = nullptr;
  mutable ReadTrouble trouble_ = ReadTrouble::kNone;
};

// Size and times of the file at `path`; nothing when there is no such file.
std::optional<FileInfo> QueryFileInfo(const std::u16string& path);

// True when anything stands under that name: a file, a folder, a link that leads nowhere.
bool IsNameTaken(const std::u16string& path);

// True when a link stands under that name, wherever it leads.
bool IsLink(const std::u16string& path);

// True when what stands under the name `a`, be it a link, is what stands under `b` or what a link
// there leads to.
bool IsSameFile(const std::u16string& a, const std::u16string& b);

// Removes the file at `path`. True when it is gone. Never throws.
bool RemoveFile(const std::u16string& path) noexcept;

// Waits until the folder in which the file at `path` stands is on the medium, and with it the
// file's name. False when the system reports an error; a folder that cannot be flushed counts as
// flushed.
bool FlushFolderOf(const std::u16string& path);

// False when no file can have the last component of `path` as its name, since it is too long for
// the folder's file system.
bool CanBeNamed(const std::u16string& path);

// Gives the file at `from` the name `to` in the same folder tree. Fails, and changes nothing, when
// `to` exists already.
bool RenameWithoutReplacing(const std::u16string& from, const std::u16string& to);

// The same, but a file that has the name `to` gives way, in one step: there is no moment without a
// file of that name. A folder, a device or a pipe does not.
bool RenameReplacing(const std::u16string& from, const std::u16string& to);

// The system's own number for a name that something else has.
std::uint32_t NameTakenError();

// True when the system's number says that there are no rights for what was wanted, or that the
// medium is protected.
bool MeansNoRights(std::uint32_t systemError);

// The system's own number for why the last call of this header failed on this thread.
std::uint32_t LastSystemError();

}  // namespace quorvan::platform
