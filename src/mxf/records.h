// What the analysis of one MXF file leaves behind: the single source of truth for everything that
// later touches the file. Numbers are in the machine's byte order, texts are zero terminated
// UTF-16, tracks count from 0.

#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace quorvan {

// One video element, one system or timecode element and 24 audio elements.
inline constexpr std::size_t kMaxDeltaEntries = 26;

// Tracks that the per-track arrays hold. A file may have more; those behind take no part.
inline constexpr std::uint32_t kMaxTracks = 24;

// Delta entries in front of the first audio element: system element and picture.
inline constexpr std::uint32_t kDeltasBeforeAudio = 2;

// Key (16 bytes) and length field (4 bytes) in front of an element's value.
inline constexpr std::uint32_t kElementHeaderBytes = 20;

inline constexpr std::size_t kUmidBytes = 32;          // SMPTE 330M basic UMID
inline constexpr std::size_t kExtendedUmidBytes = 64;  // SMPTE 330M extended UMID

// Of MXF_TIMECODE_INFO, while the file has named none of the table's rows.
inline constexpr std::uint32_t kUnknownFpsIndex = 5;
inline constexpr std::uint32_t kUnknownRateIndex = 8;

enum PartitionKind : std::uint32_t {
  kHeaderPartition = 0,
  kBodyPartition = 1,
  kFooterPartition = 2
};

// One entry of the Random Index Pack with the partition pack it leads to (SMPTE 377).
struct MXF_PARTITION_INFO {
  std::uint32_t kind;            // PartitionKind
  std::uint32_t partitionCount;  // entries of the table, the same in each
  std::array<std::uint8_t, 16> packKey;
  std::array<std::uint8_t, 16> operationalPattern;
  std::uint32_t packLength;  // bytes of the pack's value
  std::uint16_t majorVersion;
  std::uint16_t minorVersion;
  std::uint32_t kagSize;          // bytes; the pack with its fill is taken to occupy one
  std::uint64_t thisPartition;    // file offset as the pack states it
  std::uint64_t headerByteCount;  // bytes
  std::uint64_t indexByteCount;   // bytes
  std::uint32_t indexSid;
  std::uint64_t bodyOffset;  // bytes of essence before this partition
  std::uint32_t bodySid;
  std::uint64_t essenceBase;  // StreamOffset + essenceBase = file offset, modulo 2^64
};

struct TIMECODE_ERROR_INFO {
  std::uint32_t previousTimecode;  // frame count before the break, plain domain
  std::uint32_t nextTimecode;      // frame count behind the break, plain domain
  std::uint32_t kind;              // 2 jump forward, 3 going back, 4 standing still
  std::uint32_t frameNumber;       // frame before the break
  TIMECODE_ERROR_INFO* prior;
  TIMECODE_ERROR_INFO* next;
};

// How a job reaches the bytes of a clip; a program starts with the first.
enum class Method : std::uint8_t {
  kMemoryMapping = 0,  // looks at the clip through views
  kGenericFileIo = 1,  // reads the clip
};

// Start and last values stand in two slots: 0 the plain count, 1 the count one hour on, in which
// material that passes midnight stays ascending. CountedSlot tells which of them a job works with.
//
// The thread that runs an analysis or a continuity check writes the fields. The atomic words are
// shared with the thread that watches: the job writes the progress, the watching thread writes
// `stopRequest`.
struct MXF_TIMECODE_INFO {
  std::uint32_t dropFrame;     // first byte of the DropFrame value
  std::uint32_t startFrames;   // slot 0
  std::uint32_t startShifted;  // slot 1
  std::uint32_t lastFrames;    // slot 0
  std::uint32_t lastShifted;   // slot 1
  std::uint32_t duration;      // frames
  std::uint32_t fpsIndex;      // 0 to 4: base 24, 25, 30, 50, 60; else kUnknownFpsIndex
  std::uint32_t roundedBase;   // RoundedTimecodeBase
  std::uint32_t editRateNumerator;
  std::uint32_t editRateDenominator;
  // 0 to 7: 24, 25, 30, 50, 60, 24000/1001, 30000/1001, 60000/1001; else kUnknownRateIndex
  std::uint32_t rateIndex;
  std::uint32_t* timecodeWords;              // one a frame, only during the continuity check
  std::uint32_t* timecodeFrames;             // one a frame, only during the continuity check
  std::uint32_t frameCount;                  // entries of the INDEX_ENTRY_ARRAY
  std::uint32_t errorCount;                  // breaks that the continuity check found
  std::uint32_t startHour23;                 // 1 when the start lies in hour 23
  std::uint32_t maxIndexDuration;            // largest IndexDuration of the segments, frames
  std::atomic<std::uint32_t> progressTotal;  // frames of the continuity check
  std::atomic<std::uint32_t> progressFrame;  // frame that it has reached
  std::atomic<std::uint32_t> stopRequest;    // 1 asks an analysis to stop, in any of its stages
  Method useFileIo;                          // of the job that analyses or checks the clip
  TIMECODE_ERROR_INFO* errorList;            // permanent head node
  std::uint32_t rangeKnown;                  // 1 when the file tells start, base and duration
};

// Which audio element the first frame holds (SMPTE 382).
enum AudioElementKind : std::uint32_t { kNoAudioElement = 0, kAes3Element = 1, kWaveElement = 2 };

struct MXF_AUDIO_INFO {
  std::uint8_t trackCount;          // sound tracks of the Material Package
  std::uint32_t sampleRate;         // 48000, or 0 when the file does not tell
  std::uint32_t avgBytesPerSecond;  // AvgBps
  std::uint16_t blockAlign;         // bytes of one sample of one track
  std::uint32_t quantizationBits;   // 16 or 24, or 0 when the file does not tell
  std::uint32_t elementSize;        // bytes from one audio element to the next in the first frame
  double integratedLoudness;        // LUFS
  double truePeak;                  // dBTP
  double loudnessRange;             // LU
  AudioElementKind elementKind;     // of the first frame's first audio element
  std::uint32_t hasDescriptor;      // 1 when the file has an audio descriptor
};

struct MXF_VIDEO_INFO {
  std::array<std::uint8_t, 16> codingLabel;  // PictureEssenceCoding
  char16_t codecName[24];
  std::uint8_t codecIndex;  // row of the video coding table
  std::uint32_t height;     // lines of the whole picture
  std::uint32_t width;      // pixels
  std::uint32_t aspectNumerator;
  std::uint32_t aspectDenominator;
  std::uint32_t bitRate;     // bits per second, 0 when the file tells none
  std::uint8_t frameLayout;  // of an MPEG descriptor: 0 progressive, 1 and 2 interlaced
};

struct DELTA_ENTRY {
  std::uint8_t posTableIndex;
  std::uint8_t slice;
  std::uint32_t elementDelta;  // bytes from the start of the slice
};

// One frame (edit unit). Its place in the array is the frame number from 0.
struct INDEX_ENTRY_ARRAY {
  const MXF_PARTITION_INFO* partition;  // the body partition that holds the frame
  std::uint64_t segmentStart;           // IndexStartPosition of its segment
  std::uint64_t segmentDuration;        // IndexDuration of its segment, as the file claims it
  std::int8_t temporalOffset;
  std::int8_t keyFrameOffset;
  std::uint8_t flags;
  std::uint64_t fileOffset;    // of the frame's first byte
  std::uint32_t sliceOffset;   // bytes from the frame's first byte to the slice behind the picture
  std::uint32_t deltaCount;    // valid entries of delta
  std::uint32_t audioSamples;  // per track, by the 5-frame pattern
  std::array<DELTA_ENTRY, kMaxDeltaEntries> delta;
};

using PartitionTableCell = std::unique_ptr<MXF_PARTITION_INFO[]>;
using IndexEntryCell = std::unique_ptr<INDEX_ENTRY_ARRAY[]>;

// Where the value of a set of the header metadata lies in the file.
struct METADATA_SET_PLACE {
  std::uint64_t fileOffset;
  std::uint64_t bytes;
};

struct MXF_BASE_INFO {
  std::uint64_t fileSize;  // bytes
  char16_t creationDateText[64];
  char16_t modifiedDateText[64];
  std::uint8_t versionMajor;
  std::uint8_t versionMinor;
  char16_t companyName[64];
  char16_t productName[64];
  char16_t productVersion[32];
  char16_t platform[32];
  std::array<std::uint8_t, kUmidBytes> materialUmid;
  std::array<std::uint8_t, kUmidBytes> sourceUmid;
  std::uint32_t materialUmidSize;  // bytes of the UID in the file, 32 or 64
  std::uint32_t sourceUmidSize;
  std::uint32_t hasAncillaryData;      // 1 when the Material Package has a data track
  std::uint32_t ancillaryElementSize;  // bytes with key, length and fill; 0 without
  PartitionTableCell* partitionTable;  // permanent cell, empty while no file is loaded
  MXF_TIMECODE_INFO* timecode;
  MXF_AUDIO_INFO* audio;
  MXF_VIDEO_INFO* video;
  IndexEntryCell* indexEntries;            // permanent cell, empty while no file is loaded
  std::atomic<std::uint32_t> processCode;  // stage that is running; read by other threads
  METADATA_SET_PLACE materialPackageSet;   // as the analysis has accepted them
  METADATA_SET_PLACE sourcePackageSet;
};

// All records of one file, zeroed and wired together, with the cells that own the heap blocks.
struct MxfRecords {
  MxfRecords();
  ~MxfRecords();
  MxfRecords(const MxfRecords&) = delete;
  MxfRecords& operator=(const MxfRecords&) = delete;

  MXF_BASE_INFO base{};
  MXF_TIMECODE_INFO timecode{};
  MXF_AUDIO_INFO audio{};
  MXF_VIDEO_INFO video{};
  TIMECODE_ERROR_INFO errorListHead{};
  PartitionTableCell partitionTable;
  IndexEntryCell indexEntries;
};

// Puts every field into the state of a program that has loaded nothing yet, so that an analysis
// inherits nothing from the file before: what UnloadMxf does, and size, UMIDs and timecode too. The
// method of file access, the words that the analysis shares with other threads and the list of
// breaks stay.
void ForgetMxf(MXF_BASE_INFO* mxf);

// Forgets the loaded file: frees both heap blocks, zeroes the audio and video records and the
// ancillary fields and versions, and empties the texts. The timecode record keeps its values. Safe
// to call with nothing loaded.
void UnloadMxf(MXF_BASE_INFO* mxf);

// The slot that counts for a clip: 1 when it starts in hour 23, else 0.
std::size_t CountedSlot(const MXF_TIMECODE_INFO& timecode);

// First and last frame count of a clip in the slot that counts.
std::uint32_t WorkingStart(const MXF_TIMECODE_INFO& timecode);
std::uint32_t WorkingLast(const MXF_TIMECODE_INFO& timecode);

// True when the file tells all that a range of frames needs: start, timecode base and duration.
bool HasRange(const MXF_TIMECODE_INFO& timecode);

// Tracks that take part: trackCount, at most kMaxTracks.
std::uint32_t UsableTracks(const MXF_AUDIO_INFO& audio);

}  // namespace quorvan
