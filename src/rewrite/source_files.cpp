#include "rewrite/source_files.h"

#include "wav/wav_check.h"

namespace quorvan {

namespace {

JobFault FaultOf(SourceState state) {
  switch (state) {
    case SourceState::kUsable:
      return kNoFault;
    case SourceState::kChanged:
      return kSourceChanged;
    case SourceState::kNotPcm:
      return kSourceNotPcm;
    case SourceState::kCutShort:
      return kSourceCutShort;
    case SourceState::kUnreadable:
      return kSourceFault;
  }
  return kSourceFault;
}

}  // namespace

const WAV_FILE_INFO* SourceFiles::Open() {
  for (std::uint32_t i = 0; i < plan_.sourceCount; ++i) {
    const TrackSource& source = plan_.sources[i];
    if (source.wav == nullptr) continue;
    platform::File& file = handles_[source.firstTrack];
    file = platform::File::Open(source.wav->filePath, platform::OpenMode::kReadShared);
    if (!file.IsOpen()) return source.wav;
  }
  return nullptr;
}

const WAV_FILE_INFO* SourceFiles::Map() {
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
    if (!view.IsMapped()) return source.wav;
  }
  return nullptr;
}

SourceCheck SourceFiles::Check() const {
  for (std::uint32_t i = 0; i < plan_.sourceCount; ++i) {
    const TrackSource& source = plan_.sources[i];
    if (source.wav == nullptr) continue;
    const SourceState state =
        FitsClip(*source.wav, audio_) ? CheckSource(Of(source), *source.wav) : SourceState::kNotPcm;
    if (state != SourceState::kUsable) return {FaultOf(state), source.wav};
  }
  return {kNoFault, nullptr};
}

void SourceFiles::Close() {
  for (platform::MappedView& view : views_)
    view.Unmap();
  for (platform::File& file : handles_)
    file.Close();
}

}  // namespace quorvan
