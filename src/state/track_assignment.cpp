#include "state/track_assignment.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "state/program_name.h"
#include "state/window_state_info.h"

namespace quorvan {
namespace {

constexpr std::u16string_view kAssignTitle = u"BWFファイルのアサイン";

struct AssignMessage {
  std::u16string_view title;  // only the window shows titles
  platform::Text text;
};

// By AssignResult.
constexpr AssignMessage kAssignMessages[] = {
    {},
    {},
    {u"トラックへのアサイン",
     {u"24bitのWAVファイルはアサインできません。\n"
      u"現在ロードされているMXFファイルのオーディオは16bitです。",
      u"A WAV file of 24 bits cannot be assigned.\n"
      u"The audio of the loaded MXF file has 16 bits."}},
    {kAssignTitle,
     {u"マルチチャンネルのファイルを、偶数トラックに割当てることはできません。",
      u"A file of several channels cannot be assigned to an even track."}},
    {kAssignTitle,
     {u"指定されたトラックからはMXFファイルのトラック上限を越えてしまうため、割当はできません。",
      u"From this track on, the file would need more tracks than the MXF file has."}},
};

constexpr std::u16string_view kRemovalQuestion =
    u"\n\nこのファイルはトラックにアサインされています。\n削除してもいいですか？";

constexpr OperatorMessage kIndexFailure = {
    kProgramName, u"メモリサイズの更新ができません。\nPCを電源OFF状態から起動させてください。"};

constexpr std::size_t kSpareIndexSlots = 10;

bool IsWired(const APP_STATE_INFO* app) {
  return app != nullptr && app->tracks != nullptr && app->mxf != nullptr &&
         app->mxf->audio != nullptr;
}

std::uint32_t ChannelCount(const WAV_FILE_INFO& entry) {
  return std::max<std::uint32_t>(entry.channels, 1);
}

AssignResult CheckAssignment(const MXF_AUDIO_INFO& audio, const WAV_FILE_INFO& entry,
                             std::int32_t firstTrack) {
  if (audio.quantizationBits == 16 && entry.bitsPerSample == 24) return AssignResult::kTooManyBits;
  const std::uint32_t channels = ChannelCount(entry);
  if (channels > 1 && firstTrack % 2 != 0) return AssignResult::kUnevenTrack;
  const std::int64_t end = std::int64_t{firstTrack} + channels;
  if (firstTrack < 0 || end > UsableTracks(audio)) return AssignResult::kBehindLastTrack;
  return AssignResult::kAssigned;
}

void ClearLink(APP_STATE_INFO* app, std::uint32_t track) {
  app->tracks->wav[track] = nullptr;
  app->tracks->wavGroup[track] = 0;
  app->tracks->wavChannel[track] = 0;
  app->window->trackChannelMark[track] = 0;
}

using TrackSet = std::array<bool, kMaxTracks>;

// The tracks that lose their file together with `track`, which must hold a file: all tracks of its
// group for a file of several channels, else `track` alone.
TrackSet TracksOfSameFile(const APP_STATE_INFO& app, std::uint32_t track) {
  const AUDIOTRACK_IO_INFO& tracks = *app.tracks;
  TrackSet set{};
  set[track] = true;
  if (tracks.wav[track]->channels < 2 || tracks.wavGroup[track] == 0) return set;
  for (std::uint32_t t = 0; t < kMaxTracks; ++t)
    set[t] = set[t] || tracks.wavGroup[t] == tracks.wavGroup[track];
  return set;
}

// Takes the file off `track` and off the other tracks of its group. Returns the set of emptied
// tracks; an empty set when `track` holds no file.
TrackSet EmptyTrack(APP_STATE_INFO* app, std::uint32_t track) {
  WAV_FILE_INFO* const entry = app->tracks->wav[track];
  if (entry == nullptr) return {};
  const TrackSet emptied = TracksOfSameFile(*app, track);
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    if (emptied[t]) ClearLink(app, t);
  }
  RecomputeAssigned(*app, entry);
  return emptied;
}

void PlaceFile(APP_STATE_INFO* app, WAV_FILE_INFO* entry, std::uint32_t firstTrack) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  tracks.wav[firstTrack] = entry;
  const std::uint32_t channels = ChannelCount(*entry);
  if (channels < 2) return;
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    const std::uint32_t track = firstTrack + channel;
    tracks.wav[track] = entry;
    tracks.wavChannel[track] = static_cast<std::uint8_t>(channel);
    tracks.wavGroup[track] = firstTrack + kWavGroupBase;
    tracks.rewrapSwitch[track] = tracks.rewrapSwitch[firstTrack];
    app->window->trackChannelMark[track] = static_cast<std::uint8_t>(channel + 1);
  }
}

// Removes `entry` from the index and moves the later entries forward; the slots behind them become
// null. No pointer to the entry stays in the index.
void DropFromIndex(APP_STATE_INFO* app, const WAV_FILE_INFO* entry) {
  if (app->wavIndex == nullptr) return;
  WAV_FILE_INFO** const begin = app->wavIndex.get();
  WAV_FILE_INFO** const end = begin + app->wavList->entryCount;
  std::fill(std::remove(begin, end, entry), end, nullptr);
}

}  // namespace

void RecomputeAssigned(const APP_STATE_INFO& app, WAV_FILE_INFO* entry) {
  const auto& wav = app.tracks->wav;
  const auto end = wav.begin() + UsableTracks(*app.mxf->audio);
  entry->assigned = std::find(wav.begin(), end, entry) != end ? 1 : 0;
}

WAV_FILE_INFO* CurrentWavEntry(const APP_STATE_INFO& app) {
  if (app.wavList == nullptr || app.wavIndex == nullptr) return nullptr;
  if (std::int64_t{app.currentWavItem} >= app.wavList->entryCount) return nullptr;
  return app.wavIndex[app.currentWavItem];
}

AssignResult AssignWavFile(APP_STATE_INFO* app, WAV_FILE_INFO* entry, std::int32_t firstTrack) {
  if (!IsWired(app) || entry == nullptr) return AssignResult::kNoEntry;
  const AssignResult result = CheckAssignment(*app->mxf->audio, *entry, firstTrack);
  if (result != AssignResult::kAssigned) return result;

  const auto first = static_cast<std::uint32_t>(firstTrack);
  for (std::uint32_t track = first; track < first + ChannelCount(*entry); ++track)
    EmptyTrack(app, track);
  PlaceFile(app, entry, first);
  RecomputeAssigned(*app, entry);
  app->libraryView = 0;
  return AssignResult::kAssigned;
}

OperatorMessage AssignRefusal(AssignResult result, platform::Language language) {
  const AssignMessage& message = kAssignMessages[static_cast<std::size_t>(result)];
  return {message.title, message.text.In(language)};
}

std::uint32_t TakeOffTrack(APP_STATE_INFO* app, std::int32_t track) {
  if (!IsWired(app) || track < 0 || track >= static_cast<std::int32_t>(kMaxTracks)) return 0;
  const TrackSet emptied = EmptyTrack(app, static_cast<std::uint32_t>(track));
  std::uint32_t count = 0;
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    if (!emptied[t]) continue;
    app->trackSelected[t] = static_cast<std::int32_t>(t) == app->focusTrack ? 1 : 0;
    ++count;
  }
  return count;
}

std::uint32_t TakeOffSelectedTracks(APP_STATE_INFO* app) {
  if (!IsWired(app)) return 0;
  std::uint32_t count = 0;
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    if (app->trackSelected[t] != 0) count += TakeOffTrack(app, static_cast<std::int32_t>(t));
  }
  return count;
}

std::uint32_t TakeOffEveryTrack(APP_STATE_INFO* app, const WAV_FILE_INFO* entry) {
  if (!IsWired(app) || entry == nullptr) return 0;
  std::uint32_t count = 0;
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    if (app->tracks->wav[t] == entry) count += TakeOffTrack(app, static_cast<std::int32_t>(t));
  }
  return count;
}

WAV_FILE_INFO* RemoveFromLibrary(APP_STATE_INFO* app, WAV_FILE_INFO* entry) {
  if (!IsWired(app) || app->wavList == nullptr || entry == nullptr) return nullptr;
  TakeOffEveryTrack(app, entry);
  DropFromIndex(app, entry);
  return RemoveWavEntry(entry);
}

bool RenewWavIndex(APP_STATE_INFO* app) {
  if (app == nullptr || app->wavList == nullptr) return false;
  if (app->wavList->next == nullptr) {
    app->wavIndex.reset();
    return true;
  }
  WavIndex renewed = BuildWavIndex(app->wavList, nullptr, kSpareIndexSlots);
  if (renewed == nullptr) return false;
  app->wavIndex = std::move(renewed);
  return true;
}

bool RemoveSelectedEntries(APP_STATE_INFO* app,
                           const std::function<bool(const WAV_FILE_INFO&)>& mayRemove) {
  if (!IsWired(app) || app->wavList == nullptr) return false;
  // Collects the selected entries before the first question: while the question is open, the window
  // shows the library and may change the selection.
  std::vector<WAV_FILE_INFO*> chosen;
  for (WAV_FILE_INFO* entry = app->wavList->next; entry != nullptr; entry = entry->next) {
    if (entry->selected != 0) chosen.push_back(entry);
  }
  for (WAV_FILE_INFO* entry : chosen) {
    if (entry->assigned == 0 || mayRemove(*entry)) RemoveFromLibrary(app, entry);
  }
  for (WAV_FILE_INFO* entry = app->wavList->next; entry != nullptr; entry = entry->next)
    entry->selected = 0;
  app->selectedWavCount = 0;
  return RenewWavIndex(app);
}

std::u16string RemovalQuestion(const WAV_FILE_INFO& entry) {
  return std::u16string(entry.filePath).append(kRemovalQuestion);
}

OperatorMessage IndexRenewalFailure() {
  return kIndexFailure;
}

}  // namespace quorvan
