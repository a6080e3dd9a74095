#include "bench/sparse_clip.h"

#include <algorithm>
#include <utility>

#include "platform/file.h"
#include "platform/text.h"
#include "support/clip_builder.h"
#include "support/clip_parts.h"

namespace quorvan::bench {
namespace {

using test::Big32;
using test::Big64;
using test::Bytes;
using test::operator+;

constexpr test::Rate kRate = test::Rate::k59_94;
constexpr std::uint32_t kPartitionFrames = 4000;
constexpr std::uint32_t kPictureBytes = 104000;
constexpr std::size_t kDeltaBytes = 6;
constexpr std::size_t kEntryBytes = 15;

test::ClipSpec SpecOfOneFrame() {
  test::ClipSpec spec;
  spec.rate = kRate;
  spec.dropFrame = true;
  spec.frames = 1;
  spec.tracks = kSparseTracks;
  spec.pictureSize = kPictureBytes;
  spec.indexPlacement = test::IndexPlacement::kOwnPartition;
  return spec;
}

// Builds a clip of one frame and writes its pieces again and again, with the counts and offsets of
// the long clip.
class SparseWriter {
 public:
  SparseWriter(platform::File file, std::uint32_t frames)
      : spec_(SpecOfOneFrame()),
        model_(test::BuildClip(spec_)),
        frame_(model_.layout.frames[0]),
        file_(std::move(file)),
        frames_(frames) {}

  bool Write() {
    WriteHeader();
    for (std::uint32_t first = 0; first < frames_; first += kPartitionFrames)
      WriteBody(first, std::min(kPartitionFrames, frames_ - first));
    const test::PartitionPlace& footer = model_.layout.partitions.back();
    WritePack(footer, footer.essenceOffset - footer.offset, {});
    SetFooterPlace();
    WriteRandomIndex();
    return valid_;
  }

 private:
  struct Partition {
    std::uint64_t offset;
    std::uint32_t bodySid;
  };

  void Put(std::uint64_t offset, const Bytes& bytes) {
    valid_ = valid_ && file_.WriteAt(offset, bytes.data(), bytes.size());
  }

  Bytes Piece(std::uint64_t offset, std::uint64_t size) const {
    const auto start = model_.bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return Bytes(start, start + static_cast<std::ptrdiff_t>(size));
  }

  // Writes the header partition, with the durations of the long clip.
  void WriteHeader() {
    for (const test::SetPlace& set : model_.layout.sets) {
      for (const test::TagPlace& item : set.tags) {
        const bool counts =
            item.tag == test::tag::kDuration || item.tag == test::tag::kContainerDuration;
        if (counts && item.valueBytes == 8) test::Patch(model_.bytes, item.value, Big64(frames_));
      }
    }
    const test::PartitionPlace& header = model_.layout.partitions[0];
    partitions_.push_back({0, header.bodySid});
    end_ = header.essenceOffset;
    Put(0, Piece(0, end_));
  }

  // Writes a partition pack of `size` bytes, copied from the model's partition, and the index
  // table. `index` is empty for a partition without an index table.
  void WritePack(const test::PartitionPlace& model, std::uint64_t size, const Bytes& index) {
    Bytes pack = Piece(model.offset, size);
    test::Patch(pack, test::pack::kThisPartition, Big64(end_));
    test::Patch(pack, test::pack::kPreviousPartition, Big64(partitions_.back().offset));
    test::Patch(pack, test::pack::kIndexByteCount, Big64(index.size()));
    test::Patch(pack, test::pack::kBodyOffset, Big64(model.bodySid == 0 ? 0 : essenceBytes_));
    partitions_.push_back({end_, model.bodySid});
    Put(end_, pack);
    Put(end_ + pack.size(), index);
    end_ += pack.size() + index.size();
  }

  void WriteBody(std::uint32_t first, std::uint32_t count) {
    const test::PartitionPlace& body = model_.layout.partitions[1];
    WritePack(body, body.indexOffset - body.offset, IndexOf(first, count));
    // The bytes from the system element to the start of the picture's value.
    Bytes head = Piece(frame_.offset, frame_.picture.value - frame_.offset);
    const std::uint64_t word = frame_.system.value - frame_.offset + kWordInValue;
    const std::uint32_t start = test::FrameCount(spec_.start, kRate, spec_.dropFrame);
    if (first == 0) Put(end_, Piece(frame_.offset, frame_.bytes));
    for (std::uint32_t i = 0; i < count; ++i, end_ += frame_.bytes) {
      Bytes timecode = Big32(test::TimecodeWord(start + first + i, kRate, spec_.dropFrame));
      std::reverse(timecode.begin(), timecode.end());
      test::Patch(head, word, timecode);
      Put(end_, head);
    }
    essenceBytes_ += std::uint64_t{count} * frame_.bytes;
  }

  Bytes Deltas() const {
    const std::uint64_t slice = frame_.offset + frame_.sliceOffset;
    Bytes items = {0, 0};
    items = std::move(items) + Big32(0) + Bytes{0xFF, 0} +
            Big32(static_cast<std::uint32_t>(frame_.picture.key - frame_.offset));
    for (const test::KlvPlace& element : frame_.audio) {
      items =
          std::move(items) + Bytes{0, 1} + Big32(static_cast<std::uint32_t>(element.key - slice));
    }
    return test::Batch(items.size() / kDeltaBytes, kDeltaBytes, items);
  }

  Bytes Entries(std::uint32_t count) const {
    Bytes items;
    items.reserve(std::size_t{count} * kEntryBytes);
    for (std::uint32_t i = 0; i < count; ++i) {
      items = std::move(items) + Bytes{0, 0, 0x80} +
              Big64(essenceBytes_ + std::uint64_t{i} * frame_.bytes) + Big32(frame_.sliceOffset);
    }
    return test::Batch(count, kEntryBytes, items);
  }

  Bytes IndexOf(std::uint32_t first, std::uint32_t count) const {
    test::MetadataSet set = test::EmptySet(test::SetKind::kIndexTableSegment, 0);
    const test::RateRow& rate = test::RowOf(kRate);
    set.SetTag(test::tag::kIndexEditRate, Big32(rate.numerator) + Big32(rate.denominator));
    set.SetTag(test::tag::kIndexStartPosition, Big64(first));
    set.SetTag(test::tag::kIndexDuration, Big64(count));
    set.SetTag(test::tag::kEditUnitByteCount, Big32(0));
    set.SetTag(test::tag::kIndexSid, Big32(test::kIndexSid));
    set.SetTag(test::tag::kBodySid, Big32(test::kBodySid));
    set.SetTag(test::tag::kSliceCount, {1});
    set.SetTag(test::tag::kPosTableCount, {0});
    set.SetTag(test::tag::kDeltaEntryArray, Deltas());
    set.SetTag(test::tag::kIndexEntryArray, Entries(count));
    Bytes bytes;
    test::KlvWriter klv(bytes);
    klv.Set(set);
    klv.FillTo(test::FilledSize(klv.Position(), spec_.kagSize));
    return bytes;
  }

  void SetFooterPlace() {
    for (const Partition& partition : partitions_)
      Put(partition.offset + test::pack::kFooterPartition, Big64(partitions_.back().offset));
  }

  void WriteRandomIndex() {
    Bytes value;
    for (const Partition& partition : partitions_)
      value = std::move(value) + Big32(partition.bodySid) + Big64(partition.offset);
    test::Label key{};
    std::copy_n(model_.bytes.begin() + static_cast<std::ptrdiff_t>(model_.layout.randomIndex.key),
                key.size(), key.begin());
    Bytes bytes;
    test::KlvWriter klv(bytes);
    klv.Head(key, value.size() + 4);
    klv.Put(value + Big32(static_cast<std::uint32_t>(test::kKlHead + value.size() + 4)));
    Put(end_, bytes);
  }

  // Offset of the timecode word in the system element's value, after the type byte (SMPTE 385).
  static constexpr std::uint64_t kWordInValue = 41;

  test::ClipSpec spec_;
  test::Clip model_;
  test::FramePlace frame_;
  platform::File file_;
  std::uint32_t frames_;
  std::vector<Partition> partitions_;
  std::uint64_t end_ = 0;  // file offset of the next byte to write
  std::uint64_t essenceBytes_ = 0;
  bool valid_ = true;
};

}  // namespace

std::uint32_t SparseFrames(std::uint32_t minutes) {
  return test::FrameCount({minutes / 60, minutes % 60, 0, 0}, kRate, true);
}

bool MakeSparseClip(const std::filesystem::path& path, std::uint32_t minutes) {
  if (std::filesystem::exists(path)) return true;
  const std::filesystem::path growing = path.string() + ".growing";
  std::filesystem::remove(growing);
  platform::File file =
      platform::File::Open(platform::ToUtf16(growing.string()), platform::OpenMode::kCreateNew);
  if (!file.IsOpen() || !SparseWriter(std::move(file), SparseFrames(minutes)).Write()) return false;
  std::filesystem::rename(growing, path);
  return true;
}

}  // namespace quorvan::bench
