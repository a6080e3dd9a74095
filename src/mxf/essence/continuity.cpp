#include "mxf/essence/continuity.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <span>

#include "mxf/analysis.h"
#include "platform/memory.h"
#include "timecode/timecode.h"

namespace quorvan {
namespace {

// Number of coming frames whose words are prefetched: enough to keep the queue of a disk full.
constexpr std::uint32_t kWordsAhead = 256;

// Bytes that must be free before further breaks are listed. The breaks up to the next check need
// far less, but FitsMemory returns true for every number up to 64 MiB, so the limit is higher.
constexpr std::uint64_t kBytesForNodes = std::uint64_t{65} << 20;

// Frames that are handled between two checks for a stop request, in loops that read nothing. Also
// the number of breaks between two checks of the free memory.
constexpr std::uint32_t kFramesPerCheck = 1u << 16;

// Offset of the timecode word in a frame, in bytes: the key and the length field of the system
// element, then the 41 bytes in front of the timecode in its value.
constexpr std::uint64_t kWordOffset = kElementHeaderBytes + 41;
constexpr std::size_t kWordBytes = 4;

// Stands for a word that could not be read. Its digits are above 9, so it is no timecode.
constexpr std::uint32_t kNoWord = 0xFFFFFFFF;

constexpr std::uint32_t kJumpForward = 2;
constexpr std::uint32_t kGoingBack = 3;
constexpr std::uint32_t kStandingStill = 4;

// Flags in a word. The drop-frame flag is in the frames byte. A field mark stands in the second of
// two frames that share a timecode. At 60 frames a second it is in the seconds byte, at 50 frames a
// second in the hours byte.
constexpr std::uint32_t kDropFrameFlag = 0x00000040;
constexpr std::uint32_t kFieldMark60 = 0x00008000;
constexpr std::uint32_t kFieldMark50 = 0x80000000;

// A reading: one way to understand the words of a clip as timecodes.
struct WordReading {
  std::uint32_t cleared;  // flags that are cleared in each word before its digits are read
  std::uint32_t base;     // fpsIndex of the base on which the words count
  std::uint32_t scale;    // factor by which the counts on this base are multiplied
  std::uint32_t step;     // frames from one compared word to the next
  std::uint32_t mark;     // flag that at least one word of the clip must have; 0 for none
  bool onlyPairs;         // applies only when each timecode stands in exactly two frames
};

constexpr WordReading kReadings24[] = {{kDropFrameFlag, 0, 1, 1, 0, false}};
constexpr WordReading kReadings25[] = {{kDropFrameFlag, 1, 1, 1, 0, false}};
constexpr WordReading kReadings30[] = {{kDropFrameFlag, 2, 1, 1, 0, false}};
// The frames byte has no room for a tens digit above 3. Some writers use the bit of the drop-frame
// flag for the tens digit 4. Others count 25 timecodes a second, each in two frames, with or
// without a mark in the second frame.
constexpr WordReading kReadings50[] = {
    {kDropFrameFlag, 3, 1, 1, 0, false},
    {0, 3, 1, 1, 0, false},
    {kDropFrameFlag | kFieldMark50, 1, 2, 2, kFieldMark50, false},
    {kDropFrameFlag | kFieldMark50, 1, 2, 2, 0, true}};
constexpr WordReading kReadings60[] = {{kDropFrameFlag | kFieldMark60, 2, 1, 2, 0, false}};

// The possible readings of a clip, by fpsIndex. The reading with the fewest breaks is used.
constexpr std::array<std::span<const WordReading>, kTimecodeBases> kReadings = {
    kReadings24, kReadings25, kReadings30, kReadings50, kReadings60};

// fpsIndex of the base to which the counts of a reading are scaled.
std::uint32_t CountBase(const MXF_TIMECODE_INFO& timecode, const WordReading& reading) {
  return reading.scale == 1 ? reading.base : timecode.fpsIndex;
}

// The real count of the timecode in a word, scaled by the reading but not shifted by an hour;
// kInvalidTimecode for a word that is no timecode.
std::int32_t WrittenCount(std::uint32_t word, const MXF_TIMECODE_INFO& timecode,
                          const WordReading& reading) {
  word &= ~reading.cleared;
  TimeFields fields;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::uint32_t digits = word >> (8 * (fields.size() - 1 - i)) & 0xFF;
    fields[i] = (digits >> 4) * 10 + (digits & 0x0F);
  }
  const std::int32_t frames = TimecodeToFrames(reading.base, timecode.dropFrame, fields);
  return frames < 0 ? frames : frames * static_cast<std::int32_t>(reading.scale);
}

// The count of a word in the slot that the jobs use (see MXF_TIMECODE_INFO), where the counts of a
// clip that passes midnight ascend. As a signed number it is negative for a word that is no
// timecode.
std::uint32_t CountOf(std::uint32_t word, const MXF_TIMECODE_INFO& timecode,
                      const WordReading& reading) {
  const auto count = static_cast<std::uint32_t>(WrittenCount(word, timecode, reading));
  if (static_cast<std::int32_t>(count) < 0 || CountedSlot(timecode) == 0) return count;
  return static_cast<std::uint32_t>(
      ShiftHours(CountBase(timecode, reading), timecode.dropFrame, count, 1, '+'));
}

// Kind of the break between two counts; 0 when `next` follows `previous`.
std::uint32_t KindOfBreak(std::uint32_t previous, std::uint32_t next, std::uint32_t scale) {
  if (previous > next) return kGoingBack;
  if (next == previous) return kStandingStill;
  return next - previous > scale ? kJumpForward : 0;
}

// The little-endian word at `bytes`: its highest byte is the hours.
std::uint32_t WordAt(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

// One continuity check of one clip.
class ContinuityCheck {
 public:
  ContinuityCheck(const platform::File& file, const MXF_BASE_INFO& mxf)
      : file_(file), mxf_(mxf), timecode_(*mxf.timecode) {}
  ContinuityCheck(const ContinuityCheck&) = delete;
  ContinuityCheck& operator=(const ContinuityCheck&) = delete;
  ~ContinuityCheck() { timecode_.timecodeWords = timecode_.timecodeFrames = nullptr; }

  std::int32_t Run() {
    timecode_.progressTotal = timecode_.frameCount;
    words_.reset(new (std::nothrow) std::uint32_t[timecode_.frameCount]);
    if (words_ == nullptr) return kContinuityNoMemory;
    timecode_.timecodeWords = words_.get();
    timecode_.progressFrame = 0;
    const auto size = file_.Size();
    if (!size) return kContinuityUnreadable;
    if (*size == 0 && timecode_.useFileIo == Method::kMemoryMapping) return kContinuityNoMapping;
    const std::int32_t read = ReadWords();
    if (read != kSuccess) return read;
    counts_.reset(new (std::nothrow) std::uint32_t[timecode_.frameCount]);
    if (counts_ == nullptr) return kContinuityNoCounts;
    timecode_.timecodeFrames = counts_.get();
    const WordReading& reading = BestReading();
    const bool listed = ListBreaks(reading);
    if (file_.StopAsked()) return kCancelled;
    if (!listed) return kContinuityNoCounts;
    return timecode_.errorCount > 0 ? static_cast<std::int32_t>(kContinuityBreaks) : kSuccess;
  }

 private:
  std::uint64_t WordPlace(std::uint32_t entry) const {
    return (*mxf_.indexEntries)[entry].fileOffset + kWordOffset;
  }

  std::int32_t ReadWords() {
    file_.ExpectScattered();
    for (std::uint32_t i = 0; i < timecode_.frameCount; ++i) {
      if (timecode_.stopRequest == 1) return kCancelled;
      ReadWord(i);
      if (file_.Trouble() == platform::ReadTrouble::kFailed) return kContinuityUnreadable;
      timecode_.progressFrame = i;
    }
    return file_.Trouble() == platform::ReadTrouble::kNone ? kSuccess : kCancelled;
  }

  // Reads the word of the frame `i`. A word behind the end of the file becomes kNoWord. The first
  // read that has to wait for the medium shows that the clip is not in memory; from then on the
  // words are prefetched.
  void ReadWord(std::uint32_t i) {
    const std::uint64_t place = WordPlace(i);
    std::array<std::uint8_t, kWordBytes> bytes;
    if (cold_) Ask(i);
    bool held = !cold_ && file_.ReadCachedAt(place, bytes.data(), bytes.size());
    if (!held) {
      held = file_.ReadAt(place, bytes.data(), bytes.size()) == bytes.size();
      cold_ = true;
    }
    words_[i] = held ? WordAt(bytes.data()) : kNoWord;
  }

  // Prefetches the words of the coming frames, without the bytes between the words.
  void Ask(std::uint32_t i) {
    const auto reach = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(timecode_.frameCount, std::uint64_t{i} + kWordsAhead));
    for (asked_ = std::max(asked_, i); asked_ < reach; ++asked_)
      file_.Prefetch(WordPlace(asked_), kWordBytes);
  }

  // Compares all counts. Calls `visit` with the numbers of the two frames of each comparison and
  // with the kind of the break, 0 for none. False when `visit` returns false or a stop is asked
  // for.
  template <typename Visit>
  bool CompareAll(const WordReading& reading, Visit visit) const {
    for (std::uint64_t i = 0; i + reading.step < timecode_.frameCount; i += reading.step) {
      if (LooksAt(i) && file_.StopAsked()) return false;
      const auto previous = static_cast<std::uint32_t>(i);
      const std::uint32_t next = previous + reading.step;
      if (!visit(previous, next, KindOfBreak(counts_[previous], counts_[next], reading.scale))) {
        return false;
      }
    }
    return true;
  }

  // Fills `counts_` from the words.
  void Count(const WordReading& reading) {
    for (std::uint32_t i = 0; i < timecode_.frameCount; ++i) {
      if (LooksAt(i) && file_.StopAsked()) return;
      counts_[i] = CountOf(words_[i], timecode_, reading);
    }
  }

  // True when it is time to check for a stop request, or for memory.
  static bool LooksAt(std::uint64_t i) { return i % kFramesPerCheck == 0; }

  // True when all words are timecodes, each count follows the count before, and each count stands
  // in exactly two frames. The first and the last count may stand in one frame.
  bool StandInPairs(const WordReading& reading) const {
    std::uint32_t run = 1;
    bool first = true;
    const auto isTimecode = [](std::uint32_t count) {
      return static_cast<std::int32_t>(count) >= 0;
    };
    if (!std::all_of(counts_.get(), counts_.get() + timecode_.frameCount, isTimecode)) return false;
    for (std::uint32_t i = 1; i < timecode_.frameCount; ++i) {
      if (counts_[i] == counts_[i - 1]) {
        if (++run > 2) return false;
        continue;
      }
      if (KindOfBreak(counts_[i - 1], counts_[i], reading.scale) != 0) return false;
      if (run != 2 && !first) return false;
      first = false;
      run = 1;
    }
    return true;
  }

  // True when at least one word has the flag `mark`, or `mark` is 0. In a clip without marks, a
  // reading with a mark would take a timecode that stands still for the timecode of two frames.
  bool HasMark(std::uint32_t mark) const {
    const std::uint32_t* words = words_.get();
    return mark == 0 ||
           std::any_of(words, words + timecode_.frameCount, [mark](std::uint32_t word) {
             return word != kNoWord && (word & mark) != 0;
           });
  }

  // Finds the reading with the fewest breaks and fills `counts_` with its counts.
  const WordReading& BestReading() {
    const std::span<const WordReading> readings = kReadings[timecode_.fpsIndex];
    const WordReading* best = nullptr;
    std::uint32_t fewest = 0;
    for (const WordReading& reading : readings) {
      if (!HasMark(reading.mark)) continue;
      Count(reading);
      if (reading.onlyPairs && !StandInPairs(reading)) continue;
      std::uint32_t breaks = 0;
      CompareAll(reading, [&](std::uint32_t, std::uint32_t, std::uint32_t kind) {
        breaks += kind != 0;
        return true;
      });
      if (best != nullptr && breaks >= fewest) continue;
      best = &reading;
      fewest = breaks;
    }
    if (readings.size() > 1) Count(*best);
    return *best;
  }

  // Appends all breaks to the list. False when memory is out or a stop is asked for.
  bool ListBreaks(const WordReading& reading) {
    TIMECODE_ERROR_INFO* last = timecode_.errorList;
    return CompareAll(reading, [&](std::uint32_t previous, std::uint32_t next, std::uint32_t kind) {
      if (kind == 0) return true;
      if (LooksAt(timecode_.errorCount) && !platform::FitsMemory(kBytesForNodes)) return false;
      auto* node = new (std::nothrow) TIMECODE_ERROR_INFO{
          Written(previous, reading), Written(next, reading), kind, previous, last, nullptr};
      if (node == nullptr) return false;
      last->next = node;
      last = node;
      ++timecode_.errorCount;
      return true;
    });
  }

  // The count of the word of the frame `frame`, not shifted by an hour.
  std::uint32_t Written(std::uint32_t frame, const WordReading& reading) const {
    return static_cast<std::uint32_t>(WrittenCount(words_[frame], timecode_, reading));
  }

  const platform::File& file_;
  const MXF_BASE_INFO& mxf_;
  MXF_TIMECODE_INFO& timecode_;
  bool cold_ = false;        // a read has had to wait for the medium
  std::uint32_t asked_ = 0;  // first frame whose word is not yet prefetched
  std::unique_ptr<std::uint32_t[]> words_;
  std::unique_ptr<std::uint32_t[]> counts_;
};

}  // namespace

std::int32_t CheckTimecodeContinuity(platform::File* file, MXF_BASE_INFO* mxf) {
  if (file == nullptr || !file->IsOpen()) return kContinuityNoFile;
  if (mxf == nullptr) return kContinuityNoBaseInfo;
  if (mxf->timecode == nullptr) return kContinuityNoTimecodeInfo;
  if (mxf->audio == nullptr) return kContinuityNoAudioInfo;
  if (mxf->indexEntries == nullptr || *mxf->indexEntries == nullptr) return kContinuityNoMemory;
  FreeTimecodeErrors(mxf->timecode);
  mxf->timecode->stopRequest = 0;
  // Without a timecode base the words have no counts, so there is nothing to compare. The clip can
  // be displayed, but every job refuses it.
  if (mxf->timecode->fpsIndex >= kTimecodeBases) return kSuccess;
  const std::int32_t result = ContinuityCheck(*file, *mxf).Run();
  if (result == kCancelled) {
    mxf->timecode->stopRequest = 0;
    FreeTimecodeErrors(mxf->timecode);
  }
  return result;
}

void FreeTimecodeErrors(MXF_TIMECODE_INFO* timecode) {
  TIMECODE_ERROR_INFO* node = timecode->errorList->next;
  while (node != nullptr) {
    TIMECODE_ERROR_INFO* next = node->next;
    delete node;
    node = next;
  }
  timecode->errorList->next = nullptr;
  timecode->errorCount = 0;
}

}  // namespace quorvan
