#include "rewrite/write_gates.h"

#include <algorithm>
#include <array>

namespace quorvan {
namespace {

bool Ascends(std::span<const RowPiece> row) {
  const auto overlap = [](const RowPiece& before, const RowPiece& piece) {
    return piece.value.fileOffset() < before.value.end();
  };
  return std::adjacent_find(row.begin(), row.end(), overlap) == row.end();
}

// Number of pieces, from the first of `row` on, that one gathered write can write: up to the next
// piece whose `between` is null.
std::size_t RunLength(std::span<const RowPiece> row) {
  std::size_t length = 1;
  while (length < row.size() && row[length].between != nullptr)
    ++length;
  return length;
}

platform::WriteResult WriteRun(platform::File* clip, std::span<const RowPiece> run) {
  std::array<std::span<const std::uint8_t>, 2 * kMaxTracks> parts;
  std::size_t count = 0;
  for (std::size_t i = 0; i < run.size(); ++i) {
    const ElementValue& value = run[i].value;
    if (i > 0) {
      const std::uint64_t gap = value.fileOffset() - run[i - 1].value.end();
      parts[count++] = {run[i].between, static_cast<std::size_t>(gap)};
    }
    parts[count++] = {run[i].samples, value.bytes()};
  }
  return clip->WriteGathered(run[0].value.fileOffset(), std::span(parts).first(count));
}

}  // namespace

GateResult WriteRow(platform::File* clip, std::span<const RowPiece> row) {
  if (row.size() > kMaxTracks || !Ascends(row)) return GateResult::kRefused;
  while (!row.empty()) {
    const std::size_t length = RunLength(row);
    switch (WriteRun(clip, row.first(length))) {
      case platform::WriteResult::kDone:
        break;
      case platform::WriteResult::kFailed:
        return GateResult::kClipFault;
      case platform::WriteResult::kSourceFault:
        return GateResult::kSampleFault;
    }
    row = row.subspan(length);
  }
  return GateResult::kDone;
}

bool WriteMetadata(platform::File* clip, const MetadataPlace& place,
                   std::span<const std::uint8_t> bytes) {
  return bytes.size() == place.bytes() &&
         clip->WriteAt(place.fileOffset(), bytes.data(), bytes.size());
}

}  // namespace quorvan
