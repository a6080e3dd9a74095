#include "rewrite/row_writer.h"

#include <algorithm>
#include <array>
#include <new>

#include "platform/fault_guard.h"

namespace quorvan {
namespace {

constexpr std::uint8_t kNoKind = 255;
constexpr std::size_t kMostKinds = 64;
constexpr std::size_t kMostGapBytes = 64 * 1024;  // all gaps of one row together

}  // namespace

bool RowGaps::Allocate(std::uint32_t frames) {
  kindOfFrame_.reset(new (std::nothrow) std::uint8_t[std::size_t{frames} + 1]);
  if (kindOfFrame_ == nullptr) return false;
  std::fill_n(kindOfFrame_.get(), frames, kNoKind);
  kinds_.reserve(kMostKinds);
  return true;
}

bool RowGaps::Keep(std::uint32_t frame, std::span<const std::uint32_t> tracks,
                   std::span<const ElementValue> values, const RowReader& reader) {
  std::array<std::span<const std::uint8_t>, kMaxTracks> pieces;
  std::size_t count = 0;
  std::size_t total = 0;
  for (std::size_t i = 1; i < values.size(); ++i) {
    if (tracks[i] != tracks[i - 1] + 1) continue;
    const std::uint64_t start = values[i - 1].end();
    if (values[i].fileOffset() < start) return true;
    const std::uint64_t bytes = values[i].fileOffset() - start;
    const std::uint8_t* gap = reader.At(start, bytes);
    if (gap == nullptr || bytes > kMostGapBytes - total) return true;
    pieces[count++] = {gap, static_cast<std::size_t>(bytes)};
    total += pieces[count - 1].size();
  }
  gaps_.resize(total);
  std::uint8_t* target = gaps_.data();
  auto copy = [&] {
    for (std::size_t i = 0; i < count; ++i)
      target = std::copy(pieces[i].begin(), pieces[i].end(), target);
  };
  if (!platform::RunGuarded(copy).completed) return false;
  if (lastKind_ >= kinds_.size() || kinds_[lastKind_] != gaps_) {
    lastKind_ =
        static_cast<std::size_t>(std::find(kinds_.begin(), kinds_.end(), gaps_) - kinds_.begin());
    if (lastKind_ == kMostKinds) return true;
    if (lastKind_ == kinds_.size()) kinds_.push_back(gaps_);
  }
  kindOfFrame_[frame] = static_cast<std::uint8_t>(lastKind_);
  return true;
}

const std::uint8_t* RowGaps::Of(std::uint32_t frame) const {
  const std::uint8_t kind = kindOfFrame_[frame];
  return kind == kNoKind ? nullptr : kinds_[kind].data();
}

bool RowWriter::Allocate() {
  clip_.ExpectScattered();
  values_.reserve(kMaxTracks);
  row_.reserve(kMaxTracks);
  return reader_.Allocate() && gaps_.Allocate(plan_.range.total);
}

bool RowWriter::LocateValues(std::uint32_t i) {
  values_.clear();
  for (const std::uint32_t track : plan_.Tracks()) {
    const auto value = LocateElementValue(mxf_, (*mxf_.indexEntries)[EntryIndex(i)], track);
    if (!value) return false;
    values_.push_back(*value);
  }
  return true;
}

ElementState RowWriter::Prove(std::uint32_t i) {
  const ElementState state = reader_.Read(EntryIndex(i));
  if (state != ElementState::kProven) return state;
  if (!LocateValues(i)) return ElementState::kMisplaced;
  const bool kept = gaps_.Keep(i, plan_.Tracks(), values_, reader_);
  return kept ? ElementState::kProven : ElementState::kFault;
}

GateResult RowWriter::Write(std::uint32_t i, std::span<const std::uint8_t* const> samples) {
  if (samples.size() != plan_.trackCount || !LocateValues(i)) return GateResult::kRefused;
  reader_.Ask(EntryIndex(i));
  const std::uint8_t* gap = gaps_.Of(i);
  row_.clear();
  for (std::uint32_t n = 0; n < plan_.trackCount; ++n) {
    const bool joins = gap != nullptr && n > 0 && plan_.track[n] == plan_.track[n - 1] + 1;
    row_.push_back({values_[n], samples[n], joins ? gap : nullptr});
    if (joins) gap += values_[n].fileOffset() - values_[n - 1].end();
  }
  return WriteRow(&clip_, row_);
}

}  // namespace quorvan
