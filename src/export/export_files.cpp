#include "export/export_files.h"

#include <iterator>
#include <utility>

#include "platform/path.h"
#include "platform/text.h"

namespace quorvan {
namespace {

constexpr std::size_t kMostPathChars = 1023;
constexpr std::uint32_t kMostNumbers = 100000;
constexpr std::u16string_view kExtension = u".wav";

std::u16string Digits(std::uint64_t number) {
  return platform::ToUtf16(std::to_string(number));
}

}  // namespace

platform::File CreateExportFile(const AUDIOTRACK_IO_INFO& tracks, std::uint32_t track,
                                std::u16string* path) {
  if (tracks.exportFolder[0] == 0) return {};
  const std::u16string stem =
      platform::JoinPath(tracks.exportFolder, tracks.exportName + Digits(std::uint64_t{track} + 1));
  std::u16string name = stem + std::u16string(kExtension);
  for (std::uint64_t n = 0; n < kMostNumbers && name.size() <= kMostPathChars; ++n) {
    *path = name;
    platform::File file = platform::File::Open(name, platform::OpenMode::kCreateNew);
    if (file.IsOpen() || !platform::IsNameTaken(name)) return file;
    name = stem + u" " + Digits(tracks.exportCount + n) + std::u16string(kExtension);
  }
  return {};
}

bool ExportFiles::Create(const ExportPlan& plan, const AUDIOTRACK_IO_INFO& tracks,
                         const BwfHeader& header) {
  for (std::uint32_t n = 0; n < plan.trackCount; ++n) {
    files_[n] = CreateExportFile(tracks, plan.track[n], &taken_[n].path);
    if (!files_[n].IsOpen()) {
      pathAtFault_ = taken_[n].path;
      return false;
    }
    Take(n, header);
    if (WriteTaken() != kNoFault) return false;
  }
  return true;
}

JobFault ExportFiles::WriteTaken() {
  for (std::uint32_t n = 0; n < kMaxTracks; ++n) {
    Taken& taken = taken_[n];
    const auto pieces = std::span(taken.pieces).first(std::exchange(taken.count, 0));
    if (pieces.empty()) continue;
    switch (files_[n].WriteGathered(taken.end, pieces)) {
      case platform::WriteResult::kDone:
        break;
      case platform::WriteResult::kFailed:
        return FaultOf(n, kTargetFault);
      case platform::WriteResult::kSourceFault:
        return kClipFault;
    }
    for (const auto& piece : pieces)
      taken.end += piece.size();
  }
  return kNoFault;
}

JobFault ExportFiles::Finish(AUDIOTRACK_IO_INFO* tracks) {
  const bool flushes = tracks->noFlush == 0;
  tracks->phase = kPhaseFlushing;
  std::size_t last = kMaxTracks;
  for (std::size_t n = 0; n < kMaxTracks; ++n) {
    if (!files_[n].IsOpen()) continue;
    if (tracks->cancel == 1) return kNoFault;
    if (flushes && !files_[n].Flush()) return FaultOf(n, kNotFlushed);
    if (!files_[n].Close()) return FaultOf(n, kTargetFault);
    last = n;
  }
  const bool named = last == kMaxTracks || !flushes || platform::FlushFolderOf(taken_[last].path);
  return named ? kNoFault : FaultOf(last, kNotFlushed);
}

JobFault ExportFiles::FaultOf(std::size_t n, JobFault fault) {
  pathAtFault_ = taken_[n].path;
  return fault;
}

}  // namespace quorvan
