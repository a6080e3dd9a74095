#include "conform/conform.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "conform/layout.h"
#include "conform/partition_map.h"
#include "mxf/analysis.h"
#include "mxf/records.h"
#include "platform/file.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/uuid.h"

namespace quorvan {
namespace {

constexpr std::size_t kCopyBlockBytes = 4 << 20;

ConformResult Refused(ConformFault fault, std::string reason) {
  ConformResult result;
  result.fault = fault;
  result.reason = std::move(reason);
  return result;
}

ConformResult Cancelled() {
  return Refused(ConformFault::kCancelled, "cancelled");
}

bool CancelWanted(const JobProgress& progress) {
  return progress.cancel.load(std::memory_order_relaxed) != 0;
}

// The file of the copy, under a temporary name until TakeName renames it. The destructor removes
// the file unless TakeName has succeeded.
class UnfinishedCopy {
 public:
  UnfinishedCopy(const UnfinishedCopy&) = delete;
  UnfinishedCopy& operator=(const UnfinishedCopy&) = delete;

  explicit UnfinishedCopy(const std::u16string& out) : path_(NameBeside(out)) {
    file_ = platform::File::Open(path_, platform::OpenMode::kCreateNew);
    exists_ = file_.IsOpen();
  }

  ~UnfinishedCopy() {
    file_.Close();
    if (exists_) platform::RemoveFile(path_);
  }

  platform::File& file() { return file_; }

  // Closes the copy, renames it to `out` and brings the folder with the name onto the medium. False
  // when one of these steps fails; the destructor then removes the file.
  bool TakeName(const std::u16string& out) {
    if (!file_.Close() || !platform::RenameWithoutReplacing(path_, out)) return false;
    path_ = out;
    exists_ = !platform::FlushFolderOf(out);
    return !exists_;
  }

 private:
  static std::u16string NameBeside(const std::u16string& out) {
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

  std::u16string path_;
  platform::File file_;
  bool exists_ = false;
};

// Writes the parts of the copy and counts the bytes in `progress`. A function that returns false
// has put the cause into `reason`.
struct CopyWriter {
  const platform::File& in;
  platform::File& out;
  JobProgress* progress;
  std::unique_ptr<std::uint8_t[]> block;
  std::string reason;
  std::uint64_t written = 0;

  bool Fail(const char* text) {
    reason = text;
    return false;
  }

  bool Write(const std::uint8_t* data, std::size_t length) {
    if (length == 0) return true;
    if (CancelWanted(*progress)) return Fail("cancelled");
    if (!out.Write(data, length)) return Fail("the copy cannot be written: no room, or a fault");
    written += length;
    progress->done.store(written, std::memory_order_relaxed);
    return true;
  }

  bool Write(const std::vector<std::uint8_t>& bytes) { return Write(bytes.data(), bytes.size()); }

  bool GoTo(std::uint64_t offset) {
    return out.Seek(offset) || Fail("the copy cannot be written: too long");
  }

  bool CopyStretch(std::uint64_t offset, std::uint64_t length) {
    while (length != 0) {
      const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(length, kCopyBlockBytes));
      if (in.ReadAt(offset, block.get(), part) != part) return Fail("the clip cannot be read");
      if (!Write(block.get(), part)) return false;
      offset += part;
      length -= part;
    }
    return true;
  }

  bool WriteFill(std::uint64_t bytes) {
    std::vector<std::uint8_t> fill;
    AppendFill(bytes, &fill);
    return Write(fill);
  }

  // Copies the KLVs with new headers, and writes a fill behind them up to `bytes` bytes in all.
  bool WriteKlvs(const std::vector<KlvSpan>& klvs, std::uint64_t bytes) {
    for (const KlvSpan& klv : klvs) {
      std::vector<std::uint8_t> header;
      AppendKlvHeader(klv.key, klv.length, &header);
      if (!Write(header) || !CopyStretch(klv.valueOffset, klv.length)) return false;
    }
    return WriteFill(bytes - WrittenBytes(klvs));
  }
};

std::uint64_t EssenceOffset(const ConformLayout& layout, const TargetPartition& partition) {
  return partition.offset + layout.kagSize + partition.headerByteCount + partition.indexByteCount;
}

// Writes all parts of the copy but the essence, each part at its place.
bool WriteSkeleton(const std::vector<SourcePartition>& map, const ConformLayout& layout,
                   CopyWriter* writer) {
  for (std::size_t i = 0; i < map.size(); ++i) {
    const TargetPartition& target = layout.partitions[i];
    if (!writer->GoTo(target.offset) || !writer->Write(WritePack(map, layout, i)) ||
        !writer->WriteKlvs(map[i].metadata, target.headerByteCount) ||
        !writer->WriteKlvs(map[i].indexSegments, target.indexByteCount)) {
      return false;
    }
  }
  return writer->GoTo(layout.randomIndexOffset) && writer->Write(WriteRandomIndex(map, layout));
}

bool WriteEssence(const std::vector<SourcePartition>& map, const ConformLayout& layout,
                  CopyWriter* writer) {
  for (std::size_t i = 0; i < map.size(); ++i) {
    const TargetPartition& target = layout.partitions[i];
    if (!writer->GoTo(EssenceOffset(layout, target)) ||
        !writer->CopyStretch(map[i].essenceStart, target.essenceBytes)) {
      return false;
    }
  }
  return true;
}

// True when a KLV key starts at file offset `offset` and the offset lies in the essence of a
// partition. The analysis assumes that the essence of a partition is one stretch behind its index
// table, and does not read at the places to which the index leads. Without this check, an index
// that counts from another place would give frames with wrong bytes.
bool FrameStandsAt(const platform::File& file, const ConformLayout& layout, std::uint64_t offset) {
  const bool inEssence = std::any_of(
      layout.partitions.begin(), layout.partitions.end(), [&](const TargetPartition& partition) {
        const std::uint64_t start = EssenceOffset(layout, partition);
        return offset >= start && offset - start < partition.essenceBytes;
      });
  std::array<std::uint8_t, kUlPrefix.size()> prefix{};
  return inEssence && file.ReadAt(offset, prefix.data(), prefix.size()) == prefix.size() &&
         prefix == kUlPrefix;
}

// True when the index leads to the first and the last frame of every stretch of frames with the
// same index table segment and partition; the frames between these two lie one behind the other.
// False also when the index is empty or a stop was requested.
bool IndexLeadsToFrames(const platform::File& file, const ConformLayout& layout,
                        const MxfRecords& records) {
  const std::uint32_t count = records.timecode.frameCount;
  const INDEX_ENTRY_ARRAY* entries = records.indexEntries.get();
  const auto sameSegment = [entries](std::uint32_t a, std::uint32_t b) {
    return entries[a].segmentStart == entries[b].segmentStart &&
           entries[a].partition == entries[b].partition;
  };
  for (std::uint32_t i = 0; i < count; ++i) {
    const bool inner = i != 0 && i + 1 != count && sameSegment(i - 1, i) && sameSegment(i, i + 1);
    if (!inner && (file.StopAsked() || !FrameStandsAt(file, layout, entries[i].fileOffset))) {
      return false;
    }
  }
  return count != 0;
}

ConformResult AnalyzeCopy(platform::File* file, MxfRecords* records) {
  records->timecode.useFileIo = Method::kGenericFileIo;
  ConformResult result;
  const std::int32_t code = AnalyzeMxfFile(file, &records->base);
  if (code == kCancelled) return Cancelled();
  if (code <= 0) return result;
  result.fault = ConformFault::kUnfit;
  result.analysisCode = code;
  result.processCode = records->base.processCode;
  result.hasAudioDescriptor = records->audio.hasDescriptor == 1;
  result.reason = fmt::format("the clip is refused in its conformed form too, with {}", code);
  return result;
}

// Analyses the copy while its essence is still missing, so that a clip with unfit metadata is
// refused before the essence is copied.
ConformResult CheckSkeleton(platform::File* file) {
  MxfRecords records;
  return AnalyzeCopy(file, &records);
}

ConformResult CheckCopy(platform::File* file, const ConformLayout& layout) {
  MxfRecords records;
  ConformResult result = AnalyzeCopy(file, &records);
  if (!result.IsDone() || IndexLeadsToFrames(*file, layout, records)) return result;
  if (file->Trouble() == platform::ReadTrouble::kFailed) {
    return Refused(ConformFault::kUnwritable, "the copy cannot be read back");
  }
  return Refused(ConformFault::kUnfit, "the index table does not lead to the frames");
}

ConformResult WriteCopy(const platform::File& in, const std::vector<SourcePartition>& map,
                        const std::u16string& out, JobProgress* progress) {
  UnfinishedCopy copy(out);
  if (!copy.file().IsOpen())
    return Refused(ConformFault::kUnwritable, "no file can be created where the copy shall stand");
  const ConformLayout layout = LayOutClip(map);
  progress->total.store(layout.fileSize, std::memory_order_relaxed);
  CopyWriter writer{
      in,
      copy.file(),
      progress,
      std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[kCopyBlockBytes]),
      {}};
  if (!writer.block) return Refused(ConformFault::kNoMemory, "no memory for the copy");
  copy.file().StopOn(&progress->cancel);
  const auto writeFault = [&writer, progress] {
    return CancelWanted(*progress) ? Cancelled()
                                   : Refused(ConformFault::kUnwritable, writer.reason);
  };
  if (!WriteSkeleton(map, layout, &writer)) return writeFault();
  if (ConformResult result = CheckSkeleton(&copy.file()); !result.IsDone()) {
    return CancelWanted(*progress) ? Cancelled() : result;
  }
  if (!WriteEssence(map, layout, &writer)) return writeFault();
  if (!copy.file().Flush())
    return Refused(ConformFault::kUnwritable, "the copy cannot be brought onto the medium");
  ConformResult result = CheckCopy(&copy.file(), layout);
  if (CancelWanted(*progress)) return Cancelled();
  if (!result.IsDone()) return result;
  if (in.Trouble() != platform::ReadTrouble::kNone)
    return Refused(ConformFault::kUnreadable, "the clip cannot be read");
  if (!copy.TakeName(out)) {
    return Refused(ConformFault::kUnwritable,
                   "the copy cannot take its name, or the name not be brought onto the medium");
  }
  return result;
}

ConformResult Conform(const ConformRequest& request, JobProgress* progress) {
  const std::u16string& in = request.in;
  const std::u16string& out = request.out;
  if (platform::AbsolutePath(in) == platform::AbsolutePath(out)) {
    return Refused(ConformFault::kSameFile, "the copy would replace the clip itself");
  }
  if (platform::IsNameTaken(out)) {
    return Refused(ConformFault::kNameTaken,
                   fmt::format("{} exists already", platform::ToUtf8(out)));
  }
  platform::File file = platform::File::Open(in, platform::OpenMode::kReadShared);
  if (!file.IsOpen()) return Refused(ConformFault::kUnreadable, "the clip cannot be opened");
  file.StopOn(&progress->cancel);
  const std::optional<std::uint64_t> size = file.Size();
  if (!size) return Refused(ConformFault::kUnreadable, "the size of the clip is unknown");
  std::vector<SourcePartition> map;
  std::string reason;
  if (!ReadPartitionMap(file, *size, progress->cancel, &map, &reason)) {
    if (CancelWanted(*progress)) return Cancelled();
    const bool failed = file.Trouble() == platform::ReadTrouble::kFailed;
    return failed ? Refused(ConformFault::kUnreadable, "the clip cannot be read")
                  : Refused(ConformFault::kUnfit, reason);
  }
  return WriteCopy(file, map, out, progress);
}

}  // namespace

ConformResult ConformClip(const ConformRequest& request, JobProgress* progress) {
  try {
    return Conform(request, progress);
  } catch (const std::bad_alloc&) {
    return Refused(ConformFault::kNoMemory, "out of memory");
  }
}

std::string MendText(const MendNote& note) {
  return fmt::format("{}: {}", MendName(note.mend), note.count);
}

const char* MendName(Mend mend) {
  static constexpr std::array<const char*, 13> kNames = {
      "layout",         "byteCounts", "randomIndex", "bytesBehind", "footer",
      "openPartitions", "metadata",   "setOrder",    "durations",   "noIndex",
      "index",          "frames",     "cutOff"};
  return kNames[static_cast<std::size_t>(mend)];
}

bool MayConform(std::int32_t analysisCode) {
  switch (analysisCode) {
    case kRandomIndexNotFound:
    case kPartitionOpen:
    case kNoFooterPartition:
    case kPrefaceNotFound:
    case kContentStorageNotFound:
    case kEssenceDataNotFound:
    case kMaterialPackageNotFound:
    case kTimelineTrackMissing:
    case kSequenceMissing:
    case kTimecodeComponentMissing:
    case kDurationZero:
    case kNoSoundTrack:
    case kSourcePackageNotFound:
    case kMultipleDescriptorNotFound:
    case kPictureDescriptorNotFound:
    case kAudioDescriptorUnfit:
    case kNoIndexTable:
      return true;
    default:
      return false;
  }
}

}  // namespace quorvan
