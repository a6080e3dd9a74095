// What the program needs to know of one audio file: format, place of the audio, and where a
// Broadcast Wave file belongs on the timeline (EBU Tech 3285, RF64: EBU Tech 3306).

#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace quorvan {

// Results of reading a file and of adding it to the library. The values are shown to the operator.
enum WavResult : int {
  kWavOk = 0,
  kWavNoPath = 1,
  kWavNoRecord = 2,
  kWavCannotOpen = 3,
  kWavHeaderIncomplete = 4,
  kWavNotWave = 5,
  kWavOtherSampleRate = 6,
  kWavTooManyBits = 7,
  kWavTooManyChannels = 8,
  kWavNotPcm = 9,
  kWavOtherWidth = 10,  // samples that cannot be copied into the clip
  kWavCutShort = 11,    // the file ends before its audio does, or claims none though it has some
  kWavChunksDiffer =
      12,  // its chunks, followed by their sizes, lead to other audio than its letters
  kWavUnreadable = 13,
  kWavPathTooLong = 14,
  kWavInUse = 15,  // there, but it cannot be opened: no rights, in use, or no regular file
  kWavStopped = 94,
  kWavNoLibrary = 90,
  kWavAlreadyAdded = 91,
  kWavNotFound = 92,
  kWavNoMemory = 93,
};

// The first block holds what the file says, the second what ComputeWavPosition makes of it. Of the
// pairs [0] is the start and [1] the end.
struct WAV_HEADER_INFO {
  std::uint32_t riffSize;         // bytes, as claimed behind RIFF or RF64
  std::uint64_t ds64RiffSize;     // bytes
  std::uint64_t ds64DataSize;     // bytes
  std::uint64_t ds64SampleCount;  // samples of one channel
  std::uint32_t timeReferenceLow;
  std::uint32_t timeReferenceHigh;  // with the low word: samples since midnight
  std::uint16_t formatTag;
  std::uint16_t channels;
  std::uint32_t sampleRate;      // Hz
  std::uint32_t avgBytesPerSec;  // bytes
  std::uint16_t blockAlign;      // bytes of one sample of all channels
  std::uint16_t bitsPerSample;
  std::uint32_t dataChunkSize;  // bytes, as claimed; 0xFFFFFFFF in an RF64 file
  std::uint64_t dataOffset;     // file offset of the first audio byte
  std::uint32_t isRF64;         // 1 or 0
  std::uint32_t hasBext;        // 1 or 0
  std::uint64_t streamBytes;  // bytes of audio up to the file's end when no size is stated, else 0

  std::uint32_t startsInLastHour;  // 1 when the start lies in hour 23, else 0
  std::uint32_t startFrame;        // frames since midnight
  std::uint32_t endFrame;          // frames since midnight, wrapped there
  std::uint32_t durationFrames;
  std::array<std::uint32_t, 2> sampleRemainder;  // samples behind startFrame and endFrame
  std::array<std::uint64_t, 2> samplePosition;   // samples since midnight, not wrapped
};

// Reads the header of the file at `path`, zero terminated, into `header`, which must be zeroed.
// The file is open, shared with other readers, only during the call. Known tags are found wherever
// they stand in front of the audio, whatever the sizes of unknown chunks claim; no byte behind the
// head of the data chunk counts. Fields that a chunk is too short for stay as they are.
//
// A data chunk without a size, as a stream's header has it (FFFFFFFF, or 0 with bytes behind that
// are no chunks), reaches to the end of the file. Once `*stop` is 1 the call comes to an end; null
// for none.
//
// Returns kWavOk; kWavUnreadable; kWavStopped; kWavNoPath and kWavNoRecord for null arguments;
// kWavCannotOpen; kWavNotWave when the file does not begin with a known tag; kWavHeaderIncomplete
// when it ends behind a tag, lacks one of RIFF or RF64, WAVE, ds64 (RF64 only), fmt and data, or
// has a sample of no bytes: no channels, or fewer bytes in a block than channels.
WavResult ReadWavHeader(const char16_t* path, WAV_HEADER_INFO* header,
                        const std::atomic<std::uint32_t>* stop = nullptr);

// Bytes of audio that the file states, or that reach to its end.
std::uint64_t AudioBytes(const WAV_HEADER_INFO& header);

// Fills the second block of `header` from the first. `rateIndex` (0 to 7) gives the samples of a
// frame, `fpsIndex` (0 to 4) and `dropFrame` the timecode in which the position wraps at midnight.
// A position that ends exactly on a frame's edge counts as the last full frame with all its samples
// as remainder; at 30000/1001 and 60000/1001 a remainder of a frame's length, give or take one or
// two samples, counts as the next frame instead. Frames are counted modulo 2^32; an end behind the
// last sample that 64 bits can number stays there.
//
// Returns 1, or 0 and fills nothing for a null header, a `rateIndex` above 7 or a blockAlign of 0.
int ComputeWavPosition(WAV_HEADER_INFO* header, std::uint32_t rateIndex, std::uint32_t fpsIndex,
                       std::uint32_t dropFrame);

}  // namespace quorvan
