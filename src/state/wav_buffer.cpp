#include "state/wav_buffer.h"

#include <algorithm>

#include "timecode/timecode.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kCacheBytes = std::uint64_t{3} << 19;

std::uint32_t FramesWithin(std::uint64_t bytes, std::uint32_t frames, std::uint64_t bytesPerFrame) {
  if (bytesPerFrame == 0) return frames;
  const std::uint64_t most = std::max<std::uint64_t>(bytes / bytesPerFrame, 1);
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(frames, most));
}

}  // namespace

std::uint32_t BlockFrames(std::uint32_t wavBufferIndex, const MXF_TIMECODE_INFO& timecode) {
  if (wavBufferIndex >= kWavBufferRows.size()) return 0;
  const std::int32_t frames = TextToFrames(timecode.fpsIndex, timecode.dropFrame,
                                           kWavBufferRows[wavBufferIndex].durationText);
  return frames < 0 ? 0 : static_cast<std::uint32_t>(frames);
}

std::uint32_t FramesInMemory(std::uint32_t blockFrames, std::uint64_t bytesPerFrame) {
  return FramesWithin(kMostBlockBytes, blockFrames, bytesPerFrame);
}

std::uint32_t FramesInCache(std::uint32_t frames, std::uint64_t bytesPerFrame) {
  return FramesWithin(kCacheBytes, frames, bytesPerFrame);
}

}  // namespace quorvan
