// Local tags of header metadata and index table segments (SMPTE 377, 381, 382), as the clips use
// them; those from 0x8000 on are dynamic and named by the clip's Primer Pack.

#pragma once

#include <cstdint>

namespace quorvan::test::tag {

using Tag = std::uint16_t;

inline constexpr Tag kInstanceUid = 0x3C0A;
// Preface and Identification
inline constexpr Tag kEssenceContainers = 0x3B0A;
inline constexpr Tag kCompanyName = 0x3C01, kProductName = 0x3C02, kPlatform = 0x3C08;
// Essence Container Data
inline constexpr Tag kLinkedPackageUid = 0x2701;
inline constexpr Tag kIndexSid = 0x3F06, kBodySid = 0x3F07;
// Packages
inline constexpr Tag kPackageUid = 0x4401, kTracks = 0x4403;
inline constexpr Tag kPackageModifiedDate = 0x4404, kPackageCreationDate = 0x4405;
// Timeline Track
inline constexpr Tag kTrackId = 0x4801, kTrackNumber = 0x4804, kEditRate = 0x4B01;
// Sequence, Timecode Component and Source Clip
inline constexpr Tag kDuration = 0x0202, kSourcePackageId = 0x1101, kSourceTrackId = 0x1102;
inline constexpr Tag kStartTimecode = 0x1501, kRoundedTimecodeBase = 0x1502, kDropFrame = 0x1503;
// Descriptors of any kind, of pictures and of sound
inline constexpr Tag kSubDescriptors = 0x3F01, kLinkedTrackId = 0x3006;
inline constexpr Tag kSampleRate = 0x3001, kContainerDuration = 0x3002, kEssenceContainer = 0x3004;
inline constexpr Tag kDisplayHeight = 0x3208;
inline constexpr Tag kDisplayWidth = 0x3209, kFrameLayout = 0x320C, kAspectRatio = 0x320E;
inline constexpr Tag kAvcMaximumBitRate = 0x800D;
inline constexpr Tag kQuantizationBits = 0x3D01, kAudioSamplingRate = 0x3D03;
inline constexpr Tag kAvgBps = 0x3D09, kBlockAlign = 0x3D0A;
// Index Table Segment, with kIndexSid and kBodySid
inline constexpr Tag kEditUnitByteCount = 0x3F05, kSliceCount = 0x3F08, kPosTableCount = 0x3F0E;
inline constexpr Tag kDeltaEntryArray = 0x3F09, kIndexEntryArray = 0x3F0A;
inline constexpr Tag kIndexEditRate = 0x3F0B, kIndexStartPosition = 0x3F0C, kIndexDuration = 0x3F0D;

}  // namespace quorvan::test::tag
