#include "conform/frame_map.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <utility>

#include "mxf/essence/audio_element.h"
#include "mxf/metadata/index_segments.h"
#include "state/wording.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kLongestFrame = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kLongestAudioElement = 1 << 20;
constexpr std::size_t kMostElements = 256;  // in a frame
constexpr std::uint64_t kSlotGrid = 512;    // bytes
constexpr std::size_t kSearchBlockBytes = 1 << 20;

// Byte of an element's key that tells its item, and the items of pictures and of system elements
// (SMPTE ST 379).
constexpr std::size_t kItemByte = 12;
constexpr std::array<std::uint8_t, 3> kPictureItems = {0x05, 0x15, 0x18};
constexpr std::array<std::uint8_t, 2> kSystemItems = {0x04, 0x14};

bool IsOfItem(const KlvKey& key, std::span<const std::uint8_t> items) {
  return IsContainerElement(key.data()) &&
         std::find(items.begin(), items.end(), key[kItemByte]) != items.end();
}

bool IsPicture(const KlvKey& key) {
  return IsOfItem(key, kPictureItems);
}

bool IsSystem(const KlvKey& key) {
  return IsOfItem(key, kSystemItems);
}

bool IsAudio(const KlvKey& key) {
  return KindOfElement(key.data()) != kNoAudioElement;
}

bool IsFill(const KlvKey& key) {
  return KeyMatches(key.data(), keys::kFill);
}

// True when two keys differ at most in the version of the registry.
bool SameElement(KlvKey a, const KlvKey& b) {
  a[kPackVersionByte] = b[kPackVersionByte];
  return a == b;
}

// True when the readers need a length field of four bytes in the element.
bool NeedsFourByteLength(const KlvKey& key, bool opensFrame) {
  return IsAudio(key) || (opensFrame && !IsPicture(key));
}

std::uint32_t SlotFor(std::uint64_t valueBytes) {
  return static_cast<std::uint32_t>(
      RoundedWithFill(WrittenHeaderBytes(valueBytes) + valueBytes, kSlotGrid));
}

class FrameReader {
 public:
  FrameReader(const platform::File& file, const SourceClip& clip, PictureCoding coding,
              FrameMap* map, Reason* reason)
      : file_(file),
        window_(file, HeaderWindow::kBlockBytes),
        clip_(clip),
        coding_(coding),
        map_(*map),
        reason_(*reason) {}

  bool Read() {
    for (std::uint32_t i = 0; i < clip_.partitions.size(); ++i) {
      const SourcePartition& partition = clip_.partitions[i];
      if (partition.essenceStart < partition.end && !ReadPartition(i)) return false;
    }
    if (map_.bodySid == 0) map_.bodySid = 1;  // 0 would say that there is no essence
    if (map_.frames.empty()) {
      return Refuse({"完全なフレームがありません。", "the clip holds no whole frame"});
    }
    return EndsWhereItWasCutOff();
  }

 private:
  bool Refuse(Reason reason) {
    reason_ = std::move(reason);
    return false;
  }

  // Walks over one partition, when it holds frames of the same body as the partitions before.
  bool ReadPartition(std::uint32_t number) {
    const SourcePartition& partition = clip_.partitions[number];
    const std::uint32_t bodySid = partition.pack.U32(pack_field::kBodySid);
    if (!map_.frames.empty() && bodySid != map_.bodySid) {
      return HoldsNoFrames(partition.essenceStart, partition.end);
    }
    elements_.clear();
    frameEnd_ = partition.essenceStart;
    for (KlvSpan klv; frameEnd_ < partition.end; frameEnd_ = klv.End()) {
      if (!ReadKlvSpan(&window_, frameEnd_, partition.end, &klv)) {
        if (file_.Trouble() != platform::ReadTrouble::kNone) {
          return Refuse({"読込み中にエラーが発生しました。", "a read has failed"});
        }
        if (!LeaveOut(frameEnd_, partition.end)) return false;
        break;
      }
      if (IsFill(klv.key)) continue;
      if (elements_.empty() && !hasOpener_) {
        if (!IsContainerElement(klv.key.data())) {  // no frames, but another stream
          skipped_.push_back(bodySid);
          return HoldsNoFrames(frameEnd_, partition.end);
        }
        if (std::find(skipped_.begin(), skipped_.end(), bodySid) != skipped_.end()) {
          return Refuse(WordedInBoth(
              {"{} バイト目の前にフレームがありません。", "no frame in front of byte {}"},
              klv.offset));
        }
        opener_ = klv.key;
        hasOpener_ = true;
        map_.bodySid = bodySid;
      }
      if (!elements_.empty() && SameElement(klv.key, opener_) && !CloseFrame(number, false)) {
        return false;
      }
      if (elements_.size() == kMostElements) {
        return Refuse(WordedInBoth({"{} バイト目のフレームのエレメントが多すぎます。",
                                    "the frame at byte {} holds more elements than a frame has"},
                                   elements_.front().offset));
      }
      elements_.push_back(klv);
    }
    return elements_.empty() || CloseFrame(number, true);
  }

  // True when the KLVs from `offset` to `end` are another stream. The copy has no place for frames
  // behind other data, or with another BodySID than the frames in front of them.
  bool HoldsNoFrames(std::uint64_t offset, std::uint64_t end) {
    KlvSpan klv;
    for (; ReadKlvSpan(&window_, offset, end, &klv); offset = klv.End()) {
      const bool opens =
          hasOpener_ ? SameElement(klv.key, opener_) : IsContainerElement(klv.key.data());
      if (!opens) continue;
      return Refuse(
          WordedInBoth({"{} バイト目のフレームの前に他のデータがあるか、BodySIDが異なります。",
                        "the frame at byte {} stands behind other data or has another BodySID"},
                       offset));
    }
    return true;
  }

  // True when no frame starts in the bytes behind the last whole KLV of a clip that was cut off.
  // Else a damaged length, and not the end of the clip, ends the walk.
  bool EndsWhereItWasCutOff() {
    std::uint64_t at = clip_.partitions.back().end + 1;
    const std::uint64_t end = clip_.partitions.back().end + clip_.cutBytes;
    std::vector<std::uint8_t> block(kSearchBlockBytes);
    while (at < end && end - at >= opener_.size()) {
      const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), end - at));
      if (file_.ReadAt(at, block.data(), wanted) != wanted) {
        return Refuse({"読込み中にエラーが発生しました。", "a read has failed"});
      }
      const auto last = block.begin() + static_cast<std::ptrdiff_t>(wanted);
      const auto found = std::search(block.begin(), last, opener_.begin(), opener_.end());
      if (found != last) {
        return Refuse(WordedInBoth(
            {"{} バイト目に完全なKLVがありませんが、{} バイト目にフレームがあります。",
             "no whole KLV at byte {}, but a frame at byte {}"},
            clip_.partitions.back().end, at + static_cast<std::uint64_t>(found - block.begin())));
      }
      at += wanted - (opener_.size() - 1);
    }
    return true;
  }

  bool RefuseLostFrame() {
    return Refuse(WordedInBoth(
        {"{} バイト目に完全なフレームがありません。", "no whole frame at byte {}"}, lostStart_));
  }

  // Leaves out the bytes from `offset` to `end`, of which no whole frame can be made. False when
  // bytes were left out before: then they do not stand at the end of the essence.
  bool LeaveOut(std::uint64_t offset, std::uint64_t end) {
    if (map_.lostBytes != 0 && offset != lostEnd_) {
      return RefuseLostFrame();
    }
    if (map_.lostBytes == 0) lostStart_ = offset;
    lostEnd_ = end;
    map_.lostBytes = lostEnd_ - lostStart_;
    return true;
  }

  // The frame of `elements_` ends at `frameEnd_`, and so does its partition when `isLast`.
  bool CloseFrame(std::uint32_t partition, bool isLast) {
    const std::vector<KlvSpan> elements = std::exchange(elements_, {});
    if (map_.lostBytes != 0) {
      return RefuseLostFrame();
    }
    const auto first = std::find_if(elements.begin(), elements.end(),
                                    [](const KlvSpan& klv) { return IsAudio(klv.key); });
    const auto behind =
        std::find_if(first, elements.end(), [](const KlvSpan& klv) { return !IsAudio(klv.key); });
    const auto count = static_cast<std::size_t>(behind - first);
    const std::uint64_t start = elements.front().offset;
    const bool isFirst = map_.frames.empty();
    // A system element opens its frame: behind other elements it belongs to the next frame.
    if (!IsSystem(opener_) && std::any_of(elements.begin(), elements.end(),
                                          [](const KlvSpan& klv) { return IsSystem(klv.key); })) {
      return Refuse(WordedInBoth({"{} バイト目のフレームがシステムエレメントから始まっていません。",
                                  "the frame at byte {} does not start with its system element"},
                                 start));
    }
    if (isFirst && count == 0) {
      return Refuse(WordedInBoth({"{} バイト目のフレームにオーディオエレメントがありません。",
                                  "the frame at byte {} holds no audio element"},
                                 start));
    }
    // Where the clip was cut off, another frame has to show how many elements a frame holds.
    const bool mayBeCut = isLast && partition + 1 == clip_.partitions.size() &&
                          (clip_.cutBytes != 0 || !clip_.HasFooter());
    const bool isWhole =
        SameElement(elements.front().key, opener_) &&
        (isFirst ? !mayBeCut
                 : count == map_.deltas.size() && (!mayBeCut || elements.size() == map_.elements));
    if (!isWhole) return LeaveOut(start, frameEnd_);
    if (std::any_of(behind, elements.end(), [](const KlvSpan& klv) { return IsAudio(klv.key); })) {
      return Refuse(
          WordedInBoth({"{} バイト目のフレームのオーディオの間に、他のエレメントがあります。",
                        "other elements stand between the audio of the frame at byte {}"},
                       start));
    }
    if (frameEnd_ - start > kLongestFrame || map_.frames.size() == kMostFrames) {
      return Refuse(WordedInBoth({"{} バイト目のフレームが長すぎます。",
                                  "the frame at byte {} is longer than a frame can be"},
                                 start));
    }
    // The readers take any other KLV for the end of the partition's essence.
    if (!std::all_of(elements.begin(), isLast ? behind : elements.end(),
                     [](const KlvSpan& klv) { return IsContainerElement(klv.key.data()); })) {
      return Refuse(WordedInBoth({"{} バイト目のフレームにエレメントではないKLVがあります。",
                                  "the frame at byte {} holds a KLV that is no element"},
                                 start));
    }
    if (isFirst) Begin(elements, {first, behind}, behind);
    return Take(partition, elements, {first, behind}, behind);
  }

  using Elements = std::span<const KlvSpan>;
  using Place = std::vector<KlvSpan>::const_iterator;

  void Begin(const std::vector<KlvSpan>& elements, Elements audio, Place behind) {
    map_.elements = static_cast<std::uint32_t>(elements.size());
    map_.slots.resize(audio.size());
    kind_ = KindOfElement(audio[0].key.data());
    for (const KlvSpan& element : audio)
      map_.deltas.push_back(static_cast<std::uint32_t>(element.offset - audio[0].offset));
    const auto picture = std::find_if(elements.begin(), elements.end(),
                                      [](const KlvSpan& klv) { return IsPicture(klv.key); });
    if (picture != elements.end()) {
      map_.pictureOffset = static_cast<std::uint32_t>(picture->offset - elements.front().offset);
    }
    if (behind != elements.end()) {
      map_.dataDelta = static_cast<std::uint32_t>(behind->offset - audio[0].offset);
    }
  }

  bool Take(std::uint32_t partition, const std::vector<KlvSpan>& elements, Elements audio,
            Place behind) {
    const std::uint64_t start = elements.front().offset;
    for (std::size_t t = 0; t < audio.size(); ++t) {
      if (audio[t].length > kLongestAudioElement) {
        return Refuse(WordedInBoth({"{} バイト目のオーディオエレメントが長すぎます。",
                                    "the audio element at byte {} is too long"},
                                   audio[t].offset));
      }
      if (KindOfElement(audio[t].key.data()) != kind_) {
        return Refuse(WordedInBoth({"{} バイト目のオーディオエレメントの種類が異なります。",
                                    "the audio element at byte {} is of another kind"},
                                   audio[t].offset));
      }
      map_.slots[t] = std::max(map_.slots[t], SlotFor(audio[t].length));
      if (audio[t].offset - audio[0].offset != map_.deltas[t]) map_.isRegular = false;
    }
    std::uint64_t shorter = 0;  // by which a length field of four bytes shortens the frame's start
    for (const KlvSpan& element : elements) {
      const bool opensFrame = &element == &elements.front();
      if (!NeedsFourByteLength(element.key, opensFrame)) continue;
      if (element.valueOffset - element.offset != kElementHeaderBytes) map_.isRegular = false;
      if (opensFrame && !IsAudio(element.key)) {
        shorter = element.valueOffset - element.offset - WrittenHeaderBytes(element.length);
      }
    }
    const bool hasData =
        behind != elements.end() && KeyMatches(behind->key.data(), keys::kAncillaryElement);
    map_.hasDataElement = map_.hasDataElement && hasData;
    map_.dataDeltaHolds =
        map_.dataDeltaHolds && hasData && behind->offset - audio[0].offset == map_.dataDelta;
    const std::uint64_t slice = audio[0].offset - start;
    map_.frames.push_back(
        {.offset = start,
         .bytes = static_cast<std::uint32_t>(frameEnd_ - start),
         .partition = partition,
         .sliceOffset = static_cast<std::uint32_t>(slice),
         .laidSlice = static_cast<std::uint32_t>(slice - shorter),
         .behindAudio = behind == elements.end()
                            ? 0
                            : static_cast<std::uint32_t>(frameEnd_ - behind->offset)});
    map_.pictures.push_back(FactsOf(elements));
    return true;
  }

  PictureFacts FactsOf(const std::vector<KlvSpan>& elements) const {
    const auto picture = std::find_if(elements.begin(), elements.end(),
                                      [](const KlvSpan& klv) { return IsPicture(klv.key); });
    if (coding_ == PictureCoding::kOther || picture == elements.end()) return {};
    std::array<std::uint8_t, kPictureHeadBytes> head;
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(head.size(), picture->length));
    const std::size_t held = file_.ReadAt(picture->valueOffset, head.data(), wanted);
    return ReadPictureFacts(coding_, std::span(head).first(held));
  }

  const platform::File& file_;
  HeaderWindow window_;
  const SourceClip& clip_;
  const PictureCoding coding_;
  FrameMap& map_;
  Reason& reason_;
  std::vector<std::uint32_t> skipped_;  // BodySIDs of the partitions that hold no frames
  bool hasOpener_ = false;
  KlvKey opener_{};
  AudioElementKind kind_ = kNoAudioElement;  // of the first frame's audio
  std::vector<KlvSpan> elements_;            // of the frame that is being read, without fill
  std::uint64_t frameEnd_ = 0;               // file offset up to which the frame has been read
  std::uint64_t lostStart_ = 0;              // the bytes that were left out: file offsets
  std::uint64_t lostEnd_ = 0;
};

}  // namespace

bool ReadFrames(const platform::File& file, const SourceClip& clip, PictureCoding coding,
                FrameMap* map, Reason* reason) {
  return FrameReader(file, clip, coding, map, reason).Read();
}

bool LayFrame(const FrameMap& map, std::span<const std::uint8_t> source,
              std::vector<std::uint8_t>* out) {
  std::size_t audio = 0;
  bool dropsFill = false;  // the last element was audio, whose fill is written anew
  for (std::size_t at = 0; at < source.size();) {
    const auto rest = source.subspan(at);
    std::uint64_t length = 0;
    const std::size_t header = ReadKlvHeader(rest, &length);
    if (header == 0 || length > rest.size() - header) return false;
    const auto whole = rest.first(header + static_cast<std::size_t>(length));
    KlvKey key;
    std::copy_n(rest.begin(), key.size(), key.begin());
    if (IsFill(key) && dropsFill) {
      at += whole.size();
      continue;
    }
    dropsFill = IsAudio(key);
    const std::size_t start = out->size();
    if (NeedsFourByteLength(key, at == 0)) {
      AppendKlvHeader(key, length, out);
      out->insert(out->end(), whole.begin() + static_cast<std::ptrdiff_t>(header), whole.end());
    } else {
      out->insert(out->end(), whole.begin(), whole.end());
    }
    if (dropsFill) {
      if (audio == map.slots.size()) return false;
      AppendFill(map.slots[audio++] - (out->size() - start), out);
    }
    at += whole.size();
  }
  return audio == map.slots.size();
}

std::uint64_t LaidBytes(const FrameMap& map, const SourceFrame& frame) {
  const std::uint64_t audio = std::accumulate(map.slots.begin(), map.slots.end(), std::uint64_t{0});
  return frame.laidSlice + audio + frame.behindAudio;
}

}  // namespace quorvan
