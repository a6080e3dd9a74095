#include <span>

#include "cli/info_views.h"
#include "cli/json_writer.h"
#include "platform/text.h"

namespace quorvan::cli {
namespace {

std::string Hex(std::span<const std::uint8_t> bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 0x0F]);
  }
  return text;
}

void BaseInfo(const MXF_BASE_INFO& mxf, JsonWriter* json) {
  using platform::ToUtf8;
  json->Field("fileSize", mxf.fileSize);
  json->Field("creationDateText", ToUtf8(mxf.creationDateText));
  json->Field("modifiedDateText", ToUtf8(mxf.modifiedDateText));
  json->Field("versionMajor", mxf.versionMajor);
  json->Field("versionMinor", mxf.versionMinor);
  json->Field("companyName", ToUtf8(mxf.companyName));
  json->Field("productName", ToUtf8(mxf.productName));
  json->Field("productVersion", ToUtf8(mxf.productVersion));
  json->Field("platform", ToUtf8(mxf.platform));
  json->Field("materialUmid", Hex(mxf.materialUmid));
  json->Field("sourceUmid", Hex(mxf.sourceUmid));
  json->Field("materialUmidSize", mxf.materialUmidSize);
  json->Field("sourceUmidSize", mxf.sourceUmidSize);
  json->Field("hasAncillaryData", mxf.hasAncillaryData);
  json->Field("ancillaryElementSize", mxf.ancillaryElementSize);
  json->Field("processCode", mxf.processCode.load());
}

std::uint32_t PartitionCount(const MXF_BASE_INFO& mxf) {
  return *mxf.partitionTable == nullptr ? 0 : (*mxf.partitionTable)[0].partitionCount;
}

void PartitionInfo(const MXF_BASE_INFO& mxf, JsonWriter* json) {
  for (std::uint32_t i = 0; i < PartitionCount(mxf); ++i) {
    const MXF_PARTITION_INFO& p = (*mxf.partitionTable)[i];
    json->Object({}, [&] {
      json->Field("kind", p.kind);
      json->Field("partitionCount", p.partitionCount);
      json->Field("packKey", Hex(p.packKey));
      json->Field("operationalPattern", Hex(p.operationalPattern));
      json->Field("packLength", p.packLength);
      json->Field("majorVersion", p.majorVersion);
      json->Field("minorVersion", p.minorVersion);
      json->Field("kagSize", p.kagSize);
      json->Field("thisPartition", p.thisPartition);
      json->Field("headerByteCount", p.headerByteCount);
      json->Field("indexByteCount", p.indexByteCount);
      json->Field("indexSid", p.indexSid);
      json->Field("bodyOffset", p.bodyOffset);
      json->Field("bodySid", p.bodySid);
      json->Field("essenceBase", p.essenceBase);
    });
  }
}

void TimecodeInfo(const MXF_TIMECODE_INFO& t, JsonWriter* json) {
  json->Field("dropFrame", t.dropFrame);
  json->Field("startFrames", t.startFrames);
  json->Field("startShifted", t.startShifted);
  json->Field("lastFrames", t.lastFrames);
  json->Field("lastShifted", t.lastShifted);
  json->Field("duration", t.duration);
  json->Field("fpsIndex", t.fpsIndex);
  json->Field("roundedBase", t.roundedBase);
  json->Field("editRateNumerator", t.editRateNumerator);
  json->Field("editRateDenominator", t.editRateDenominator);
  json->Field("rateIndex", t.rateIndex);
  json->Field("frameCount", t.frameCount);
  json->Field("errorCount", t.errorCount);
  json->Field("startHour23", t.startHour23);
  json->Field("maxIndexDuration", t.maxIndexDuration);
  json->Field("progressTotal", t.progressTotal.load());
  json->Field("progressFrame", t.progressFrame.load());
  json->Field("stopRequest", t.stopRequest.load());
  json->Field("useFileIo", static_cast<std::uint32_t>(t.useFileIo));
  json->Field("rangeKnown", t.rangeKnown);
}

void AudioInfo(const MXF_AUDIO_INFO& a, JsonWriter* json) {
  json->Field("trackCount", a.trackCount);
  json->Field("sampleRate", a.sampleRate);
  json->Field("avgBytesPerSecond", a.avgBytesPerSecond);
  json->Field("blockAlign", a.blockAlign);
  json->Field("quantizationBits", a.quantizationBits);
  json->Field("elementSize", a.elementSize);
  json->Field("integratedLoudness", a.integratedLoudness);
  json->Field("truePeak", a.truePeak);
  json->Field("loudnessRange", a.loudnessRange);
  json->Field("indexedElements", a.indexedElements);
  json->Field("patternStart", a.patternStart);
}

void VideoInfo(const MXF_VIDEO_INFO& v, JsonWriter* json) {
  json->Field("codingLabel", Hex(v.codingLabel));
  json->Field("codecName", platform::ToUtf8(v.codecName));
  json->Field("codecIndex", v.codecIndex);
  json->Field("height", v.height);
  json->Field("width", v.width);
  json->Field("aspectNumerator", v.aspectNumerator);
  json->Field("aspectDenominator", v.aspectDenominator);
  json->Field("bitRate", v.bitRate);
  json->Field("frameLayout", v.frameLayout);
}

void Delta(const DELTA_ENTRY& delta, JsonWriter* json) {
  json->Object({}, [&] {
    json->Field("posTableIndex", delta.posTableIndex);
    json->Field("slice", delta.slice);
    json->Field("elementDelta", delta.elementDelta);
  });
}

void IndexEntry(const INDEX_ENTRY_ARRAY& e, const MXF_PARTITION_INFO* table, JsonWriter* json) {
  json->Object({}, [&] {
    json->Field("partition", e.partition - table);
    json->Field("segmentStart", e.segmentStart);
    json->Field("segmentDuration", e.segmentDuration);
    json->Field("temporalOffset", e.temporalOffset);
    json->Field("keyFrameOffset", e.keyFrameOffset);
    json->Field("flags", e.flags);
    json->Field("fileOffset", e.fileOffset);
    json->Field("sliceOffset", e.sliceOffset);
    json->Field("deltaCount", e.deltaCount);
    json->Field("audioSamples", e.audioSamples);
    json->Array("delta", [&] {
      for (std::uint32_t k = 0; k < e.deltaCount; ++k)
        Delta(e.delta[k], json);
    });
  });
}

void TimecodeErrors(const MXF_TIMECODE_INFO& timecode, LongOutput* output, JsonWriter* json) {
  for (const TIMECODE_ERROR_INFO* e = timecode.errorList->next; e != nullptr && output->Send();
       e = e->next) {
    json->Object({}, [&] {
      json->Field("previousTimecode", e->previousTimecode);
      json->Field("nextTimecode", e->nextTimecode);
      json->Field("kind", e->kind);
      json->Field("frameNumber", e->frameNumber);
    });
  }
}

}  // namespace

void WriteInfoJson(const ClipSession& session, bool index, LongOutput* output) {
  const MXF_BASE_INFO& mxf = session.app.mxf.base;
  JsonWriter json(&output->text());
  json.Object({}, [&] {
    json.Field("result", session.result);
    json.Field("processCode", mxf.processCode.load());
    if (session.result != 0) {
      const platform::InBoth<std::string> message = {platform::ToUtf8(session.message.ja),
                                                     platform::ToUtf8(session.message.en)};
      json.Field("message", message.ja);
      json.InBoth("messages", message);
    }
    json.Object("MXF_BASE_INFO", [&] { BaseInfo(mxf, &json); });
    json.Array("MXF_PARTITION_INFO", [&] { PartitionInfo(mxf, &json); });
    json.Object("MXF_TIMECODE_INFO", [&] { TimecodeInfo(*mxf.timecode, &json); });
    json.Object("MXF_AUDIO_INFO", [&] { AudioInfo(*mxf.audio, &json); });
    json.Object("MXF_VIDEO_INFO", [&] { VideoInfo(*mxf.video, &json); });
    if (session.result == 0) {
      json.Array("notices", [&] {
        for (const std::string& line : NoticeLines(platform::Language::kEnglish, mxf))
          json.Item(line);
      });
    }
    if (mxf.timecode->errorCount > 0) {
      json.Array("TIMECODE_ERROR_INFO", [&] { TimecodeErrors(*mxf.timecode, output, &json); });
    }
    if (!index) return;
    json.Array("INDEX_ENTRY_ARRAY", [&] {
      for (std::uint32_t i = 0; i < mxf.timecode->frameCount && output->Send(); ++i)
        IndexEntry((*mxf.indexEntries)[i], mxf.partitionTable->get(), &json);
    });
  });
}

}  // namespace quorvan::cli
