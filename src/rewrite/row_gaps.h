// The bytes between the values of a row, as the proof has found them. Nearly all rows of a clip
// have the same ones, since keys, lengths and fill repeat from frame to frame: each kind is kept
// once.

#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "mxf/audio_element.h"
#include "mxf/row_reader.h"

namespace quorvan {

class RowGaps {
 public:
  // Takes memory for `frames` frames. False when there is none.
  bool Allocate(std::uint32_t frames);

  // Keeps what lies between the values of neighbouring tracks, all ascending, in the row that
  // `reader` has read last: that of the `frame`-th frame. False when the storage behind it fails.
  bool Keep(std::uint32_t frame, std::span<const std::uint32_t> tracks,
            std::span<const ElementValue> values, const RowReader& reader);

  // These gaps of the `frame`-th frame one behind the other, null when they are not kept.
  const std::uint8_t* Of(std::uint32_t frame) const;

 private:
  using Kind = std::vector<std::uint8_t>;

  std::vector<Kind> kinds_;
  std::unique_ptr<std::uint8_t[]> kindOfFrame_;  // place in kinds_, kNoKind for none
  std::size_t lastKind_ = 0;
  Kind gaps_;  // of the row that is being looked at
};

}  // namespace quorvan
