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

bool SourceFiles::Map() {
  for (std::uint32_t i = 0; i < plan_.sourceCount; ++i) {
    const TrackSource& source = plan_.sources[i];
    if (source.wav == nullptr) continue;
    std::u16string name = u"IDWAVTRK00";  // the track's number in two digits, from 1
    const std::uint32_t number = source.firstTrack + 1;
    name[8] = static_cast<char16_t>(u'0' + number / 10);
    name[9] = static_cast<char16_t>(u'0' + number % 10);
    const auto mapping = platform::FileMapping::Create(Of(source), name);
    platform::MappedView& view = views_[source.firstTrack];
    view = mapping.View(0, mapping.size());
    if (!view.IsMapped()) return false;
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
  for (platform::MappedView& view : views_)
    view.Unmap();
  for (platform::File& file : handles_)
    file.Close();
}

}  // namespace quorvan
