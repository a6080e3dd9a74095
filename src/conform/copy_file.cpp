#include "conform/copy_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <utility>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/uuid.h"

namespace quorvan {
namespace {

constexpr std::size_t kCopyBlockBytes = 4 << 20;

std::u16string NameBeside(const std::u16string& out) {
  const std::u16string absolute = platform::AbsolutePath(out);
  std::string name = "conform-";
  if (const auto uuid = platform::NewUuid()) {
    for (const std::uint8_t byte : *uuid)
      name += fmt::format("{:02x}", byte);
  }
  name += ".part";
  const std::size_t folder = absolute.size() - platform::LastComponent(absolute).size();
  return absolute.substr(0, folder) + platform::ToUtf16(name);
}

// The checksum of a row of bytes that come in pieces.
class Checksum {
 public:
  Checksum() { XXH3_128bits_reset(&state_); }

  void Add(const std::uint8_t* data, std::size_t length) {
    XXH3_128bits_update(&state_, data, length);
  }

  bool operator==(const Checksum& other) const {
    return XXH128_isEqual(XXH3_128bits_digest(&state_), XXH3_128bits_digest(&other.state_)) != 0;
  }

 private:
  XXH3_state_t state_;
};

class CopyWriter {
 public:
  CopyWriter(const CopyPlan& plan, const platform::File& in, platform::File* out,
             JobProgress* progress)
      : plan_(plan), in_(in), out_(*out), progress_(*progress), block_(kCopyBlockBytes) {}

  CopyEnd Write() {
    std::uint64_t essence = 0;
    for (const CopyPartition& partition : plan_.partitions)
      essence += partition.essenceBytes;
    progress_.total = plan_.fileSize + essence;
    for (std::size_t i = 0; i < plan_.partitions.size(); ++i) {
      const CopyPartition& partition = plan_.partitions[i];
      if (!Put(WritePack(plan_, i)) ||
          !Put(WriteKlvs(partition.metadata, partition.headerByteCount)) ||
          !Put(WriteKlvs(partition.indexSegments, partition.indexByteCount)) ||
          !WriteEssence(partition)) {
        return end_;
      }
    }
    if (!Put(WriteRandomIndex(plan_))) return end_;
    if (!out_.Flush()) return CopyEnd::kUnwritable;
    for (const CopyPartition& partition : plan_.partitions) {
      if (!ReadBack(partition)) return end_;
    }
    return written_ == readBack_ ? CopyEnd::kDone : CopyEnd::kUnwritable;
  }

 private:
  bool EndWith(CopyEnd end) {
    end_ = end;
    return false;
  }

  bool CountBytes(std::size_t bytes) {
    progress_.done += bytes;
    return progress_.cancel == 0 || EndWith(CopyEnd::kStopped);
  }

  bool Put(const std::uint8_t* data, std::size_t length) {
    if (length == 0) return true;
    return out_.Write(data, length) ? CountBytes(length) : EndWith(CopyEnd::kUnwritable);
  }

  bool Put(const std::vector<std::uint8_t>& bytes) { return Put(bytes.data(), bytes.size()); }

  bool PutEssence(const std::uint8_t* data, std::size_t length) {
    written_.Add(data, length);
    return Put(data, length);
  }

  bool Get(std::uint64_t offset, std::uint8_t* into, std::size_t length) {
    if (in_.ReadAt(offset, into, length) == length) return true;
    return EndWith(progress_.cancel == 0 ? CopyEnd::kUnreadable : CopyEnd::kStopped);
  }

  bool WriteEssence(const CopyPartition& partition) {
    if (plan_.laidFrames != nullptr && partition.frames != 0) return LayFrames(partition);
    std::uint64_t offset = partition.sourceOffset;
    for (std::uint64_t left = partition.sourceBytes; left != 0;) {
      const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(left, block_.size()));
      if (!Get(offset, block_.data(), part) || !PutEssence(block_.data(), part)) return false;
      offset += part;
      left -= part;
    }
    return true;
  }

  bool LayFrames(const CopyPartition& partition) {
    const FrameMap& map = *plan_.laidFrames;
    std::vector<std::uint8_t> source;
    std::vector<std::uint8_t> laid;
    for (std::uint32_t i = 0; i < partition.frames; ++i) {
      const SourceFrame& frame = map.frames[partition.firstFrame + i];
      source.resize(frame.bytes);
      laid.clear();
      if (!Get(frame.offset, source.data(), source.size())) return false;
      // The clip must not change while it is copied.
      if (!LayFrame(map, source, &laid) || laid.size() != LaidBytes(map, frame)) {
        return EndWith(CopyEnd::kUnreadable);
      }
      if (!PutEssence(laid.data(), laid.size())) return false;
    }
    return true;
  }

  bool ReadBack(const CopyPartition& partition) {
    std::uint64_t offset = plan_.EssenceOffset(partition);
    for (std::uint64_t left = partition.essenceBytes; left != 0;) {
      const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(left, block_.size()));
      if (out_.ReadAt(offset, block_.data(), part) != part) {
        return EndWith(progress_.cancel == 0 ? CopyEnd::kUnwritable : CopyEnd::kStopped);
      }
      readBack_.Add(block_.data(), part);
      if (!CountBytes(part)) return false;
      offset += part;
      left -= part;
    }
    return true;
  }

  const CopyPlan& plan_;
  const platform::File& in_;
  platform::File& out_;
  JobProgress& progress_;
  std::vector<std::uint8_t> block_;
  Checksum written_;   // of the essence
  Checksum readBack_;  // of the essence
  CopyEnd end_ = CopyEnd::kDone;
};

}  // namespace

UnfinishedCopy::UnfinishedCopy(const std::u16string& out) : path_(NameBeside(out)) {
  file_ = platform::File::Open(path_, platform::OpenMode::kCreateNew);
  exists_ = file_.IsOpen();
}

UnfinishedCopy::~UnfinishedCopy() {
  file_.Close();
  if (exists_) platform::RemoveFile(path_);
}

bool UnfinishedCopy::TakeName(const std::u16string& out) {
  if (!file_.Close() || !platform::RenameWithoutReplacing(path_, out)) return false;
  path_ = out;
  exists_ = !platform::FlushFolderOf(out);
  return !exists_;
}

CopyEnd WriteSkeleton(const CopyPlan& plan, platform::File* out) {
  // Zeros at the end of a part, the value of its fill, need no memory: they read as a hole.
  const auto put = [out](std::uint64_t offset, const std::vector<std::uint8_t>& bytes) {
    const auto last = std::find_if(bytes.rbegin(), bytes.rend(), [](auto b) { return b != 0; });
    const auto held = static_cast<std::size_t>(bytes.rend() - last);
    return held == 0 || out->WriteAt(offset, bytes.data(), held);
  };
  for (std::size_t i = 0; i < plan.partitions.size(); ++i) {
    const CopyPartition& partition = plan.partitions[i];
    const std::uint64_t header = partition.offset + plan.kagSize;
    if (out->StopAsked()) return CopyEnd::kStopped;
    if (!put(partition.offset, WritePack(plan, i)) ||
        !put(header, WriteKlvs(partition.metadata, partition.headerByteCount)) ||
        !put(header + partition.headerByteCount,
             WriteKlvs(partition.indexSegments, partition.indexByteCount))) {
      return CopyEnd::kUnwritable;
    }
  }
  const std::vector<std::uint8_t> randomIndex = WriteRandomIndex(plan);
  return out->WriteAt(plan.randomIndexOffset, randomIndex.data(), randomIndex.size())
             ? CopyEnd::kDone
             : CopyEnd::kUnwritable;
}

CopyEnd WriteCopy(const CopyPlan& plan, const platform::File& in, platform::File* out,
                  JobProgress* progress) {
  return CopyWriter(plan, in, out, progress).Write();
}

}  // namespace quorvan
