#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "mxf/analysis.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/partition_pack.h"
#include "mxf/metadata/readers.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kMostPartitions = 1u << 20;
constexpr std::size_t kPackBytes = kElementHeaderBytes + 80;  // operational pattern included

constexpr std::array<std::uint8_t, 13> kPackKeyStart = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01,
                                                        0x01, 0x0D, 0x01, 0x02, 0x01, 0x01};

using PackBytes = std::array<std::uint8_t, kPackBytes>;

bool IsPartitionPack(const PackBytes& bytes) {
  for (std::size_t i = 0; i < kPackKeyStart.size(); ++i) {
    if (i != kPackVersionByte && bytes[i] != kPackKeyStart[i]) return false;
  }
  return bytes[kPackKindByte] >= kHeaderPackKind && bytes[kPackKindByte] <= kFooterPackKind &&
         bytes[kKlvKeyBytes] == kFourByteLength;
}

void FillEntry(const PackBytes& bytes, MXF_PARTITION_INFO* entry) {
  entry->kind = bytes[kPackKindByte] - kHeaderPackKind;
  entry->packLength = ReadBe24(bytes.data() + kKlvKeyBytes + 1);
  const std::uint8_t* p = bytes.data() + kElementHeaderBytes;  // the value
  entry->majorVersion = ReadBe16(p + pack_field::kMajorVersion);
  entry->minorVersion = ReadBe16(p + pack_field::kMinorVersion);
  entry->kagSize = ReadBe32(p + pack_field::kKagSize);
  entry->thisPartition = ReadBe64(p + pack_field::kThisPartition);
  entry->headerByteCount = ReadBe64(p + pack_field::kHeaderByteCount);
  entry->indexByteCount = ReadBe64(p + pack_field::kIndexByteCount);
  entry->indexSid = ReadBe32(p + pack_field::kIndexSid);
  entry->bodyOffset = ReadBe64(p + pack_field::kBodyOffset);
  entry->bodySid = ReadBe32(p + pack_field::kBodySid);
  entry->essenceBase = entry->kagSize + entry->headerByteCount + entry->indexByteCount +
                       entry->thisPartition - entry->bodyOffset;
}

bool LiesInFile(const MXF_PARTITION_INFO& entry, std::uint64_t fileSize) {
  return entry.thisPartition < fileSize && entry.headerByteCount <= fileSize &&
         entry.indexByteCount <= fileSize;
}

// Reads the partition pack at the file offset `offset` into `*entry`. Returns 0; 204 when no
// partition pack is there or its offsets and sizes do not fit the file; or 207 when the partition
// is open.
std::int32_t ReadPartition(const platform::File& file, std::uint64_t offset, std::uint64_t fileSize,
                           std::uint32_t partitionCount, MXF_PARTITION_INFO* entry) {
  PackBytes bytes;
  if (file.ReadAt(offset, bytes.data(), bytes.size()) != bytes.size() || !IsPartitionPack(bytes)) {
    return kRandomIndexNotFound;
  }
  std::copy_n(bytes.data(), 16, entry->packKey.begin());
  std::copy_n(bytes.data() + kElementHeaderBytes + pack_field::kOperationalPattern, 16,
              entry->operationalPattern.begin());
  if (IsOpenPartition(bytes[kPackStatusByte])) return kPartitionOpen;
  entry->partitionCount = partitionCount;
  FillEntry(bytes, entry);
  return LiesInFile(*entry, fileSize) ? kSuccess : kRandomIndexNotFound;
}

bool HasAcceptedVersion(const MXF_PARTITION_INFO& entry) {
  return entry.majorVersion == 1 || entry.minorVersion <= 3;
}

bool HasFooter(const MXF_PARTITION_INFO* table, std::uint32_t count) {
  return std::any_of(table, table + count, [](const MXF_PARTITION_INFO& entry) {
    return entry.kind == kFooterPartition;
  });
}

// Finds the Random Index Pack and leaves the file pointer on its first entry. The last four bytes
// of the file state the length of the pack. Returns this length in bytes; 0 when no pack starts
// between the place to which the length leads and the last four bytes.
std::uint32_t FindRandomIndexPack(platform::File* file, std::uint64_t fileSize) {
  std::array<std::uint8_t, kOverallLengthBytes> trailer;
  if (fileSize < kOverallLengthBytes || file->ReadAt(fileSize - kOverallLengthBytes, trailer.data(),
                                                     kOverallLengthBytes) != kOverallLengthBytes) {
    return 0;
  }
  const std::uint32_t overall = ReadBe32(trailer.data());
  if (overall < kElementHeaderBytes || overall > fileSize) return 0;
  if (FindKlvKey(file, keys::kRandomIndexPack, fileSize - overall, fileSize - kOverallLengthBytes,
                 nullptr) == 0) {
    return 0;
  }
  return overall;
}

}  // namespace

std::int32_t ReadRandomIndexAndPartitions(platform::File* file, std::uint64_t fileSize,
                                          MXF_BASE_INFO* mxf) {
  if (!IsUsable(file)) return kRandomIndexNoFile;
  if (mxf == nullptr) return kRandomIndexNoBaseInfo;
  if (mxf->partitionTable == nullptr) return kRandomIndexNoCell;
  PartitionTableCell& table = *mxf->partitionTable;
  table.reset();

  const std::uint32_t overall = FindRandomIndexPack(file, fileSize);
  if (overall == 0) return kRandomIndexNotFound;
  const auto count =
      static_cast<std::uint32_t>((overall - kElementHeaderBytes) / kRandomIndexEntryBytes);
  if (count > kMostPartitions) return kPartitionTableNoMemory;
  const std::size_t rawBytes = std::size_t{count} * kRandomIndexEntryBytes;

  const std::unique_ptr<std::uint8_t[]> raw(new (std::nothrow) std::uint8_t[rawBytes + 1]);
  if (raw == nullptr) return kRandomIndexNoMemory;
  if (file->Read(raw.get(), rawBytes) != rawBytes) return kRandomIndexNotFound;

  table.reset(new (std::nothrow) MXF_PARTITION_INFO[std::size_t{count} + 1]());
  if (table == nullptr) return kPartitionTableNoMemory;

  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t offset = ReadBe64(raw.get() + std::size_t{i} * kRandomIndexEntryBytes + 4);
    const std::int32_t result = ReadPartition(*file, offset, fileSize, count, &table[i]);
    if (result == kRandomIndexNotFound) table.reset();
    if (result != kSuccess) return result;
  }
  if (!HasFooter(table.get(), count)) {
    table.reset();
    return kNoFooterPartition;
  }
  if (!HasAcceptedVersion(table[count - 1])) {
    table.reset();
    return kPartitionVersion;
  }
  return kSuccess;
}

}  // namespace quorvan
