#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "mxf/analysis.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/readers.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kTrailerBytes = 4;      // length of the pack, at the end of the file
constexpr std::uint32_t kIndexPackHeader = 20;  // key and length of the Random Index Pack
constexpr std::uint32_t kRawEntryBytes = 12;    // BodySID, ByteOffset
constexpr std::uint32_t kMostPartitions = 1u << 20;
constexpr std::size_t kPackBytes = 100;

// Byte offsets of the fields in a partition pack whose length field has four bytes.
namespace pack {
constexpr std::size_t kVersionByte = 7;  // registry version in the key; may have any value
constexpr std::size_t kKind = 13;
constexpr std::size_t kStatus = 14;
constexpr std::size_t kLength = 16;
constexpr std::size_t kMajorVersion = 20;
constexpr std::size_t kMinorVersion = 22;
constexpr std::size_t kKagSize = 24;
constexpr std::size_t kThisPartition = 28;
constexpr std::size_t kHeaderByteCount = 52;
constexpr std::size_t kIndexByteCount = 60;
constexpr std::size_t kIndexSid = 68;
constexpr std::size_t kBodyOffset = 72;
constexpr std::size_t kBodySid = 80;
constexpr std::size_t kOperationalPattern = 84;
}  // namespace pack

constexpr std::array<std::uint8_t, 13> kPackKeyStart = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01,
                                                        0x01, 0x0D, 0x01, 0x02, 0x01, 0x01};
constexpr std::uint8_t kFirstKindByte = 2;
constexpr std::uint8_t kLastKindByte = 4;
constexpr std::uint8_t kOpenIncomplete = 1;
constexpr std::uint8_t kOpenComplete = 3;

using PackBytes = std::array<std::uint8_t, kPackBytes>;

bool IsPartitionPack(const PackBytes& bytes) {
  for (std::size_t i = 0; i < kPackKeyStart.size(); ++i) {
    if (i != pack::kVersionByte && bytes[i] != kPackKeyStart[i]) return false;
  }
  return bytes[pack::kKind] >= kFirstKindByte && bytes[pack::kKind] <= kLastKindByte &&
         bytes[pack::kLength] == kFourByteLength;
}

void FillEntry(const PackBytes& bytes, MXF_PARTITION_INFO* entry) {
  const std::uint8_t* p = bytes.data();
  entry->kind = p[pack::kKind] - kFirstKindByte;
  entry->packLength = ReadBe24(p + pack::kLength + 1);
  entry->majorVersion = ReadBe16(p + pack::kMajorVersion);
  entry->minorVersion = ReadBe16(p + pack::kMinorVersion);
  entry->kagSize = ReadBe32(p + pack::kKagSize);
  entry->thisPartition = ReadBe64(p + pack::kThisPartition);
  entry->headerByteCount = ReadBe64(p + pack::kHeaderByteCount);
  entry->indexByteCount = ReadBe64(p + pack::kIndexByteCount);
  entry->indexSid = ReadBe32(p + pack::kIndexSid);
  entry->bodyOffset = ReadBe64(p + pack::kBodyOffset);
  entry->bodySid = ReadBe32(p + pack::kBodySid);
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
  std::copy_n(bytes.data() + pack::kOperationalPattern, 16, entry->operationalPattern.begin());
  const std::uint8_t status = bytes[pack::kStatus];
  if (status == kOpenIncomplete || status == kOpenComplete) return kPartitionOpen;
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

// Finds the Random Index Pack and leaves the file pointer on its first entry. Returns the length of
// the whole pack in bytes, as the last four bytes of the file state it; 0 when no pack starts
// between the place to which they lead and themselves.
std::uint32_t FindRandomIndexPack(platform::File* file, std::uint64_t fileSize) {
  std::array<std::uint8_t, kTrailerBytes> trailer;
  if (fileSize < kTrailerBytes ||
      file->ReadAt(fileSize - kTrailerBytes, trailer.data(), kTrailerBytes) != kTrailerBytes) {
    return 0;
  }
  const std::uint32_t overall = ReadBe32(trailer.data());
  if (overall < kIndexPackHeader || overall > fileSize) return 0;
  if (FindKlvKey(file, keys::kRandomIndexPack, fileSize - overall, fileSize - kTrailerBytes,
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
  const std::uint32_t count = (overall - kIndexPackHeader) / kRawEntryBytes;
  if (count > kMostPartitions) return kPartitionTableNoMemory;
  const std::size_t rawBytes = std::size_t{count} * kRawEntryBytes;

  const std::unique_ptr<std::uint8_t[]> raw(new (std::nothrow) std::uint8_t[rawBytes + 1]);
  if (raw == nullptr) return kRandomIndexNoMemory;
  if (file->Read(raw.get(), rawBytes) != rawBytes) return kRandomIndexNotFound;

  table.reset(new (std::nothrow) MXF_PARTITION_INFO[std::size_t{count} + 1]());
  if (table == nullptr) return kPartitionTableNoMemory;

  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t offset = ReadBe64(raw.get() + std::size_t{i} * kRawEntryBytes + 4);
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
