// Reads the header of a WAV file: the format of the samples, the place of the audio in the file,
// and the place of a Broadcast Wave file on the timeline (EBU Tech 3285; RF64: EBU Tech 3306).

#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace quorvan {

// Results of ReadWavHeader and AddWavFile. The operator sees the numbers.
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
  kWavOtherWidth = 10,  // samples of this width cannot be copied into the clip
  kWavCutShort = 11,    // holds less audio than it claims, or claims none but has some
  // A walk from chunk to chunk by their sizes leads to another format or to audio elsewhere than
  // the search for the tags, or the file changed while it was added.
  kWavChunksDiffer = 12,
  kWavUnreadable = 13,
  kWavPathTooLong = 14,
  kWavInUse = 15,  // exists, but cannot be opened: no rights, in use, or no regular file
  kWavStopped = 94,
  kWavNoLibrary = 90,
  kWavAlreadyAdded = 91,
  kWavNotFound = 92,
  kWavNoMemory = 93,
};

// ReadWavHeader fills the first block of fields with what the file says. ComputeWavPosition fills
// the second block from the first. In the pairs, [0] stands for the start of the audio and [1] for
// its end.
struct WAV_HEADER_INFO {
  std::uint32_t riffSize;         // bytes, as the field behind RIFF or RF64 claims
  std::uint64_t ds64RiffSize;     // bytes
  std::uint64_t ds64DataSize;     // bytes
  std::uint64_t ds64SampleCount;  // samples of one channel
  std::uint32_t timeReferenceLow;
  std::uint32_t timeReferenceHigh;  // with the low word: samples from midnight to the start
  std::uint16_t formatTag;
  std::uint16_t channels;
  std::uint32_t sampleRate;      // Hz
  std::uint32_t avgBytesPerSec;  // bytes
  std::uint16_t blockAlign;      // bytes of one sample of all channels
  std::uint16_t bitsPerSample;
  std::uint32_t dataChunkSize;  // bytes, as the chunk claims; 0xFFFFFFFF in an RF64 file
  std::uint64_t dataOffset;     // file offset of the first audio byte
  std::uint32_t isRF64;         // 1 or 0
  std::uint32_t hasBext;        // 1 or 0
  // Bytes of audio up to the end of the file when the header states no size for the audio; else 0.
  std::uint64_t streamBytes;

  std::uint32_t startsInLastHour;  // 1 when the start lies in hour 23, else 0
  std::uint32_t startFrame;        // frames since midnight, wrapped at midnight
  std::uint32_t endFrame;          // frames since midnight, wrapped at midnight
  std::uint32_t durationFrames;
  std::array<std::uint32_t, 2> sampleRemainder;  // samples after startFrame and endFrame
  std::array<std::uint64_t, 2> samplePosition;   // samples since midnight, not wrapped
};

// Reads the header of the file at `path`, which is zero terminated, into `header`, which must be
// zeroed. The file is open, shared with other readers, only during the call.
//
// The function searches for the known tags at every byte in front of the audio, except in the
// bodies of known chunks: an unknown chunk may claim any size. Bytes behind the head of the data
// chunk do not count as tags. Fields for which a chunk is too short stay as they are.
//
// A data chunk without a size (FFFFFFFF, as programs that stream write it, or 0 when the bytes
// behind it are no chunk) reaches to the end of the file, cut to whole sample frames. The call ends
// early once `*stop` is 1; `stop` may be null.
//
// Returns kWavOk; kWavNoPath and kWavNoRecord for a null `path` and `header`; kWavCannotOpen;
// kWavNotWave when the file does not begin with a known tag; kWavHeaderIncomplete when the file
// ends in the size field behind a tag, when RIFF or RF64, WAVE, ds64 (only in an RF64 file), fmt or
// data is missing, or when there are no channels or fewer bytes in a sample frame than channels;
// kWavUnreadable when a read fails; kWavStopped. Throws std::bad_alloc when memory is out.
WavResult ReadWavHeader(const char16_t* path, WAV_HEADER_INFO* header,
                        const std::atomic<std::uint32_t>* stop = nullptr);

// The bytes of audio: what the header states, or, when it states no size, what reaches to the end
// of the file. Throws nothing.
std::uint64_t AudioBytes(const WAV_HEADER_INFO& header);

// Fills the second block of `header` from the first. The samples of a frame follow from `rateIndex`
// (0 to 7); the timecode in which the position wraps at midnight follows from `fpsIndex` (0 to 4)
// and `dropFrame`.
//
// A position exactly between two frames counts as the frame before it, with all samples of a frame
// as remainder. At 30000/1001 a remainder of 1600 to 1602 samples, and at 60000/1001 one of 800 or
// 801, counts as the next frame with remainder 0. When the end then has a smaller remainder than
// the start, the end becomes the frame before, with the samples of a frame less the end's remainder
// as its remainder. Frames are counted modulo 2^32. An end behind the last sample that 64 bits can
// number stays at that sample.
//
// Returns 1; or 0, with nothing filled, for a null header, a `rateIndex` above 7 or a blockAlign of
// 0. Throws nothing.
int ComputeWavPosition(WAV_HEADER_INFO* header, std::uint32_t rateIndex, std::uint32_t fpsIndex,
                       std::uint32_t dropFrame);

}  // namespace quorvan
