// Proves the rows of audio that a rewrite is going to replace, and replaces them, row by row.

#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "mxf/essence/audio_element.h"
#include "mxf/essence/row_reader.h"
#include "platform/file.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/write_gates.h"

namespace quorvan {

// The gaps of each row: the bytes between the values that are written, as the proof has found them.
// Nearly all rows of a clip have the same gaps, since keys, lengths and fill repeat from frame to
// frame; each kind of gaps is kept once.
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

// Proves and writes the rows of one rewrite.
class RowWriter {
 public:
  // Frames count from the plan's first one, `i` from 0. All of it must outlive the writer.
  RowWriter(const RewrapPlan& plan, const MXF_BASE_INFO& mxf, platform::File* clip)
      : plan_(plan),
        mxf_(mxf),
        clip_(*clip),
        reader_(*clip, mxf, plan.Tracks(), plan.range.firstEntry, plan.range.total) {}

  // Takes its memory. False when there is none. The plan's frames must be in the index, and the
  // clip open.
  bool Allocate();

  // Has the frames proven through `view`, which covers the clip and outlives the writer.
  void ProveThrough(const platform::MappedView* view) { reader_.ReadThrough(view); }

  // Proves every value of the plan in the `i`-th frame. Frames come in their order.
  ElementState Prove(std::uint32_t i);

  // All frames are proven: from here on they are written.
  void StartWriting() { reader_.Rewind(plan_.range.firstEntry); }

  // Writes the `i`-th frame: what goes on each track of the plan, in their order.
  GateResult Write(std::uint32_t i, std::span<const std::uint8_t* const> samples);

 private:
  std::uint32_t EntryIndex(std::uint32_t i) const { return plan_.range.firstEntry + i; }
  bool LocateValues(std::uint32_t i);

  const RewrapPlan& plan_;
  const MXF_BASE_INFO& mxf_;
  platform::File& clip_;
  RowReader reader_;
  RowGaps gaps_;
  std::vector<ElementValue> values_;  // of the frame that is worked on
  std::vector<RowPiece> row_;
};

}  // namespace quorvan
