// Whether an open file is still, and really, what the library holds of it.

#pragma once

#include "platform/file.h"
#include "wav/wav_library.h"

namespace quorvan {

enum class SourceState {
  kSound,
  kChanged,   // not the file that was added, or its chunks lead to audio elsewhere
  kNotPcm,    // of a format stated at length, whose samples are no PCM
  kCutShort,  // the file ends before its audio does, or claims none though it has some
};

// Compares the open `file` with what the library knows of it as `wav`. Where its chunks, followed
// by their sizes, lead to a data chunk, format and place of the audio must be those that were
// found.
SourceState CheckSource(const platform::File& file, const WAV_FILE_INFO& wav);

}  // namespace quorvan
