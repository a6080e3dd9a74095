#include "mxf/records.h"

#include <algorithm>

#include "mxf/continuity.h"

namespace quorvan {

MxfRecords::MxfRecords() {
  base.partitionTable = &partitionTable;
  base.indexEntries = &indexEntries;
  base.timecode = &timecode;
  base.audio = &audio;
  base.video = &video;
  timecode.errorList = &errorListHead;
}

MxfRecords::~MxfRecords() {
  FreeTimecodeErrors(&timecode);
}

void UnloadMxf(MXF_BASE_INFO* mxf) {
  mxf->partitionTable->reset();
  mxf->indexEntries->reset();
  *mxf->audio = {};
  *mxf->video = {};
  mxf->hasAncillaryData = 0;
  mxf->ancillaryElementSize = 0;
  mxf->versionMajor = 0;
  mxf->versionMinor = 0;
  mxf->companyName[0] = 0;
  mxf->productName[0] = 0;
  mxf->productVersion[0] = 0;
  mxf->platform[0] = 0;
  mxf->creationDateText[0] = 0;
  mxf->modifiedDateText[0] = 0;
}

std::uint32_t WorkingStart(const MXF_TIMECODE_INFO& timecode) {
  return timecode.startHour23 == 1 ? timecode.startShifted : timecode.startFrames;
}

std::uint32_t WorkingLast(const MXF_TIMECODE_INFO& timecode) {
  return timecode.startHour23 == 1 ? timecode.lastShifted : timecode.lastFrames;
}

std::uint32_t UsableTracks(const MXF_AUDIO_INFO& audio) {
  return std::min<std::uint32_t>(audio.trackCount, kMaxTracks);
}

}  // namespace quorvan
