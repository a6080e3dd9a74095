// A whole rewrite on a built clip, and what the file has to be afterwards, worked out from the
// descriptions alone.

#pragma once

#include <string>
#include <vector>

#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_mapped.h"
#include "state/track_assignment.h"
#include "support/loaded_clip.h"
#include "support/wav_builder.h"

namespace quorvan::test {

struct Source {
  std::uint32_t track = 0;  // from 0
  WavSpec wav{};
};

class RewrapJob : public LoadedClip {
 public:
  explicit RewrapJob(const ClipSpec& description)
      : LoadedClip(description), out_(description.frames - 1) {}

  // Adds a file, puts it on its tracks and switches them ON.
  void Put(std::uint32_t track, const WavSpec& wav);
  void Silence(std::uint32_t track);
  // Frames from 0, both included; the whole clip when not called.
  void Range(std::uint32_t in, std::uint32_t out);

  // The engine of all jobs.
  static inline bool fileIo = false;
  static auto Engine() { return fileIo ? RewrapFileIo : RewrapMapped; }

  std::int32_t Run() { return Engine()(path.c_str(), &app.tracks, app.info.mxf); }

  // `bytes` of this clip with zeros for all that a job may write: its UMIDs and stamps, and the
  // audio of its tracks in its range.
  Bytes Without(Bytes bytes, bool identity, bool audio) const;

  // The original with the wanted audio in the wanted frames.
  Bytes ExpectedAudio() const;

  // The same as the whole file has to be. UMIDs and stamps are taken over from the file as it is
  // now, after a check that each is renewed or, with `renewed` false, not.
  Bytes Expected(bool renewed = true) const;

 private:
  struct Place {
    std::uint64_t at;
    std::size_t bytes;
  };

  std::vector<Place> IdentityPlaces() const;
  void FillTrack(std::uint32_t track, const WavSpec* wav, std::uint32_t channel,
                 Bytes* bytes) const;
  void FillTracks(bool silent, Bytes* bytes) const;

  std::vector<Source> sources_;
  std::vector<std::uint32_t> silent_;
  std::uint32_t in_ = 0;
  std::uint32_t out_;
};

}  // namespace quorvan::test
