// The audio files that the operator has offered for the loaded MXF file, as a list, and the texts
// and numbers that a table of them shows and sorts by.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "mxf/records.h"
#include "platform/file.h"
#include "wav/wav_header.h"

namespace quorvan {

inline constexpr std::size_t kWavPathChars = 1024;  // with the zero
inline constexpr std::size_t kColumnChars = 256;    // with the zero
inline constexpr std::uint16_t kMaxWavChannels = 8;

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

// Sort key of a column. The name column has none.
constexpr std::size_t SortKeyOf(WavColumn column) {
  return column - 1;
}

// One file of the library, or the head of the list, which holds no file: of its fields only
// entryCount, next (the first entry) and prev (the last entry) count. Of the pairs [0] is the start
// and [1] the end.
struct WAV_FILE_INFO {
  std::uint32_t listIndex;  // place in the index, written by BuildWavIndex
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
  std::uint64_t dataSize;    // bytes of audio that the file claims; it may hold fewer
  std::uint64_t dataOffset;  // file offset of the first audio byte
  std::array<std::uint64_t, 2> samplePosition;  // samples since midnight
  std::uint32_t startFrame;                     // frames since midnight
  std::uint32_t endFrame;
  std::uint32_t durationFrames;
  std::array<std::uint32_t, 2> sampleRemainder;  // samples behind startFrame and endFrame
  std::uint32_t isRF64;
  std::uint32_t hasBext;
  std::uint32_t startsInLastHour;
  char16_t columnText[kWavColumns][kColumnChars];
  std::uint64_t sortKey[kWavColumns - 1];
  std::uint32_t selected;  // 1 while its row is selected
  std::uint32_t assigned;  // 1 while it stands on at least one track
  WAV_FILE_INFO* listHead;
  WAV_FILE_INFO* next;
  WAV_FILE_INFO* prev;
};

// The entries in the order in which they are shown; null while the library is empty. It owns the
// array, not the entries. It may hold null pointers behind the last entry.
using WavIndex = std::unique_ptr<WAV_FILE_INFO*[]>;

// Reads the file at `path`, zero terminated, and appends it to the list of `head` when it fits the
// MXF file of `mxf`: the same sample rate, not more bits, at most kMaxWavChannels channels. The
// index has to be built anew afterwards.
//
// Returns kWavOk, or the reason of the refusal, and then leaves the list as it was: the results of
// ReadWavHeader, to which `stop` goes; kWavOtherSampleRate, kWavTooManyBits, kWavTooManyChannels;
// kWavNotPcm, kWavOtherWidth, kWavCutShort and kWavChunksDiffer for a file that no rewrite would
// take; kWavNoLibrary without a head or without the audio and timecode records; kWavAlreadyAdded
// for a path that an entry has, letter for letter; kWavPathTooLong for a path that does not fit the
// record; kWavNotFound when there is no such file; kWavNoMemory. Throws nothing.
WavResult AddWavFile(const char16_t* path, WAV_FILE_INFO* head, const MXF_BASE_INFO& mxf,
                     const std::atomic<std::uint32_t>* stop = nullptr);

// True when an entry of the list has that path, letter for letter.
bool HoldsWavFile(const WAV_FILE_INFO& head, std::u16string_view path);

// Moves the last entry of one list, if it has any, to the end of another.
void MoveLastWavEntry(WAV_FILE_INFO* from, WAV_FILE_INFO* to);

// What the operator is told of a refusal: `code` is a WavResult or its number, `path` the full path
// of the file. Empty for kWavOk and unknown codes.
std::u16string WavFailureText(int code, std::u16string_view path);

// Makes an index with `spareSlots` null pointers behind the entries of `head`, in list order, and
// numbers them in listIndex. It takes `old`, which may be null, and frees it. Null when the list is
// empty or memory is out.
WavIndex BuildWavIndex(WAV_FILE_INFO* head, WavIndex old, std::size_t spareSlots = 0);

// Takes `entry` off its list and frees it; no index and no track may hold it any longer, or be read
// before it is renewed. Returns the entry that followed, null for the last one, for a null pointer
// and for a head.
WAV_FILE_INFO* RemoveWavEntry(WAV_FILE_INFO* entry);

// Frees all entries. Returns 1, or 0 when `head` is null or its list is empty.
int FreeWavList(WAV_FILE_INFO* head);

}  // namespace quorvan
