// How much of a clip's audio the engines for plain file access hold in memory at a time.

#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "mxf/records.h"

namespace quorvan {

struct WavBufferRow {
  std::u16string_view label;      // what the settings show
  std::string_view durationText;  // a timecode of eight digits
};

// Rows by AUDIOTRACK_IO_INFO.wavBufferIndex.
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

// Frames of one block of row `wavBufferIndex` in a clip of that timecode; 0 for a row or a base
// that is none.
std::uint32_t BlockFrames(std::uint32_t wavBufferIndex, const MXF_TIMECODE_INFO& timecode);

// Frames that a job holds in memory at a time: blockFrames, but not more than fit
// kMostBlockBytes, and at least one. Nothing is gained by longer reads, and the memory of a job
// must not grow with the number of tracks.
std::uint32_t FramesInMemory(std::uint32_t blockFrames, std::uint64_t bytesPerFrame);

inline constexpr std::uint64_t kMostBlockBytes = std::uint64_t{64} << 20;

// Frames, at most `frames` and at least one, whose `bytesPerFrame` bytes stay in the processor's
// cache between their reading and their writing.
std::uint32_t FramesInCache(std::uint32_t frames, std::uint64_t bytesPerFrame);

// True when a block of so many bytes can be had at all: its size fits 32 bits.
constexpr bool FitsBlock(std::uint64_t bytesPerFrame, std::uint32_t blockFrames) {
  return bytesPerFrame <= UINT32_MAX && bytesPerFrame * blockFrames <= UINT32_MAX;
}

}  // namespace quorvan
