#include "rewrite/rewrap_file_io.h"

#include <string>

#include "mxf/analysis.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_run.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

// One rewrite with plain file access, from its plan to its end. The destructor closes all files.
class FileIoRewrite {
 public:
  FileIoRewrite(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf)
      : plan_(plan), tracks_(*tracks), mxf_(*mxf), run_(plan, tracks, mxf, kStageRewrapFileIo) {}
  FileIoRewrite(const FileIoRewrite&) = delete;
  FileIoRewrite& operator=(const FileIoRewrite&) = delete;

  std::int32_t Run(const std::u16string& path) {
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = run_.ProveAndWrite(nullptr)) return failed;
    return run_.Finish(false);
  }

 private:
  std::int32_t Prepare(const std::u16string& path) {
    run_.clip = platform::File::Open(path, platform::OpenMode::kRewrite);
    if (!run_.clip.IsOpen()) return kFileRewrapNoClip;
    if (!run_.blocks.AllocateBlock(BlockFrames(tracks_.wavBufferIndex, *mxf_.timecode))) {
      return kFileRewrapNoBlock;
    }
    if (const WAV_FILE_INFO* wav = run_.files.Open()) {
      run_.NameFile(*wav);
      return kFileRewrapNoWav;
    }
    if (!run_.blocks.AllocateTrackBuffers()) return kFileRewrapNoTrackBuffer;
    run_.Start();
    return kSuccess;
  }

  const RewrapPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  RewrapRun run_;
};

}  // namespace

std::int32_t RewrapFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf) {
  return RunPlanned(path, tracks, mxf, kStageRewrapFileIo, [&](const RewrapPlan& plan) {
    return FileIoRewrite(plan, tracks, mxf).Run(path);
  });
}

}  // namespace quorvan
