#include "conform/copy_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "conform/checksum.h"
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

// The bytes of one frame after the other.
struct FrameBuffers {
  std::vector<std::uint8_t> source;  // as they stand in the clip
  std::vector<std::uint8_t> laid;    // as they stand in the copy
};

// Reads the frame `frame` of the clip `in` and lays it anew. False when the clip cannot be read, or
// has changed since its frames were found. Throws std::bad_alloc.
bool ReadAndLay(const platform::File& in, const FrameMap& map, const SourceFrame& frame,
                FrameBuffers* buffers) {
  std::vector<std::uint8_t>& source = buffers->source;
  std::vector<std::uint8_t>& laid = buffers->laid;
  source.resize(frame.bytes);
  laid.clear();
  return in.ReadAt(frame.offset, source.data(), source.size()) == source.size() &&
         LayFrame(map, source, &laid) && laid.size() == LaidBytes(map, frame);
}

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
    return written_.Digest() == readBack_.Digest() ? CopyEnd::kDone : CopyEnd::kUnwritable;
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
    written_.Add({data, length});
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
    FrameBuffers buffers;
    for (std::uint32_t i = 0; i < partition.frames; ++i) {
      if (!ReadAndLay(in_, map, map.frames[partition.firstFrame + i], &buffers)) {
        return EndWith(progress_.cancel == 0 ? CopyEnd::kUnreadable : CopyEnd::kStopped);
      }
      if (!PutEssence(buffers.laid.data(), buffers.laid.size())) return false;
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
      readBack_.Add({block_.data(), part});
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

CopyEnd WriteSkeleton(const CopyPlan& plan, const platform::File& in, platform::File* out) {
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
  if (!out->WriteAt(plan.randomIndexOffset, randomIndex.data(), randomIndex.size())) {
    return CopyEnd::kUnwritable;
  }
  const auto first = std::find_if(plan.partitions.begin(), plan.partitions.end(),
                                  [](const CopyPartition& p) { return p.frames != 0; });
  if (plan.laidFrames == nullptr || first == plan.partitions.end()) return CopyEnd::kDone;
  FrameBuffers buffers;
  const FrameMap& map = *plan.laidFrames;
  if (!ReadAndLay(in, map, map.frames[first->firstFrame], &buffers)) {
    return in.StopAsked() ? CopyEnd::kStopped : CopyEnd::kUnreadable;
  }
  return put(plan.EssenceOffset(*first), buffers.laid) ? CopyEnd::kDone : CopyEnd::kUnwritable;
}

CopyEnd WriteCopy(const CopyPlan& plan, const platform::File& in, platform::File* out,
                  JobProgress* progress) {
  return CopyWriter(plan, in, out, progress).Write();
}

}  // namespace quorvan
