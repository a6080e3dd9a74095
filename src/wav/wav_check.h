// Checks whether a source file is still the file that was added to the library, and whether its
// samples can be copied into the clip.

#pragma once

#include "platform/file.h"
#include "wav/wav_library.h"

namespace quorvan {

enum class SourceState {
  kUsable,
  kChanged,     // size, last write, format or place of the audio differs from the library entry
  kNotPcm,      // the sub-format of the extensible format is not PCM
  kCutShort,    // the file holds less audio than it claims, or claims none but has some
  kUnreadable,  // the file or its size or times cannot be read
};

// True when the samples of `wav` can be copied into a clip with the audio `audio`: IsPcm, whole
// bytes for each sample, and either the clip's bytes for a sample or 16 bits for a clip of 24 bits.
// Throws nothing.
bool FitsClip(const WAV_FILE_INFO& wav, const MXF_AUDIO_INFO& audio);

// True when the format tag is PCM, or extensible, whose sub-format CheckSource checks. Throws
// nothing.
bool IsPcm(const WAV_FILE_INFO& wav);

// Compares the open `file` with its library entry `wav`. Returns the first state that applies:
// kUnreadable without size or times; kChanged when the size or the time of the last write differs;
// kUnreadable when a read fails; kChanged when a walk from chunk to chunk by their sizes leads to a
// fmt chunk or a data chunk that differs from the entry; kNotPcm; kCutShort; kUsable. Chunks that
// lead to no data chunk are not compared. Throws nothing.
SourceState CheckSource(const platform::File& file, const WAV_FILE_INFO& wav);

}  // namespace quorvan
