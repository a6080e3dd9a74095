// The records that the analysis of one MXF file fills. Jobs and front ends take every fact about
// the file from them. Numbers are in the machine's byte order, texts are UTF-16 and end with a
// zero, and track and frame numbers start at 0.

#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace quorvan {

// Most delta entries of a frame: one video element, one system or timecode element and 24 audio
// elements.
inline constexpr std::size_t kMaxDeltaEntries = 26;

// Number of tracks that the arrays with one entry for each track hold. A file may have more tracks;
// no job reads or writes them.
inline constexpr std::uint32_t kMaxTracks = 24;

// Number of delta entries in front of the entry of the first audio element: system element and
// picture.
inline constexpr std::uint32_t kDeltasBeforeAudio = 2;

// Bytes in front of an element's value: the key (16) and the length field (4).
inline constexpr std::uint32_t kElementHeaderBytes = 20;

inline constexpr std::size_t kUmidBytes = 32;          // SMPTE 330M basic UMID
inline constexpr std::size_t kExtendedUmidBytes = 64;  // SMPTE 330M extended UMID

// Values of MXF_TIMECODE_INFO.fpsIndex and rateIndex when the file states none of the timecode
// bases or edit rates that have a number.
inline constexpr std::uint32_t kUnknownFpsIndex = 5;
inline constexpr std::uint32_t kUnknownRateIndex = 8;

// Value of MXF_AUDIO_INFO.patternStart when the first frames hold no pattern of the edit rate.
inline constexpr std::uint32_t kUnknownPatternStart = 5;

enum PartitionKind : std::uint32_t {
  kHeaderPartition = 0,
  kBodyPartition = 1,
  kFooterPartition = 2
};

// One partition of the file: the partition pack to which an entry of the Random Index Pack leads
// (SMPTE 377).
struct MXF_PARTITION_INFO {
  std::uint32_t kind;            // PartitionKind
  std::uint32_t partitionCount;  // number of entries of the table, the same in every entry
  std::array<std::uint8_t, 16> packKey;
  std::array<std::uint8_t, 16> operationalPattern;
  std::uint32_t packLength;  // bytes of the pack's value
  std::uint16_t majorVersion;
  std::uint16_t minorVersion;
  std::uint32_t kagSize;          // bytes; the pack with its fill is assumed to occupy this many
  std::uint64_t thisPartition;    // file offset of the pack, as the pack states it
  std::uint64_t headerByteCount;  // bytes
  std::uint64_t indexByteCount;   // bytes
  std::uint32_t indexSid;
  std::uint64_t bodyOffset;  // bytes of the essence with `bodySid` in earlier partitions
  std::uint32_t bodySid;
  std::uint64_t essenceBase;  // file offset = StreamOffset + essenceBase, modulo 2^64
};

// A break: the timecode of a frame does not follow the timecode of the frame before, or of the
// second frame before where two frames share a timecode. The breaks of a clip are a linked list on
// the heap.
//
// Both timecodes are the real counts of the timecodes that stand in the frames, never shifted by an
// hour; kInvalidTimecode for a frame without a valid timecode. In a clip with 60 frames a second
// they count on base 30.
struct TIMECODE_ERROR_INFO {
  std::uint32_t previousTimecode;  // of the frame before the break
  std::uint32_t nextTimecode;      // of the frame behind the break
  std::uint32_t kind;              // 2 jump forward, 3 going back, 4 standing still
  std::uint32_t frameNumber;       // number of the frame before the break
  TIMECODE_ERROR_INFO* prior;      // the break before; the head node for the first break
  TIMECODE_ERROR_INFO* next;       // the break behind; null for the last break
};

// How a job gets at the bytes of a clip. Both front ends start with kMemoryMapping.
enum class Method : std::uint8_t {
  kMemoryMapping = 0,  // through mapped views
  kGenericFileIo = 1,  // with plain reads
};

// The timecode of the clip, and the progress of its analysis.
//
// The frame counts of the first and the last frame have two slots. Slot 0 holds the real count.
// Slot 1 holds the count of the timecode one hour later, so that the counts of a clip that starts
// in hour 23 and passes midnight still ascend. CountedSlot tells which slot the jobs use.
//
// The thread that runs an analysis or a continuity check writes the fields. It shares the atomic
// fields with the thread that shows the progress: the running job writes the progress and clears
// `stopRequest`, the watching thread sets `stopRequest`.
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
  std::uint32_t* timecodeWords;              // one word a frame; null outside the continuity check
  std::uint32_t* timecodeFrames;             // one count a frame; null outside the continuity check
  std::uint32_t frameCount;                  // number of entries of the INDEX_ENTRY_ARRAY
  std::uint32_t errorCount;                  // number of breaks that the continuity check found
  std::uint32_t startHour23;                 // 1 when the start timecode lies in hour 23
  std::uint32_t maxIndexDuration;            // largest IndexDuration of the segments, frames
  std::atomic<std::uint32_t> progressTotal;  // number of frames that the continuity check reads
  std::atomic<std::uint32_t> progressFrame;  // number of the frame that the check has reached
  std::atomic<std::uint32_t> stopRequest;    // 1 asks the analysis or the continuity check to stop
  Method useFileIo;                          // how the clip is read, as chosen for its analysis
  TIMECODE_ERROR_INFO* errorList;            // permanent head node of the list of breaks
  std::uint32_t rangeKnown;                  // 1 when the file tells start, base and duration
};

// Kind of the audio elements in the first frame (SMPTE 382).
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
  std::uint32_t indexedElements;    // audio elements of the first frame to which the index leads
  // Position in the 5-frame sample pattern at which the clip starts, 0 where all is well; else
  // kUnknownPatternStart.
  std::uint32_t patternStart;
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

// The place of one frame (edit unit) and of its elements in the file. The position in the array is
// the frame number, zero-based.
struct INDEX_ENTRY_ARRAY {
  const MXF_PARTITION_INFO* partition;  // the body partition that holds the frame
  std::uint64_t segmentStart;           // IndexStartPosition of its segment
  std::uint64_t segmentDuration;        // IndexDuration of its segment, as the file claims it
  std::int8_t temporalOffset;
  std::int8_t keyFrameOffset;
  std::uint8_t flags;
  std::uint64_t fileOffset;    // file offset of the frame's first byte
  std::uint32_t sliceOffset;   // bytes from the frame's first byte to the slice behind the picture
  std::uint32_t deltaCount;    // valid entries of delta
  std::uint32_t audioSamples;  // of one track, by the 5-frame pattern; 0 at an unknown rate
  std::array<DELTA_ENTRY, kMaxDeltaEntries> delta;
};

using PartitionTableCell = std::unique_ptr<MXF_PARTITION_INFO[]>;
using IndexEntryCell = std::unique_ptr<INDEX_ENTRY_ARRAY[]>;

// Place of the value of a header metadata set in the file.
struct METADATA_SET_PLACE {
  std::uint64_t fileOffset;  // of the value's first byte
  std::uint64_t bytes;
};

// What the analysis has found out about the file, with pointers to the other records.
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
  std::uint32_t materialUmidSize;  // bytes of the PackageUID in the file, normally 32 or 64
  std::uint32_t sourceUmidSize;
  std::uint32_t hasAncillaryData;      // 1 when the Material Package has a data track
  std::uint32_t ancillaryElementSize;  // bytes with key, length and fill; 0 when none was found
  PartitionTableCell* partitionTable;  // permanent cell, empty while no file is loaded
  MXF_TIMECODE_INFO* timecode;
  MXF_AUDIO_INFO* audio;
  MXF_VIDEO_INFO* video;
  IndexEntryCell* indexEntries;            // permanent cell, empty while no file is loaded
  std::atomic<std::uint32_t> processCode;  // running stage (ProcessCode); other threads read it
  std::uint32_t indexContradicted;         // 1 when keys of the frames contradict the index
  METADATA_SET_PLACE materialPackageSet;   // the set that the analysis has accepted
  METADATA_SET_PLACE sourcePackageSet;     // the set that the analysis has accepted
};

// All records of one file and the cells that own the heap blocks. A new object holds zeros, and the
// pointers of the records lead to its own members.
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

// Clears the records before an analysis, so that it inherits nothing from the file before. Does
// what UnloadMxf does, and also clears the file size, the UMIDs, the places of the package sets and
// the timecode. The pointers of `mxf` must be set. Keeps `useFileIo`, the atomic fields, and the
// list of breaks with its count. Throws nothing.
void ForgetMxf(MXF_BASE_INFO* mxf);

// Forgets the loaded file: frees the partition table and the index entries, zeroes the audio and
// video records, the ancillary fields and the versions, and empties the texts. The pointers of
// `mxf` must be set. All other fields and the timecode record keep their values. May be called when
// no file is loaded. Throws nothing.
void UnloadMxf(MXF_BASE_INFO* mxf);

// The slot of the first and last frame count that the jobs use for the clip: 1 when the clip starts
// in hour 23, else 0.
std::size_t CountedSlot(const MXF_TIMECODE_INFO& timecode);

// The frame counts of the clip's first and last frame, in the slot of CountedSlot.
std::uint32_t WorkingStart(const MXF_TIMECODE_INFO& timecode);
std::uint32_t WorkingLast(const MXF_TIMECODE_INFO& timecode);

// True when the file tells start, timecode base and duration, without which no range of frames can
// be chosen.
bool HasRange(const MXF_TIMECODE_INFO& timecode);

// True when the edit rate is a row of the table of rates.
bool HasKnownRate(const MXF_TIMECODE_INFO& timecode);

// True when the file tells sampling rate and sample width.
bool HasSampleFormat(const MXF_AUDIO_INFO& audio);

// True when the sample pattern of the clip is known and does not start with the clip.
bool HasOtherPattern(const MXF_AUDIO_INFO& audio);

// Number of tracks that the jobs use: trackCount, but at most kMaxTracks.
std::uint32_t UsableTracks(const MXF_AUDIO_INFO& audio);

}  // namespace quorvan
