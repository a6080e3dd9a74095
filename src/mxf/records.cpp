#include "mxf/records.h"

#include "mxf/sample_pattern.h"

#include <algorithm>

#include "mxf/essence/continuity.h"

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

namespace {

void ForgetTimecode(MXF_TIMECODE_INFO* timecode) {
  timecode->dropFrame = 0;
  timecode->startFrames = timecode->startShifted = 0;
  timecode->lastFrames = timecode->lastShifted = 0;
  timecode->duration = 0;
  timecode->fpsIndex = kUnknownFpsIndex;
  timecode->roundedBase = 0;
  timecode->editRateNumerator = timecode->editRateDenominator = 0;
  timecode->rateIndex = kUnknownRateIndex;
  timecode->frameCount = 0;
  timecode->startHour23 = 0;
  timecode->maxIndexDuration = 0;
  timecode->rangeKnown = 0;
}

}  // namespace

void ForgetMxf(MXF_BASE_INFO* mxf) {
  UnloadMxf(mxf);
  ForgetTimecode(mxf->timecode);
  mxf->fileSize = 0;
  mxf->materialUmid = {};
  mxf->sourceUmid = {};
  mxf->materialUmidSize = 0;
  mxf->sourceUmidSize = 0;
  mxf->materialPackageSet = {};
  mxf->sourcePackageSet = {};
}

void UnloadMxf(MXF_BASE_INFO* mxf) {
  mxf->partitionTable->reset();
  mxf->indexEntries->reset();
  *mxf->audio = {};
  *mxf->video = {};
  mxf->hasAncillaryData = 0;
  mxf->ancillaryElementSize = 0;
  mxf->indexContradicted = 0;
  mxf->versionMajor = 0;
  mxf->versionMinor = 0;
  mxf->companyName[0] = 0;
  mxf->productName[0] = 0;
  mxf->productVersion[0] = 0;
  mxf->platform[0] = 0;
  mxf->creationDateText[0] = 0;
  mxf->modifiedDateText[0] = 0;
}

std::size_t CountedSlot(const MXF_TIMECODE_INFO& timecode) {
  return timecode.startHour23 == 1 ? 1 : 0;
}

std::uint32_t WorkingStart(const MXF_TIMECODE_INFO& timecode) {
  return CountedSlot(timecode) == 0 ? timecode.startFrames : timecode.startShifted;
}

std::uint32_t WorkingLast(const MXF_TIMECODE_INFO& timecode) {
  return CountedSlot(timecode) == 0 ? timecode.lastFrames : timecode.lastShifted;
}

bool HasRange(const MXF_TIMECODE_INFO& timecode) {
  return timecode.rangeKnown == 1;
}

bool HasKnownRate(const MXF_TIMECODE_INFO& timecode) {
  return timecode.rateIndex < kRateCount;
}

bool HasSampleFormat(const MXF_AUDIO_INFO& audio) {
  return audio.sampleRate != 0 && audio.quantizationBits != 0;
}

bool HasOtherPattern(const MXF_AUDIO_INFO& audio) {
  return audio.patternStart != 0 && audio.patternStart != kUnknownPatternStart;
}

std::uint32_t UsableTracks(const MXF_AUDIO_INFO& audio) {
  return std::min<std::uint32_t>(audio.trackCount, kMaxTracks);
}

}  // namespace quorvan
