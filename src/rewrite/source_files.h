// The source files of a rewrite: opened, mapped, checked and closed.

#pragma once

#include "mxf/records.h"
#include "platform/file.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "state/audiotrack_io_info.h"
#include "wav/wav_library.h"

namespace quorvan {

// The first source file that is not usable and what is wrong with it; kNoFault and null when all
// source files are usable.
struct SourceCheck {
  JobFault fault;
  const WAV_FILE_INFO* wav;
};

// The open source files of a running rewrite, and views of the files. The handles lie in
// AUDIOTRACK_IO_INFO.wavHandle, by the first track of each source. The destructor closes them.
class SourceFiles {
 public:
  // `plan`, `tracks` and `audio` must outlive the object.
  SourceFiles(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, const MXF_AUDIO_INFO& audio)
      : plan_(plan), audio_(audio), handles_(tracks->wavHandle) {}
  SourceFiles(const SourceFiles&) = delete;
  SourceFiles& operator=(const SourceFiles&) = delete;
  ~SourceFiles() { Close(); }

  // Opens every source file of the plan for shared reading. Returns null, or the first file that
  // cannot be opened. Throws std::bad_alloc.
  const WAV_FILE_INFO* Open();

  // Makes a view of each whole source file; Open must have succeeded. Returns null, or the first
  // file that cannot be mapped. Throws std::bad_alloc.
  const WAV_FILE_INFO* Map();

  // Checks that each source file is the file that was added, has samples that fit the clip and
  // holds the audio that it claims. The fault is kSourceChanged, kSourceNotPcm, kSourceCutShort, or
  // kSourceFault when a file cannot be read. Throws nothing.
  SourceCheck Check() const;

  // The source file of `source`; not open for silence.
  const platform::File& Of(const TrackSource& source) const { return handles_[source.firstTrack]; }

  // The view of the source file of `source`; not mapped for silence or without a call of Map.
  const platform::MappedView& ViewOf(const TrackSource& source) const {
    return views_[source.firstTrack];
  }

  // Unmaps and closes all source files.
  void Close();

 private:
  const RewrapPlan& plan_;
  const MXF_AUDIO_INFO& audio_;
  std::array<platform::File, kMaxTracks>& handles_;
  std::array<platform::MappedView, kMaxTracks> views_;
};

}  // namespace quorvan
