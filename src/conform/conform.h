// Copies a clip into the layout that the readers of this program can follow: metadata with
// four-byte lengths in the order of the readers, each partition pack filled up to one KAG (the unit
// on which partitions are aligned), fill behind the metadata sets, closed partitions, a footer with
// an index of every frame, and a Random Index Pack (SMPTE ST 377-1).

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "conform/reason.h"
#include "mxf/records.h"
#include "platform/language.h"
#include "state/job_progress.h"

namespace quorvan {

// What a copy mends. The comment says what MendNote.count counts.
enum class Mend : std::uint8_t {
  kLayout,               // nothing: lengths or fill of the metadata and the packs
  kByteCounts,           // partitions whose byte counts were wrong
  kRandomIndex,          // nothing: the Random Index Pack was missing or wrong
  kBytesBehind,          // bytes behind the Random Index Pack that are left out
  kFooter,               // nothing: the footer partition was missing
  kOpenPartitions,       // partitions that were open or incomplete
  kMetadataOfPartition,  // byte offset of the partition whose complete metadata the header gets
  kSetOrder,             // metadata sets that stand at another place now
  kDurations,            // frames: durations in the metadata that were unknown or wrong
  kNoIndex,              // frames: there was no index table
  kIndex,                // frames: the index table could not be kept
  kFrames,               // frames whose elements got other fill or other length fields
  kCutOff,               // bytes of a part of a frame at the end that are left out
};

struct MendNote {
  Mend mend;
  std::uint64_t count;
};

// Why there is no copy.
enum class ConformFault : std::uint8_t {
  kNone,        // there is one, or with checkOnly there could be
  kStopped,     // cancelled by the operator
  kSameFile,    // the copy would replace the clip
  kNameTaken,   // the name of the copy exists already
  kNoRoom,      // less room than the copy needs where the copy shall stand
  kUnreadable,  // the clip cannot be read
  kUnwritable,  // the copy cannot be created, written or read back
  kNoMemory,
  kUnfit,  // the clip cannot be brought into the layout
};

struct ConformRequest {
  std::u16string in;
  std::u16string out;      // unused with checkOnly
  bool checkOnly = false;  // only tell what a copy would mend, and write nothing
};

struct ConformResult {
  ConformFault fault = ConformFault::kNone;
  Reason reason;                    // empty without a fault
  std::int32_t analysisCode = 0;    // of the analysis that refused the copy, else the clip; or 0
  std::uint32_t processCode = 0;    // its stage
  bool hasAudioDescriptor = false;  // of the refused file, for LoadFailureMessage
  std::vector<MendNote> mended;     // in the order of Mend; also what was found before a fault
  std::uint32_t frames = 0;         // of the copy

  bool IsDone() const { return fault == ConformFault::kNone; }
};

// Writes a conformed copy of the clip at `request.in` to `request.out`, which must not exist. The
// clip is only read, and a clip that the readers already accept is copied too.
//
// Writes the copy under another name in the folder of `out` and brings it onto the medium. Renames
// the copy to `out` only when the analysis accepts the copy, when its index leads to the audio
// elements that a walk over the clip's frames has found, and when the essence that is read back is
// the essence of the clip; otherwise removes the copy. Copies the essence byte for byte; only
// where the readers could not find the audio of a frame, the frame's elements get other fill or
// length fields, and their values stay.
//
// `progress` counts the bytes that are read and written, and its `cancel` stops the work;
// `progress` must not be null. Throws nothing.
ConformResult ConformClip(const ConformRequest& request, JobProgress* progress);

// What `note` says to an operator of the finished copy: one line without a line end. Throws
// std::bad_alloc.
std::u16string MendText(const MendNote& note, platform::Language language);

// A short name of `mend` for scripts, like "randomIndex".
const char* MendName(Mend mend);

// True when a conformed copy of the clip may serve where the clip does not: the analysis has
// refused the clip with `analysisCode` for its layout, not for what it holds; or it has accepted
// the clip, but `mxf` says that the index does not lead to the audio, or leads to more audio
// elements than tracks were counted.
bool MayConform(std::int32_t analysisCode, const MXF_BASE_INFO& mxf);

}  // namespace quorvan
