#include "state/wav_buffer.h"

#include <algorithm>

#include "timecode/timecode.h"

namespace quorvan {

std::uint32_t BlockFrames(std::uint32_t wavBufferIndex, const MXF_TIMECODE_INFO& timecode) {
  if (wavBufferIndex >= kWavBufferRows.size()) return 0;
  const std::int32_t frames = TextToFrames(timecode.fpsIndex, timecode.dropFrame,
                                           kWavBufferRows[wavBufferIndex].durationText);
  return frames < 0 ? 0 : static_cast<std::uint32_t>(frames);
}

std::uint32_t FramesInMemory(std::uint32_t blockFrames, std::uint64_t bytesPerFrame) {
  const std::uint64_t most = bytesPerFrame == 0
                                 ? blockFrames
                                 : std::max<std::uint64_t>(kMostBlockBytes / bytesPerFrame, 1);
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(blockFrames, most));
}

}  // namespace quorvan
