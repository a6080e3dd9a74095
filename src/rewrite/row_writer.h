// Proves the rows of audio that a rewrite is going to replace, and replaces them, row by row.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mxf/row_reader.h"
#include "platform/file.h"
#include "rewrite/element_gate.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/row_gaps.h"

namespace quorvan {

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
