// Which file stands on which audio track. A file of several channels takes as many tracks in a row,
// from an even track on (counted from 0), and leaves them together. Every function keeps
// WAV_FILE_INFO.assigned true.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "state/app_state_info.h"

namespace quorvan {

enum class AssignResult {
  kAssigned,
  kNoEntry,          // no file chosen, or records missing
  kTooManyBits,      // a 24-bit file for a 16-bit MXF file
  kUnevenTrack,      // several channels from an odd track on
  kBehindLastTrack,  // one of its tracks is none of the MXF file's
};

// A message to the operator. Both empty where there is nothing to tell.
struct OperatorMessage {
  std::u16string_view title;
  std::u16string_view text;
};

// The library entry in row currentWavItem; null when that row holds none.
WAV_FILE_INFO* CurrentWavEntry(const APP_STATE_INFO& app);

// Puts `entry`, a file of the library, on `firstTrack` (from 0) and, with several channels, on
// those behind it. Files that stood there leave all tracks that they stood on as one group; the
// switches of a group's other tracks follow the first. Shows the track view. A refusal changes
// nothing.
AssignResult AssignWavFile(APP_STATE_INFO* app, WAV_FILE_INFO* entry, std::int32_t firstTrack);

// What the operator is told of `result`; empty for kAssigned and kNoEntry.
OperatorMessage AssignRefusal(AssignResult result);

// Takes the file off `track` (from 0), and with several channels off every track of its group. Of
// the emptied tracks only the focus track stays selected. Returns the number of emptied tracks.
std::uint32_t TakeOffTrack(APP_STATE_INFO* app, std::int32_t track);

// The same for every selected track. Returns the number of emptied tracks.
std::uint32_t TakeOffSelectedTracks(APP_STATE_INFO* app);

// The same for every track on which `entry` stands.
std::uint32_t TakeOffEveryTrack(APP_STATE_INFO* app, const WAV_FILE_INFO* entry);

// Takes `entry` off every track, out of the index and out of the library, and frees it. Returns the
// entry that followed, null for the last one.
WAV_FILE_INFO* RemoveFromLibrary(APP_STATE_INFO* app, WAV_FILE_INFO* entry);

// Makes the index anew, entries in list order, or frees it when the library is empty. False when
// memory is out: then the old one stays as it is, still without the removed entries.
bool RenewWavIndex(APP_STATE_INFO* app);

// Removes every selected entry from the library and renews the index. `mayRemove` is asked for each
// one that stands on a track; false keeps it. No entry is selected
// afterwards. Returns what RenewWavIndex does.
bool RemoveSelectedEntries(APP_STATE_INFO* app,
                           const std::function<bool(const WAV_FILE_INFO&)>& mayRemove);

// The question before an assigned file is removed from the library.
std::u16string RemovalQuestion(const WAV_FILE_INFO& entry);

// What the operator is told when the index could not be renewed.
OperatorMessage IndexRenewalFailure();

// Sets `assigned` of `entry` by a walk over the tracks of the MXF file.
void RecomputeAssigned(const APP_STATE_INFO& app, WAV_FILE_INFO* entry);

}  // namespace quorvan
