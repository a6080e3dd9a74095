#include "rewrite/row_writer.h"

namespace quorvan {

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
