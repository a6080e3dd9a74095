// The buffer setting of the method "Generic File I/O": how far ahead of a rewrite or a comparison
// its source files are prefetched. The frames that are worked on at a time are a block that stays
// in the processor's cache. An export prefetches no source files; for an export, the setting is
// only an upper limit of the block.

#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "mxf/records.h"

namespace quorvan {

struct WavBufferRow {
  std::u16string_view label;      // shown in the list of settings
  std::string_view durationText;  // a timecode of eight digits: hours, minutes, seconds, frames
};

// The settings, by AUDIOTRACK_IO_INFO.wavBufferIndex. From index 4 on, most labels differ from the
// minutes of the duration.
inline constexpr std::array<WavBufferRow, 14> kWavBufferRows = {{
    {u"1", "00010000"},
    {u"2", "00020000"},
    {u"3", "00030000"},
    {u"4", "00040000"},
    {u"8", "00060000"},
    {u"10", "00080000"},
    {u"12", "00100000"},
    {u"14", "00120000"},
    {u"16", "00160000"},
    {u"18", "00200000"},
    {u"20", "00220000"},
    {u"22", "00240000"},
    {u"24", "00300000"},
    {u"28", "00400000"},
}};

// The number of frames in the duration of setting `wavBufferIndex`, counted with the timecode base
// of `timecode`. 0 when there is no such setting or the base is unknown. Throws nothing.
std::uint32_t BlockFrames(std::uint32_t wavBufferIndex, const MXF_TIMECODE_INFO& timecode);

// The number of frames to prefetch at a time: `blockFrames`, but not more than fit kMostBlockBytes
// when each frame takes `bytesPerFrame` bytes of the source files. At least 1, unless `blockFrames`
// is 0; `blockFrames` when `bytesPerFrame` is 0. The limit exists because longer reads gain
// nothing, and because the memory that prefetched bytes take must not grow with the number of
// tracks. Throws nothing.
std::uint32_t FramesInMemory(std::uint32_t blockFrames, std::uint64_t bytesPerFrame);

// Most bytes of source files that are prefetched at a time.
inline constexpr std::uint64_t kMostBlockBytes = std::uint64_t{64} << 20;

// The number of frames in a block: `frames`, but not more than stay in the processor's cache
// between being read and being written when each frame takes `bytesPerFrame` bytes. At least 1,
// unless `frames` is 0; `frames` when `bytesPerFrame` is 0. Throws nothing.
std::uint32_t FramesInCache(std::uint32_t frames, std::uint64_t bytesPerFrame);

// True when `blockFrames` frames of `bytesPerFrame` bytes each have a size in bytes that fits 32
// bits. Jobs refuse a setting for which it does not fit.
constexpr bool FitsBlock(std::uint64_t bytesPerFrame, std::uint32_t blockFrames) {
  return bytesPerFrame <= UINT32_MAX && bytesPerFrame * blockFrames <= UINT32_MAX;
}

}  // namespace quorvan
