// The library: a list of the WAV files that the operator has added for the loaded clip, with the
// texts that a table of them shows and the numbers by which it sorts.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "mxf/records.h"
#include "platform/file.h"
#include "platform/language.h"
#include "wav/wav_header.h"

namespace quorvan {

inline constexpr std::size_t kWavPathChars = 1024;  // with the terminating zero
inline constexpr std::size_t kColumnChars = 256;    // with the terminating zero
inline constexpr std::uint16_t kMaxWavChannels = 8;

// The columns of the table of files.
enum WavColumn : std::size_t {
  kNameColumn = 0,
  kChannelsColumn,
  kBitsColumn,
  kSampleRateColumn,
  kStartColumn,
  kEndColumn,
  kDurationColumn,
  kCreatedColumn,
  kUpdatedColumn,
  kSizeColumn,
  kWavColumns,
};

// Place of a column's number in WAV_FILE_INFO.sortKey. The name column has no number and sorts by
// its text.
constexpr std::size_t SortKeyOf(WavColumn column) {
  return column - 1;
}

// An entry of the library: one file, or the head of the list. The head holds no file; it uses only
// entryCount, next (the first entry) and prev (the last entry). In the pairs, [0] stands for the
// start of the audio and [1] for its end.
struct WAV_FILE_INFO {
  std::uint32_t listIndex;  // place in the index that BuildWavIndex has made
  std::int32_t entryCount;  // head only
  char16_t fileName[kWavPathChars];
  char16_t filePath[kWavPathChars];
  platform::FileInfo findData;
  std::uint16_t formatTag;
  std::uint16_t channels;
  std::uint32_t sampleRate;             // Hz
  std::uint32_t avgBytesPerSec;         // bytes
  std::uint16_t blockAlign;             // bytes of one sample of all channels
  std::uint16_t bytesPerChannelSample;  // bytes of one sample of one channel
  std::uint16_t bitsPerSample;
  std::uint64_t dataSize;                       // bytes of audio that the file claims
  std::uint64_t dataOffset;                     // file offset of the first audio byte
  std::array<std::uint64_t, 2> samplePosition;  // samples since midnight, not wrapped
  std::uint32_t startFrame;                     // frames since midnight
  std::uint32_t endFrame;
  std::uint32_t durationFrames;
  std::array<std::uint32_t, 2> sampleRemainder;  // samples after startFrame and endFrame
  std::uint32_t isRF64;
  std::uint32_t hasBext;
  std::uint32_t startsInLastHour;
  char16_t columnText[kWavColumns][kColumnChars];
  std::uint64_t sortKey[kWavColumns - 1];
  std::uint32_t selected;  // 1 while the file's row is selected
  std::uint32_t assigned;  // 1 while the file stands on at least one track
  WAV_FILE_INFO* listHead;
  WAV_FILE_INFO* next;
  WAV_FILE_INFO* prev;
};

// The index: the entries in the order in which they are shown; null while the library is empty. The
// index owns its array of pointers, not the entries. Null pointers may follow the last entry.
using WavIndex = std::unique_ptr<WAV_FILE_INFO*[]>;

// Reads the file at `path`, which is zero terminated, and appends it to the list of `head` when it
// fits the clip of `mxf`: the same sampling rate, not more bits, at most kMaxWavChannels channels,
// and samples that a rewrite can copy. The caller has to build the index anew afterwards. `*stop`
// ends the reading of the header as in ReadWavHeader.
//
// Returns kWavOk; any other result is a refusal, which leaves the list as it was: kWavNoLibrary
// when the head or the audio or timecode record is missing; kWavNoPath for a null path;
// kWavAlreadyAdded when an entry has the same path, letter for letter; kWavPathTooLong when the
// path does not fit the entry; kWavNotFound when there is no such file; kWavInUse when the file
// exists but cannot be opened or is no regular file; what ReadWavHeader returns for the file;
// kWavOtherSampleRate, kWavTooManyBits and kWavTooManyChannels; kWavNotPcm, kWavOtherWidth,
// kWavCutShort and kWavChunksDiffer for a file that a rewrite would refuse; kWavUnreadable;
// kWavNoMemory. Throws nothing.
WavResult AddWavFile(const char16_t* path, WAV_FILE_INFO* head, const MXF_BASE_INFO& mxf,
                     const std::atomic<std::uint32_t>* stop = nullptr);

// The entry of the list with the path `path`, letter for letter; null when there is none. Throws
// nothing.
WAV_FILE_INFO* FindWavFile(const WAV_FILE_INFO& head, std::u16string_view path);

// Moves the last entry of the list `from`, if there is one, to the end of the list `to`. Throws
// nothing.
void MoveLastWavEntry(WAV_FILE_INFO* from, WAV_FILE_INFO* to);

// The text that tells the operator why a file was refused. `code` is the number of a WavResult and
// `path` the full path of the file. Empty for kWavOk and unknown codes. Throws std::bad_alloc when
// memory is out.
std::u16string WavFailureText(int code, std::u16string_view path,
                              platform::Language language = platform::kWindowLanguage);

// Builds an index of the entries of `head` in list order, followed by `spareSlots` null pointers,
// and numbers the entries in listIndex from 0. Frees the index `old` first, which may be null.
// Returns null when the list is empty, when `head` is null, or when memory is out. Throws nothing.
WavIndex BuildWavIndex(WAV_FILE_INFO* head, WavIndex old, std::size_t spareSlots = 0);

// Removes `entry` from its list and frees it. The caller sees to it that no track and no index
// still uses the entry. Returns the entry that followed in the list; null for the last entry, a
// null pointer and a head. Throws nothing.
WAV_FILE_INFO* RemoveWavEntry(WAV_FILE_INFO* entry);

// Frees all entries of the list. Returns 1, or 0 when `head` is null or its list is empty. Throws
// nothing.
int FreeWavList(WAV_FILE_INFO* head);

}  // namespace quorvan
