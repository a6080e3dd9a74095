// The source files of a rewrite: opened, mapped, checked and closed.

#pragma once

#include "mxf/records.h"
#include "platform/file.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "state/audiotrack_io_info.h"
#include "wav/wav_library.h"

namespace quorvan {

// What is wrong with the first source that is not usable; kNoFault, and null, when all are.
struct SourceCheck {
  JobFault fault;
  const WAV_FILE_INFO* wav;
};

// The source files of a running rewrite, in AUDIOTRACK_IO_INFO.wavHandle, and views of them. Closed
// on destruction.
class SourceFiles {
 public:
  SourceFiles(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, const MXF_AUDIO_INFO& audio)
      : plan_(plan), audio_(audio), handles_(tracks->wavHandle) {}
  SourceFiles(const SourceFiles&) = delete;
  SourceFiles& operator=(const SourceFiles&) = delete;
  ~SourceFiles() { Close(); }

  // Opens every file of the plan. The first that cannot be opened; null when all are open.
  const WAV_FILE_INFO* Open();

  // Makes a view of each whole file, all of them open. The first that cannot be mapped; null when
  // all are.
  const WAV_FILE_INFO* Map();

  // Whether each is the file that was added and holds the audio that it claims.
  SourceCheck Check() const;

  const platform::File& Of(const TrackSource& source) const { return handles_[source.firstTrack]; }

  // Not mapped where Map was not called.
  const platform::MappedView& ViewOf(const TrackSource& source) const {
    return views_[source.firstTrack];
  }

  void Close();

 private:
  const RewrapPlan& plan_;
  const MXF_AUDIO_INFO& audio_;
  std::array<platform::File, kMaxTracks>& handles_;
  std::array<platform::MappedView, kMaxTracks> views_;
};

}  // namespace quorvan
