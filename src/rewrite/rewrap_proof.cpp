#include "rewrite/rewrap_proof.h"

#include "rewrite/umid.h"

namespace quorvan {

bool IsPlannedClip(const platform::File& clip, const RewrapPlan& plan, const MXF_BASE_INFO& mxf) {
  return clip.Size() == mxf.fileSize && CanBeWritten(plan, mxf) && HoldsUmids(clip, mxf);
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
