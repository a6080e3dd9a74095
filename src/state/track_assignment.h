// Puts the WAV files of the library on audio tracks and takes them off. A file of several channels
// takes as many tracks in a row, beginning with an even track (counted from 0). These tracks are a
// group: the file leaves all of them together. Every function keeps WAV_FILE_INFO.assigned correct.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan {

enum class AssignResult {
  kAssigned,
  kNoEntry,          // no library entry was given, or a record is missing
  kTooManyBits,      // a 24-bit file for a 16-bit clip
  kUnevenTrack,      // the first track of a file of several channels is odd
  kBehindLastTrack,  // the clip does not have all tracks that the file takes
};

// A message to the operator. Both texts are empty when there is nothing to tell.
struct OperatorMessage {
  std::u16string_view title;
  std::u16string_view text;
};

// The library entry in row `currentWavItem` of the library view; null when that row holds no entry.
WAV_FILE_INFO* CurrentWavEntry(const APP_STATE_INFO& app);

// Puts `entry`, a file of the library, on `firstTrack` (from 0) and, if it has several channels, on
// as many tracks in a row. Files on these tracks are first taken off, each from all tracks of its
// group. The `rewrapSwitch` of the group's other tracks becomes that of the first track. Shows the
// track view. Returns kAssigned; any other AssignResult is a refusal, which changes nothing. Throws
// nothing.
AssignResult AssignWavFile(APP_STATE_INFO* app, WAV_FILE_INFO* entry, std::int32_t firstTrack);

// The message that tells the operator why a file was refused; empty for kAssigned and kNoEntry. Its
// title is Japanese in any case.
OperatorMessage AssignRefusal(AssignResult result,
                              platform::Language language = platform::kWindowLanguage);

// Takes the file off `track` (from 0), and a file of several channels off every track of its group.
// Of the emptied tracks, the focus track is selected afterwards and the others are not. Returns the
// number of emptied tracks: 0 when the track holds no file or does not exist.
std::uint32_t TakeOffTrack(APP_STATE_INFO* app, std::int32_t track);

// Takes the files off all selected tracks, each as TakeOffTrack does. Returns the number of emptied
// tracks.
std::uint32_t TakeOffSelectedTracks(APP_STATE_INFO* app);

// Takes `entry` off every track on which it stands, as TakeOffTrack does. Returns the number of
// emptied tracks.
std::uint32_t TakeOffEveryTrack(APP_STATE_INFO* app, const WAV_FILE_INFO* entry);

// Takes `entry` off every track, removes it from the index and from the library, and frees it.
// Returns the entry that followed in the library; null when `entry` was the last entry. Returns
// null, with nothing changed, when `entry` is null or a record is missing.
WAV_FILE_INFO* RemoveFromLibrary(APP_STATE_INFO* app, WAV_FILE_INFO* entry);

// Builds the index anew with the entries in list order, or frees it when the library is empty.
// Returns false, with the index unchanged, when memory is out or a record is missing. The unchanged
// index is safe to use: RemoveFromLibrary has already dropped the removed entries. Throws nothing.
bool RenewWavIndex(APP_STATE_INFO* app);

// Removes every selected entry from the library and builds the index anew. For each selected entry
// that stands on a track, `mayRemove` is asked, and the entry is kept when it returns false. No
// entry is selected afterwards. Returns what RenewWavIndex returns; false, with nothing changed,
// when a record is missing. Throws std::bad_alloc, before anything is removed, when memory is out,
// and whatever `mayRemove` throws.
bool RemoveSelectedEntries(APP_STATE_INFO* app,
                           const std::function<bool(const WAV_FILE_INFO&)>& mayRemove);

// The question to the operator before `entry`, which stands on a track, is removed from the
// library.
std::u16string RemovalQuestion(const WAV_FILE_INFO& entry);

// The message that tells the operator that the index could not be built anew.
OperatorMessage IndexRenewalFailure();

// Sets `assigned` of `entry`: 1 when the file stands on at least one track of the clip, else 0.
void RecomputeAssigned(const APP_STATE_INFO& app, WAV_FILE_INFO* entry);

}  // namespace quorvan
