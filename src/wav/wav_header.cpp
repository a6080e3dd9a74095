#include "wav/wav_header.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>
#include <string>

#include "mxf/sample_pattern.h"
#include "platform/file.h"
#include "timecode/timecode.h"
#include "wav/little_endian.h"

namespace quorvan {
namespace {

constexpr std::size_t kTagBytes = 4;
constexpr std::size_t kSizeBytes = 4;
// The search goes on three bytes in front of the end of each group of four bytes and of each known
// chunk, since a tag may start at any byte.
constexpr std::uint64_t kStepBack = 3;

constexpr std::size_t kDs64Bytes = 24;
constexpr std::size_t kFmtBytes = 16;
constexpr std::uint32_t kLeastFmtSize = 4;
constexpr std::size_t kTimeReferenceOffset = 338;
constexpr std::size_t kBextBytes = 346;  // of a bext chunk, up to the end of its time reference

enum Tag : std::uint32_t { kRiff, kRf64, kWave, kDs64, kFmt, kBext, kData, kForm, kNoTag };

using Bytes = std::span<const std::uint8_t>;

constexpr char kTagLetters[kNoTag][kTagBytes + 1] = {"RIFF", "RF64", "WAVE", "ds64",
                                                     "fmt ", "bext", "data", "FORM"};

constexpr auto kBeginsTag = [] {
  std::array<bool, 256> begins{};
  for (const auto& letters : kTagLetters)
    begins[static_cast<unsigned char>(letters[0])] = true;
  return begins;
}();

Tag FindTag(Bytes group) {
  for (std::uint32_t tag = 0; tag < kNoTag; ++tag) {
    if (std::equal(group.begin(), group.end(), kTagLetters[tag])) return static_cast<Tag>(tag);
  }
  return kNoTag;
}

constexpr std::uint32_t Mark(Tag tag) {
  return 1u << tag;
}

constexpr std::uint32_t kRiffMarks = Mark(kRiff) | Mark(kWave) | Mark(kFmt) | Mark(kData);
constexpr std::uint32_t kRf64Marks =
    Mark(kRf64) | Mark(kWave) | Mark(kDs64) | Mark(kFmt) | Mark(kData);

// Reads a file through a block of bytes that is filled with one read.
class ByteWindow {
 public:
  explicit ByteWindow(const platform::File& file) : file_(file) {}

  // The bytes of the file from `offset` on that are in the block: at least `least`, which must not
  // be larger than the block, or fewer at the end of the file.
  Bytes From(std::uint64_t offset, std::size_t least) {
    if (offset < start_ || offset - start_ > length_ || length_ - (offset - start_) < least) {
      start_ = offset;
      length_ = file_.ReadAt(offset, block_.data(), block_.size());
    }
    const auto skipped = static_cast<std::size_t>(offset - start_);
    return Bytes(block_).subspan(skipped, length_ - skipped);
  }

  // The `length` bytes of the file from `offset` on; fewer at the end of the file.
  Bytes At(std::uint64_t offset, std::size_t length) {
    const Bytes bytes = From(offset, length);
    return bytes.first(std::min(length, bytes.size()));
  }

 private:
  const platform::File& file_;
  std::uint64_t start_ = 0;
  std::size_t length_ = 0;
  std::array<std::uint8_t, 64 * 1024> block_;
};

struct Scan {
  ByteWindow window;
  WAV_HEADER_INFO* header;
  std::uint64_t fileSize;
  std::uint64_t limit;  // end of the search: file offset of the audio or of the file's end
  std::uint32_t marks;  // Mark of each tag that was found
};

template <typename Word>
void TakeField(Bytes body, std::size_t offset, Word* field) {
  if (body.size() >= offset + sizeof(Word)) *field = LoadLittleEndian<Word>(body.data() + offset);
}

void TakeDs64(Bytes body, WAV_HEADER_INFO* header) {
  TakeField(body, 0, &header->ds64RiffSize);
  TakeField(body, 8, &header->ds64DataSize);
  TakeField(body, 16, &header->ds64SampleCount);
}

void TakeFmt(Bytes body, WAV_HEADER_INFO* header) {
  TakeField(body, 0, &header->formatTag);
  TakeField(body, 2, &header->channels);
  TakeField(body, 4, &header->sampleRate);
  TakeField(body, 8, &header->avgBytesPerSec);
  TakeField(body, 12, &header->blockAlign);
  TakeField(body, 14, &header->bitsPerSample);
}

void TakeBext(Bytes body, WAV_HEADER_INFO* header) {
  TakeField(body, kTimeReferenceOffset, &header->timeReferenceLow);
  TakeField(body, kTimeReferenceOffset + 4, &header->timeReferenceHigh);
}

// The first bytes of the body, at `position`, of a chunk that claims `size` bytes: `wanted` bytes,
// or fewer when the chunk claims fewer or the file ends.
Bytes BodyFront(Scan* scan, std::uint64_t position, std::uint32_t size, std::size_t wanted) {
  return scan->window.At(position, std::min<std::size_t>(size, wanted));
}

std::uint64_t BehindBody(const Scan& scan, std::uint64_t position, std::uint32_t size) {
  return std::max(position, std::min(position + size, scan.fileSize));
}

// Notes that `tag` was found and takes the fields of its chunk. `size` is the size field of the
// chunk and `position` the file offset behind this field. Returns the file offset at which the
// search goes on.
std::uint64_t EnterTag(Scan* scan, Tag tag, std::uint32_t size, std::uint64_t position) {
  if (tag == kForm || (tag == kFmt && size < kLeastFmtSize)) return position;
  WAV_HEADER_INFO* const header = scan->header;
  scan->marks |= Mark(tag);
  switch (tag) {
    case kRiff:
    case kRf64:
      header->riffSize = size;
      return position;
    case kWave:  // no size follows it
      return position - kSizeBytes;
    case kDs64:
      TakeDs64(BodyFront(scan, position, size, kDs64Bytes), header);
      break;
    case kFmt:
      TakeFmt(BodyFront(scan, position, size, kFmtBytes), header);
      break;
    case kBext:
      TakeBext(BodyFront(scan, position, size, kBextBytes), header);
      break;
    case kData:
      header->dataChunkSize = size;
      header->dataOffset = position;
      scan->limit = position;
      return position;
    case kForm:
    case kNoTag:
      return position;
  }
  return BehindBody(*scan, position, size);
}

// The file offset of the next byte, from `position` on, with which a tag may begin; the limit of
// the search when there is none.
std::uint64_t NextTagLetter(Scan* scan, std::uint64_t position) {
  while (position < scan->limit) {
    const Bytes bytes = scan->window.From(position, 1);
    if (bytes.empty()) return scan->limit;
    const auto found = std::find_if(bytes.begin(), bytes.end(),
                                    [](std::uint8_t byte) { return kBeginsTag[byte]; });
    position += static_cast<std::uint64_t>(found - bytes.begin());
    if (found != bytes.end()) break;
  }
  return position;
}

// Searches for tags from the start of the file up to the audio: at every byte, except in the bodies
// of known chunks. Ends at once when the file does not begin with a known tag. kWavHeaderIncomplete
// when the file ends in the size field behind a tag, else kWavOk.
WavResult ScanTags(Scan* scan) {
  std::uint64_t position = 0;
  while (position < scan->limit) {
    const Bytes group = scan->window.At(position, kTagBytes);
    if (group.size() < kTagBytes) break;
    const Tag tag = FindTag(group);
    position += kTagBytes;
    if (tag != kNoTag) {
      const Bytes size = scan->window.At(position, kSizeBytes);
      if (size.size() < kSizeBytes) return kWavHeaderIncomplete;
      position =
          EnterTag(scan, tag, LoadLittleEndian<std::uint32_t>(size.data()), position + kSizeBytes);
    }
    if (scan->marks == 0) break;
    position = NextTagLetter(scan, position - kStepBack);
  }
  return kWavOk;
}

constexpr std::uint32_t kSizeUnknown = 0xFFFFFFFF;
constexpr std::uint64_t kLongSizeUnknown = std::numeric_limits<std::uint64_t>::max();

// The bytes of the chunk at `offset`, with its head (four letters and a size) and its pad byte. 0
// when no chunk stands there: the head is cut short by the end of the file, or its letters are not
// printable.
std::uint64_t ChunkAt(Scan* scan, std::uint64_t offset) {
  const Bytes head = scan->window.At(offset, kTagBytes + kSizeBytes);
  const auto isPrintable = [](std::uint8_t letter) { return letter >= ' ' && letter <= '~'; };
  if (head.size() < kTagBytes + kSizeBytes) return 0;
  if (!std::all_of(head.begin(), head.begin() + kTagBytes, isPrintable)) return 0;
  const std::uint64_t size = LoadLittleEndian<std::uint32_t>(head.data() + kTagBytes);
  return kTagBytes + kSizeBytes + size + size % 2;
}

// True when a chunk at `offset` leads to the end of the file or to another chunk. Letters alone
// prove nothing, since audio may begin with the same bytes.
bool ChunkFollows(Scan* scan, std::uint64_t offset) {
  const std::uint64_t bytes = ChunkAt(scan, offset);
  const std::uint64_t end = offset + bytes;
  return bytes > 0 && (end == scan->fileSize || end - 1 == scan->fileSize ||
                       (end < scan->fileSize && ChunkAt(scan, end) > 0));
}

// The bytes of audio up to the end of the file, cut to whole sample frames, when the header states
// no size; else 0. Also 0 for a data chunk of size 0 with another chunk behind it: such a chunk is
// really empty.
std::uint64_t StreamBytes(Scan* scan) {
  const WAV_HEADER_INFO& header = *scan->header;
  const bool unstated = header.dataChunkSize == 0 || header.dataChunkSize == kSizeUnknown;
  const bool longUnstated =
      header.isRF64 == 0 || header.ds64DataSize == 0 || header.ds64DataSize == kLongSizeUnknown;
  if (!unstated || !longUnstated || header.dataOffset >= scan->fileSize) return 0;
  if (header.dataChunkSize == 0 && ChunkFollows(scan, header.dataOffset)) return 0;
  const std::uint64_t rest = scan->fileSize - header.dataOffset;
  return rest - rest % header.blockAlign;
}

WavResult Evaluate(Scan* scanned) {
  const Scan& scan = *scanned;
  if (scan.marks == 0) return kWavNotWave;
  WAV_HEADER_INFO* const header = scan.header;
  header->isRF64 = (scan.marks & Mark(kRf64)) != 0;
  header->hasBext = (scan.marks & Mark(kBext)) != 0;
  const std::uint32_t required = header->isRF64 != 0 ? kRf64Marks : kRiffMarks;
  if ((scan.marks & required) != required) return kWavHeaderIncomplete;
  if (header->channels == 0 || header->blockAlign < header->channels) return kWavHeaderIncomplete;
  header->streamBytes = StreamBytes(scanned);
  return kWavOk;
}

struct TimelinePlace {
  std::uint32_t frame;
  std::uint32_t remainder;    // samples
  std::uint32_t nextSamples;  // samples of the next frame of the sample pattern
};

using PatternRow = std::uint32_t[kPatternFrames];

// Counts the frames whose samples together reach `samples`. Frame 0 takes the first count
// of the sample pattern, and the pattern starts again with frame 1.
TimelinePlace CountFrames(const PatternRow& row, std::uint64_t samples) {
  if (samples <= row[0]) return {0, static_cast<std::uint32_t>(samples), row[0]};
  std::uint64_t ringSamples = 0;
  for (const std::uint32_t frameSamples : row)
    ringSamples += frameSamples;

  const std::uint64_t behindFirst = samples - row[0];
  const std::uint64_t rings = (behindFirst - 1) / ringSamples;
  const std::uint64_t rest = behindFirst - rings * ringSamples;  // 1 to ringSamples
  std::uint32_t steps = 0;
  std::uint64_t counted = 0;
  while (counted < rest)
    counted += row[steps++];

  const std::uint32_t nextSamples = row[steps % kPatternFrames];
  return {static_cast<std::uint32_t>(rings * kPatternFrames + steps),
          static_cast<std::uint32_t>(nextSamples - (counted - rest)), nextSamples};
}

// The remainders, in samples, that count as a whole frame, by rateIndex. Only 30000/1001 and
// 60000/1001 have such remainders.
struct WholeFrameRange {
  std::uint32_t first;
  std::uint32_t last;
};
constexpr WholeFrameRange kNoRange = {1, 0};
constexpr WholeFrameRange kWholeFrame[kRateCount] = {kNoRange, kNoRange, kNoRange,     kNoRange,
                                                     kNoRange, kNoRange, {1600, 1602}, {800, 801}};

TimelinePlace FindPlace(std::uint32_t rateIndex, std::uint64_t samples) {
  TimelinePlace place = CountFrames(kSamplePattern[rateIndex], samples);
  const WholeFrameRange range = kWholeFrame[rateIndex];
  if (place.remainder >= range.first && place.remainder <= range.last) {
    ++place.frame;
    place.remainder = 0;
  }
  return place;
}

// An end with a smaller remainder than the start moves to the frame before, and its new remainder
// is nextSamples less its old remainder.
void AlignEnd(std::uint32_t startRemainder, TimelinePlace* end) {
  if (startRemainder <= end->remainder) return;
  end->remainder = end->nextSamples - end->remainder;
  --end->frame;
}

constexpr std::uint32_t kHoursPerDay = 24;
constexpr std::uint32_t kLastHour = 23;

// Subtracts 24 hours from `*frame` when its timecode has reached 24 hours. Returns the hour of the
// timecode before the subtraction.
std::uint32_t WrapAtMidnight(std::uint32_t fpsIndex, std::uint32_t dropFrame,
                             std::uint32_t* frame) {
  TIMECODE_CALC calc{};
  calc.fpsIndex = fpsIndex;
  calc.dropFrame = dropFrame;
  calc.b = {kHoursPerDay, 0, 0, 0};
  FramesToTimecode(FramesToLabelCount(fpsIndex, dropFrame, *frame), fpsIndex, &calc.a);
  const std::uint32_t hour = calc.a[0];
  if (hour >= kHoursPerDay && TimecodeAddSub(&calc, '-') == 1)
    *frame = static_cast<std::uint32_t>(calc.resultFrames);
  return hour;
}

std::uint32_t OneHourOn(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t frame) {
  return static_cast<std::uint32_t>(ShiftHours(fpsIndex, dropFrame, frame, 1, '+'));
}

std::uint64_t AddUpToLast(std::uint64_t a, std::uint64_t b) {
  return a + std::min(b, std::numeric_limits<std::uint64_t>::max() - a);
}

}  // namespace

WavResult ReadWavHeader(const char16_t* path, WAV_HEADER_INFO* header,
                        const std::atomic<std::uint32_t>* stop) {
  if (path == nullptr) return kWavNoPath;
  if (header == nullptr) return kWavNoRecord;
  platform::File file = platform::File::Open(path, platform::OpenMode::kReadShared);
  if (!file.IsOpen()) return kWavCannotOpen;
  file.StopOn(stop);

  const std::uint64_t fileSize = file.Size().value_or(0);
  Scan scan{ByteWindow(file), header, fileSize, fileSize, 0};
  WavResult result = ScanTags(&scan);
  if (result == kWavOk) result = Evaluate(&scan);
  // The scan takes a read that failed or was stopped for the end of the file: its result does not
  // count then.
  switch (file.Trouble()) {
    case platform::ReadTrouble::kNone:
      break;
    case platform::ReadTrouble::kFailed:
      return kWavUnreadable;
    case platform::ReadTrouble::kStopped:
      return kWavStopped;
  }
  return result;
}

std::uint64_t AudioBytes(const WAV_HEADER_INFO& header) {
  if (header.streamBytes != 0) return header.streamBytes;
  return header.isRF64 != 0 ? header.ds64DataSize : header.dataChunkSize;
}

int ComputeWavPosition(WAV_HEADER_INFO* header, std::uint32_t rateIndex, std::uint32_t fpsIndex,
                       std::uint32_t dropFrame) {
  if (header == nullptr || rateIndex >= kRateCount || header->blockAlign == 0) return 0;
  const std::uint64_t start = header->hasBext == 0
                                  ? 0
                                  : (static_cast<std::uint64_t>(header->timeReferenceHigh) << 32) |
                                        header->timeReferenceLow;
  header->samplePosition = {start, AddUpToLast(start, AudioBytes(*header) / header->blockAlign)};

  const TimelinePlace startPlace = FindPlace(rateIndex, header->samplePosition[0]);
  TimelinePlace endPlace = FindPlace(rateIndex, header->samplePosition[1]);
  AlignEnd(startPlace.remainder, &endPlace);
  header->sampleRemainder = {startPlace.remainder, endPlace.remainder};
  header->startFrame = startPlace.frame;
  header->endFrame = endPlace.frame;

  const std::uint32_t startHour = WrapAtMidnight(fpsIndex, dropFrame, &header->startFrame);
  WrapAtMidnight(fpsIndex, dropFrame, &header->endFrame);
  header->startsInLastHour = startHour == kLastHour ? 1 : 0;
  header->durationFrames = header->startsInLastHour == 0
                               ? header->endFrame - header->startFrame
                               : OneHourOn(fpsIndex, dropFrame, header->endFrame) -
                                     OneHourOn(fpsIndex, dropFrame, header->startFrame);
  return 1;
}

}  // namespace quorvan
