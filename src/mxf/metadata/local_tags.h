// Local tags of the items that the readers use, grouped by the set that holds them (SMPTE ST
// 377-1).

#pragma once

#include <cstdint>

namespace quorvan::tags {

// Every set
inline constexpr std::uint16_t kInstanceUid = 0x3C0A;

// Preface
inline constexpr std::uint16_t kVersion = 0x3B05;
inline constexpr std::uint16_t kOperationalPattern = 0x3B09;
inline constexpr std::uint16_t kEssenceContainers = 0x3B0A;

// Identification
inline constexpr std::uint16_t kCompanyName = 0x3C01;
inline constexpr std::uint16_t kProductName = 0x3C02;
inline constexpr std::uint16_t kProductVersion = 0x3C04;
inline constexpr std::uint16_t kPlatform = 0x3C08;

// Content Storage
inline constexpr std::uint16_t kPackages = 0x1901;
inline constexpr std::uint16_t kEssenceContainerData = 0x1902;

// Essence Container Data. kIndexSid and kBodySid also stand in Index Table Segments.
inline constexpr std::uint16_t kLinkedPackageUid = 0x2701;
inline constexpr std::uint16_t kIndexSid = 0x3F06;
inline constexpr std::uint16_t kBodySid = 0x3F07;

// Material and Source Package
inline constexpr std::uint16_t kPackageUid = 0x4401;
inline constexpr std::uint16_t kTracks = 0x4403;
inline constexpr std::uint16_t kModifiedDate = 0x4404;
inline constexpr std::uint16_t kCreationDate = 0x4405;

// Timeline Track
inline constexpr std::uint16_t kEditRate = 0x4B01;

// Sequence and Timecode Component
inline constexpr std::uint16_t kDataDefinition = 0x0201;
inline constexpr std::uint16_t kDuration = 0x0202;
inline constexpr std::uint16_t kStartTimecode = 0x1501;
inline constexpr std::uint16_t kRoundedBase = 0x1502;
inline constexpr std::uint16_t kDropFrame = 0x1503;

// Descriptors
inline constexpr std::uint16_t kSampleRate = 0x3001;
inline constexpr std::uint16_t kContainerDuration = 0x3002;
inline constexpr std::uint16_t kEssenceContainer = 0x3004;
inline constexpr std::uint16_t kPictureCoding = 0x3201;
inline constexpr std::uint16_t kStoredHeight = 0x3208;
inline constexpr std::uint16_t kStoredWidth = 0x3209;
inline constexpr std::uint16_t kFrameLayout = 0x320C;
inline constexpr std::uint16_t kAspectRatio = 0x320E;
inline constexpr std::uint16_t kQuantizationBits = 0x3D01;
inline constexpr std::uint16_t kAudioSamplingRate = 0x3D03;
inline constexpr std::uint16_t kAvgBps = 0x3D09;
inline constexpr std::uint16_t kBlockAlign = 0x3D0A;
inline constexpr std::uint16_t kAvcBitRate = 0x800D;
inline constexpr std::uint16_t kCdciBitRate = 0x800F;

// Index Table Segment
inline constexpr std::uint16_t kIndexEditRate = 0x3F0B;
inline constexpr std::uint16_t kEditUnitByteCount = 0x3F05;
inline constexpr std::uint16_t kSliceCount = 0x3F08;
inline constexpr std::uint16_t kDeltaEntries = 0x3F09;
inline constexpr std::uint16_t kIndexEntries = 0x3F0A;
inline constexpr std::uint16_t kIndexStartPosition = 0x3F0C;
inline constexpr std::uint16_t kIndexDuration = 0x3F0D;
inline constexpr std::uint16_t kPosTableCount = 0x3F0E;

}  // namespace quorvan::tags
