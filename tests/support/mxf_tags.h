// Local tags of header metadata and index table segments (SMPTE 377, 381, 382), as the clips use
// them; those from 0x8000 on are dynamic and named by the clip's Primer Pack.

#pragma once

#include <cstdint>

namespace quorvan::test::tag {

inline constexpr std::uint16_t kDataDefinition = 0x0201;
inline constexpr std::uint16_t kDuration = 0x0202;
inline constexpr std::uint16_t kSourcePackageId = 0x1101;
inline constexpr std::uint16_t kStartTimecode = 0x1501;
inline constexpr std::uint16_t kRoundedTimecodeBase = 0x1502;
inline constexpr std::uint16_t kDropFrame = 0x1503;
inline constexpr std::uint16_t kPackages = 0x1901;
inline constexpr std::uint16_t kEssenceContainerData = 0x1902;
inline constexpr std::uint16_t kLinkedPackageUid = 0x2701;
inline constexpr std::uint16_t kSampleRate = 0x3001;
inline constexpr std::uint16_t kContainerDuration = 0x3002;
inline constexpr std::uint16_t kEssenceContainer = 0x3004;
inline constexpr std::uint16_t kPictureEssenceCoding = 0x3201;
inline constexpr std::uint16_t kDisplayHeight = 0x3208;
inline constexpr std::uint16_t kDisplayWidth = 0x3209;
inline constexpr std::uint16_t kFrameLayout = 0x320C;
inline constexpr std::uint16_t kAspectRatio = 0x320E;
inline constexpr std::uint16_t kVersion = 0x3B05;
inline constexpr std::uint16_t kOperationalPattern = 0x3B09;
inline constexpr std::uint16_t kEssenceContainers = 0x3B0A;
inline constexpr std::uint16_t kCompanyName = 0x3C01;
inline constexpr std::uint16_t kProductName = 0x3C02;
inline constexpr std::uint16_t kVersionString = 0x3C04;
inline constexpr std::uint16_t kPlatform = 0x3C08;
inline constexpr std::uint16_t kInstanceUid = 0x3C0A;
inline constexpr std::uint16_t kQuantizationBits = 0x3D01;
inline constexpr std::uint16_t kAudioSamplingRate = 0x3D03;
inline constexpr std::uint16_t kAvgBps = 0x3D09;
inline constexpr std::uint16_t kBlockAlign = 0x3D0A;
inline constexpr std::uint16_t kEditUnitByteCount = 0x3F05;
inline constexpr std::uint16_t kIndexSid = 0x3F06;
inline constexpr std::uint16_t kBodySid = 0x3F07;
inline constexpr std::uint16_t kSliceCount = 0x3F08;
inline constexpr std::uint16_t kDeltaEntryArray = 0x3F09;
inline constexpr std::uint16_t kIndexEntryArray = 0x3F0A;
inline constexpr std::uint16_t kIndexEditRate = 0x3F0B;
inline constexpr std::uint16_t kIndexStartPosition = 0x3F0C;
inline constexpr std::uint16_t kIndexDuration = 0x3F0D;
inline constexpr std::uint16_t kPosTableCount = 0x3F0E;
inline constexpr std::uint16_t kPackageUid = 0x4401;
inline constexpr std::uint16_t kTracks = 0x4403;
inline constexpr std::uint16_t kPackageModifiedDate = 0x4404;
inline constexpr std::uint16_t kPackageCreationDate = 0x4405;
inline constexpr std::uint16_t kAvcMaximumBitRate = 0x800D;

}  // namespace quorvan::test::tag
