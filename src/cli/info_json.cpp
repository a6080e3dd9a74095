#include <nlohmann/json.hpp>

#include <algorithm>
#include <span>

#include "cli/info_views.h"
#include "platform/text.h"

namespace quorvan::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string Hex(std::span<const std::uint8_t> bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 0x0F]);
  }
  return text;
}

Json BaseInfo(const MXF_BASE_INFO& mxf) {
  using platform::ToUtf8;
  return {{"fileSize", mxf.fileSize},
          {"creationDateText", ToUtf8(mxf.creationDateText)},
          {"modifiedDateText", ToUtf8(mxf.modifiedDateText)},
          {"versionMajor", mxf.versionMajor},
          {"versionMinor", mxf.versionMinor},
          {"companyName", ToUtf8(mxf.companyName)},
          {"productName", ToUtf8(mxf.productName)},
          {"productVersion", ToUtf8(mxf.productVersion)},
          {"platform", ToUtf8(mxf.platform)},
          {"materialUmid", Hex(mxf.materialUmid)},
          {"sourceUmid", Hex(mxf.sourceUmid)},
          {"materialUmidSize", mxf.materialUmidSize},
          {"sourceUmidSize", mxf.sourceUmidSize},
          {"hasAncillaryData", mxf.hasAncillaryData},
          {"ancillaryElementSize", mxf.ancillaryElementSize},
          {"processCode", mxf.processCode.load()}};
}

std::uint32_t PartitionCount(const MXF_BASE_INFO& mxf) {
  return *mxf.partitionTable == nullptr ? 0 : (*mxf.partitionTable)[0].partitionCount;
}

Json PartitionInfo(const MXF_BASE_INFO& mxf) {
  Json table = Json::array();
  for (std::uint32_t i = 0; i < PartitionCount(mxf); ++i) {
    const MXF_PARTITION_INFO& p = (*mxf.partitionTable)[i];
    table.push_back({{"kind", p.kind},
                     {"partitionCount", p.partitionCount},
                     {"packKey", Hex(p.packKey)},
                     {"operationalPattern", Hex(p.operationalPattern)},
                     {"packLength", p.packLength},
                     {"majorVersion", p.majorVersion},
                     {"minorVersion", p.minorVersion},
                     {"kagSize", p.kagSize},
                     {"thisPartition", p.thisPartition},
                     {"headerByteCount", p.headerByteCount},
                     {"indexByteCount", p.indexByteCount},
                     {"indexSid", p.indexSid},
                     {"bodyOffset", p.bodyOffset},
                     {"bodySid", p.bodySid},
                     {"essenceBase", p.essenceBase}});
  }
  return table;
}

Json TimecodeInfo(const MXF_TIMECODE_INFO& t) {
  return {{"dropFrame", t.dropFrame},
          {"startFrames", t.startFrames},
          {"startShifted", t.startShifted},
          {"lastFrames", t.lastFrames},
          {"lastShifted", t.lastShifted},
          {"duration", t.duration},
          {"fpsIndex", t.fpsIndex},
          {"roundedBase", t.roundedBase},
          {"editRateNumerator", t.editRateNumerator},
          {"editRateDenominator", t.editRateDenominator},
          {"rateIndex", t.rateIndex},
          {"frameCount", t.frameCount},
          {"errorCount", t.errorCount},
          {"startHour23", t.startHour23},
          {"maxIndexDuration", t.maxIndexDuration},
          {"progressTotal", t.progressTotal.load()},
          {"progressFrame", t.progressFrame.load()},
          {"stopRequest", t.stopRequest.load()},
          {"useFileIo", t.useFileIo}};
}

Json AudioInfo(const MXF_AUDIO_INFO& a) {
  return {{"trackCount", a.trackCount},
          {"sampleRate", a.sampleRate},
          {"avgBytesPerSecond", a.avgBytesPerSecond},
          {"blockAlign", a.blockAlign},
          {"quantizationBits", a.quantizationBits},
          {"elementSize", a.elementSize},
          {"integratedLoudness", a.integratedLoudness},
          {"truePeak", a.truePeak},
          {"loudnessRange", a.loudnessRange}};
}

Json VideoInfo(const MXF_VIDEO_INFO& v) {
  return {{"codingLabel", Hex(v.codingLabel)},
          {"codecName", platform::ToUtf8(v.codecName)},
          {"codecIndex", v.codecIndex},
          {"height", v.height},
          {"width", v.width},
          {"aspectNumerator", v.aspectNumerator},
          {"aspectDenominator", v.aspectDenominator},
          {"bitRate", v.bitRate},
          {"frameLayout", v.frameLayout}};
}

Json IndexEntries(const MXF_BASE_INFO& mxf) {
  Json entries = Json::array();
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  for (std::uint32_t i = 0; i < mxf.timecode->frameCount; ++i) {
    const INDEX_ENTRY_ARRAY& e = (*mxf.indexEntries)[i];
    Json deltas = Json::array();
    for (std::uint32_t k = 0; k < e.deltaCount; ++k) {
      deltas.push_back({{"posTableIndex", e.delta[k].posTableIndex},
                        {"slice", e.delta[k].slice},
                        {"elementDelta", e.delta[k].elementDelta}});
    }
    entries.push_back({{"partition", e.partition - table},
                       {"segmentStart", e.segmentStart},
                       {"segmentDuration", e.segmentDuration},
                       {"temporalOffset", e.temporalOffset},
                       {"keyFrameOffset", e.keyFrameOffset},
                       {"flags", e.flags},
                       {"fileOffset", e.fileOffset},
                       {"sliceOffset", e.sliceOffset},
                       {"deltaCount", e.deltaCount},
                       {"audioSamples", e.audioSamples},
                       {"delta", std::move(deltas)}});
  }
  return entries;
}

Json TimecodeErrors(const MXF_TIMECODE_INFO& timecode) {
  Json errors = Json::array();
  for (const TIMECODE_ERROR_INFO* e = timecode.errorList->next; e != nullptr; e = e->next) {
    errors.push_back({{"previousTimecode", e->previousTimecode},
                      {"nextTimecode", e->nextTimecode},
                      {"kind", e->kind},
                      {"frameNumber", e->frameNumber}});
  }
  return errors;
}

}  // namespace

std::string InfoJson(const ClipSession& session, bool index) {
  const MXF_BASE_INFO& mxf = session.app.mxf.base;
  Json root;
  root["result"] = session.result;
  root["processCode"] = mxf.processCode.load();
  if (session.result != 0) root["message"] = platform::ToUtf8(session.message);
  root["MXF_BASE_INFO"] = BaseInfo(mxf);
  root["MXF_PARTITION_INFO"] = PartitionInfo(mxf);
  root["MXF_TIMECODE_INFO"] = TimecodeInfo(*mxf.timecode);
  root["MXF_AUDIO_INFO"] = AudioInfo(*mxf.audio);
  root["MXF_VIDEO_INFO"] = VideoInfo(*mxf.video);
  if (session.result == 0) root["notices"] = NoticeLines(mxf);
  if (mxf.timecode->errorCount > 0) root["TIMECODE_ERROR_INFO"] = TimecodeErrors(*mxf.timecode);
  if (index) root["INDEX_ENTRY_ARRAY"] = IndexEntries(mxf);
  // A name that is no UTF-8 shows with replacement characters.
  return root.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace quorvan::cli
