// The bare loops with which the engines are compared: the least work that does each job, without a
// proof, progress or cancellation. Every function works on the loaded clip of `app`.

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

// Counts the audio of all usable tracks in all frames.
ClipFacts FactsOf(const APP_STATE_INFO& app);

// Overwrites all audio with the sources on the tracks: maps the whole clip and each source, and
// copies each value. The sources must be mono, of the clip's sample width and at least as long as
// the clip. With `advised` the pages of the coming frames' audio are prefetched. Unless `noFlush`
// of `app.tracks` is 1, the function waits for the medium as the engines do. False when a file
// cannot be mapped, a value is not in the index, or the flush fails.
bool BareRewrite(const APP_STATE_INFO& app, bool advised);

// Sets all audio bytes of the clip to one value, so that HoldsSources finds a rewrite that wrote
// nothing. False when the clip cannot be mapped or a value is not in the index.
bool BlankAudio(const APP_STATE_INFO& app);

// True when the clip holds, in every frame and track, the samples of the sources on its tracks.
bool HoldsSources(const APP_STATE_INFO& app);

// Writes every track into a file of `folder`, after a header of kBwfHeaderBytes zeros. Flushes as
// BareRewrite does. False when a file exists already or cannot be written.
bool BareExport(const APP_STATE_INFO& app, const std::filesystem::path& folder);

// Waits until the file is on the medium. False when the flush fails.
bool FlushFile(const std::filesystem::path& path);

// True when each file of an export in `folder` holds kBwfHeaderBytes bytes and then the audio of
// its track, and nothing else.
bool HoldExports(const APP_STATE_INFO& app, const std::filesystem::path& folder);

// Path of the file into which `track` (from 0) is exported.
std::filesystem::path ExportPath(const std::filesystem::path& folder, std::uint32_t track);

// The samples of tracks 1 and 2 as the measurement gives them to the library: interleaved, full
// scale is 1. Empty when the clip cannot be mapped or its samples do not have 3 bytes.
std::vector<float> LoudnessSamples(const APP_STATE_INFO& app);

struct Loudness {
  double integrated;  // LUFS
  double truePeak;    // dBTP
  double range;       // LU

  bool operator==(const Loudness&) const = default;
};

// Measures `samples` (LoudnessSamples) with libebur128 alone, frame by frame. False without samples
// or when the library has no memory.
bool BareLoudness(const APP_STATE_INFO& app, const std::vector<float>& samples, Loudness* loudness);

}  // namespace quorvan::bench
