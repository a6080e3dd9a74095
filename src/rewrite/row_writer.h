// Proves the rows that a rewrite is going to overwrite, and overwrites them. A row is the audio
// elements of one frame in file order.

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

// The gaps of each row: the bytes between the values of neighbouring tracks, as the proof has found
// them in the clip. With the gaps, a row can be written in one go. Nearly all rows of a clip have
// the same gaps, because keys, lengths and fill repeat from frame to frame. Equal gaps are
// therefore kept only once, as one kind.
class RowGaps {
 public:
  // Takes memory for `frames` frames. Returns false, or throws std::bad_alloc, when memory is out.
  bool Allocate(std::uint32_t frames);

  // Keeps the gaps of the row that `reader` has read last, as the gaps of frame `frame` (zero-based
  // in the plan). `tracks` are zero-based and ascending; `values` has the value of each track in
  // the row. Keeps nothing, and returns true, when the values do not ascend, when a gap is not in
  // the row that was read, when the gaps of the row together are longer than 64 KiB, or when the
  // gaps differ from all kinds and there are 64 kinds already.
  // Returns false when the storage behind the reader's view fails. Throws std::bad_alloc.
  bool Keep(std::uint32_t frame, std::span<const std::uint32_t> tracks,
            std::span<const ElementValue> values, const RowReader& reader);

  // The gaps of frame `frame` (zero-based in the plan), one behind the other in the order of the
  // tracks; null when none were kept.
  const std::uint8_t* Of(std::uint32_t frame) const;

 private:
  using Kind = std::vector<std::uint8_t>;

  std::vector<Kind> kinds_;
  std::unique_ptr<std::uint8_t[]> kindOfFrame_;  // index in kinds_; kNoKind when none was kept
  std::size_t lastKind_ = 0;
  Kind gaps_;  // of the row that Keep is looking at
};

// Proves and writes the rows of one rewrite. The frames of the plan are counted from 0.
class RowWriter {
 public:
  // `plan`, `mxf` and `*clip` must outlive the writer.
  RowWriter(const RewrapPlan& plan, const MXF_BASE_INFO& mxf, platform::File* clip)
      : plan_(plan),
        mxf_(mxf),
        clip_(*clip),
        reader_(*clip, mxf, plan.Tracks(), plan.range.firstEntry, plan.range.total) {}

  // Takes memory for the rows and their gaps. The clip must be open and the index must hold every
  // frame of the plan. Returns false, or throws std::bad_alloc, when memory is out.
  bool Allocate();

  // Makes Prove read the frames through `view`, which must cover the whole clip and outlive the
  // writer.
  void ProveThrough(const platform::MappedView* view) { reader_.ReadThrough(view); }

  // Proves the values of all tracks of the plan in frame `i`, as RowReader::Read does. Call it for
  // frame after frame, from 0 on. Throws std::bad_alloc.
  ElementState Prove(std::uint32_t i);

  // Ends the proof. The prefetch starts again at the first frame of the plan, for Write.
  void StartWriting() { reader_.Rewind(plan_.range.firstEntry); }

  // Writes the row of frame `i`, which Prove has proven. `samples` has one pointer for each track
  // of the plan, in the order of the tracks, to as many bytes as the track's value holds. Returns
  // the result of WriteRow; kRefused, with nothing written, also when the number of pointers
  // differs or the index has no value for a track. Throws nothing.
  GateResult Write(std::uint32_t i, std::span<const std::uint8_t* const> samples);

 private:
  std::uint32_t EntryIndex(std::uint32_t i) const { return plan_.range.firstEntry + i; }
  bool LocateValues(std::uint32_t i);

  const RewrapPlan& plan_;
  const MXF_BASE_INFO& mxf_;
  platform::File& clip_;
  RowReader reader_;
  RowGaps gaps_;
  std::vector<ElementValue> values_;  // of the frame that LocateValues was called for last
  std::vector<RowPiece> row_;
};

}  // namespace quorvan
