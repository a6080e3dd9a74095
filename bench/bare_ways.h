// The least that has to be done for each job, without a proof, a progress or a way back: what the
// engines are compared with.

#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "state/app_state_info.h"

namespace quorvan::bench {

inline constexpr std::uint64_t kPageBytes = 4096;

struct ClipFacts {
  std::uint64_t bytes;
  std::uint64_t audioBytes;
  std::uint64_t audioPages;  // pages of the clip that hold audio
  std::uint32_t frames;
  std::uint32_t partitions;
  std::uint32_t tracks;
};
ClipFacts FactsOf(const APP_STATE_INFO& app);

// One view of the whole clip and one of each source, and a copy for each frame and track. The
// sources are mono and have the clip's width. `advised` tells the system ahead which pages of the
// clip come. Unless `noFlush` of the state is 1, it waits for the medium as the engines do.
bool BareRewrite(const APP_STATE_INFO& app, bool advised);

// Gives all audio of the clip one value, so that a rewrite that does nothing shows.
bool BlankAudio(const APP_STATE_INFO& app);

// True when the clip holds, in every frame and track, the samples of the sources on its tracks.
bool HoldsSources(const APP_STATE_INFO& app);

// Every track into a file of `folder`, behind a header of zeros. Flushes as BareRewrite does.
bool BareExport(const APP_STATE_INFO& app, const std::filesystem::path& folder);

// Waits until the file is on the medium.
bool FlushFile(const std::filesystem::path& path);

// True when the files hold the clip's audio behind a BWF header, and nothing else.
bool HoldExports(const APP_STATE_INFO& app, const std::filesystem::path& folder);

// Path of the file that an export of `track` (from 0) goes to.
std::filesystem::path ExportPath(const std::filesystem::path& folder, std::uint32_t track);

// Samples of tracks 1 and 2 as the measurement feeds them, interleaved.
std::vector<float> LoudnessSamples(const APP_STATE_INFO& app);

struct Loudness {
  double integrated;  // LUFS
  double truePeak;    // dBTP
  double range;       // LU

  bool operator==(const Loudness&) const = default;
};

// The library alone, fed frame by frame.
bool BareLoudness(const APP_STATE_INFO& app, const std::vector<float>& samples, Loudness* loudness);

}  // namespace quorvan::bench
