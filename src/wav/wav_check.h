// Whether an open file is still, and really, what the library holds of it.

#pragma once

#include "platform/file.h"
#include "wav/wav_library.h"

namespace quorvan {

enum class SourceState {
  kUsable,
  kChanged,   // not the file that was added, or its chunks lead to audio elsewhere
  kNotPcm,    // of a format stated at length, whose samples are no PCM
  kCutShort,  // the file ends before its audio does, or claims none though it has some
  kUnreadable,
};

// True when the samples of `wav` can be copied into a clip with the audio `audio`: plain PCM, whole
// bytes a sample, of the clip's width, or of 16 bits for 24.
bool FitsClip(const WAV_FILE_INFO& wav, const MXF_AUDIO_INFO& audio);

// True when the format tag names PCM, or a format that is stated at length.
bool IsPcm(const WAV_FILE_INFO& wav);

// Compares the open `file` with what the library knows of it as `wav`. Where its chunks, followed
// by their sizes, lead to a data chunk, format and place of the audio must be those that were
// found.
SourceState CheckSource(const platform::File& file, const WAV_FILE_INFO& wav);

}  // namespace quorvan
