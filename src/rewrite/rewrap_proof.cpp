#include "rewrite/rewrap_proof.h"

#include "rewrite/umid.h"

namespace quorvan {

bool IsPlannedClip(const platform::File& clip, const RewrapPlan& plan, const MXF_BASE_INFO& mxf) {
  return clip.Size() == mxf.fileSize && CanBeWritten(plan, mxf) && HoldsUmids(clip, mxf);
}

bool AreElementsOf(const FrameElements& elements, const INDEX_ENTRY_ARRAY& entry,
                   const RewrapPlan& plan, const MXF_BASE_INFO& mxf) {
  for (std::uint32_t s = 0; s < plan.sourceCount; ++s) {
    const TrackSource& source = plan.sources[s];
    for (std::uint32_t c = 0; c < source.trackCount; ++c) {
      const std::uint32_t track = source.firstTrack + c;
      const auto value = LocateElementValue(mxf, entry, track);
      if (!value || track >= elements.count ||
          !IsElementOf(elements.element[track], *value, *mxf.audio)) {
        return false;
      }
    }
  }
  return true;
}

std::uint64_t FrameEnd(const MXF_BASE_INFO& mxf, std::uint32_t entryIndex) {
  const bool isLast = entryIndex + 1 == mxf.timecode->frameCount;
  return isLast ? mxf.fileSize : (*mxf.indexEntries)[entryIndex + 1].fileOffset;
}

bool SourceFiles::Open() {
  for (std::uint32_t i = 0; i < plan_.sourceCount; ++i) {
    const TrackSource& source = plan_.sources[i];
    if (source.wav == nullptr) continue;
    platform::File& file = handles_[source.firstTrack];
    file = platform::File::Open(source.wav->filePath, platform::OpenMode::kReadShared);
    if (!file.IsOpen()) return false;
  }
  return true;
}

SourceState SourceFiles::Check() const {
  for (std::uint32_t i = 0; i < plan_.sourceCount; ++i) {
    const TrackSource& source = plan_.sources[i];
    if (source.wav == nullptr) continue;
    const SourceState state = CheckSource(Of(source), *source.wav);
    if (state != SourceState::kSound) return state;
  }
  return SourceState::kSound;
}

void SourceFiles::Close() {
  for (platform::File& file : handles_)
    file.Close();
}

}  // namespace quorvan
