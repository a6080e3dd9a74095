// What has to hold before the first byte of a rewrite is written.

#pragma once

#include "mxf/records.h"
#include "platform/file.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "state/audiotrack_io_info.h"
#include "wav/wav_check.h"

namespace quorvan {

// True when the open `clip` is the one that was analysed, and the plan can be written into it.
bool IsPlannedClip(const platform::File& clip, const RewrapPlan& plan, const MXF_BASE_INFO& mxf);

// The source files of a running rewrite, in AUDIOTRACK_IO_INFO.wavHandle, and views of them. Closed
// on destruction.
class SourceFiles {
 public:
  SourceFiles(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks)
      : plan_(plan), handles_(tracks->wavHandle) {}
  SourceFiles(const SourceFiles&) = delete;
  SourceFiles& operator=(const SourceFiles&) = delete;
  ~SourceFiles() { Close(); }

  // Opens every file of the plan. False when one cannot be opened.
  bool Open();

  // Makes a view of each whole file, all of them open. False when one cannot be mapped.
  bool Map();

  // kSound when each is the file that was added and holds the audio that it claims; else what is
  // wrong with the first that is not.
  SourceState Check() const;

  const platform::File& Of(const TrackSource& source) const { return handles_[source.firstTrack]; }

  // Not mapped where Map was not called.
  const platform::MappedView& ViewOf(const TrackSource& source) const {
    return views_[source.firstTrack];
  }

  void Close();

 private:
  const RewrapPlan& plan_;
  std::array<platform::File, kMaxTracks>& handles_;
  std::array<platform::MappedView, kMaxTracks> views_;
};

}  // namespace quorvan
