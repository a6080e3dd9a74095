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

platform::File CreateExportFile(const AUDIOTRACK_IO_INFO& tracks, std::uint32_t track) {
  if (tracks.exportFolder[0] == 0) return {};
  const std::u16string stem =
      platform::JoinPath(tracks.exportFolder, tracks.exportName + Digits(std::uint64_t{track} + 1));
  std::u16string path = stem + std::u16string(kExtension);
  for (std::uint64_t n = 0; n < kMostNumbers && path.size() <= kMostPathChars; ++n) {
    platform::File file = platform::File::Open(path, platform::OpenMode::kCreateNew);
    if (file.IsOpen() || !platform::IsNameTaken(path)) return file;
    path = stem + u" " + Digits(tracks.exportCount + n) + std::u16string(kExtension);
  }
  return {};
}

bool ExportFiles::Create(const ExportPlan& plan, const AUDIOTRACK_IO_INFO& tracks,
                         const BwfHeader& header) {
  for (std::uint32_t n = 0; n < plan.trackCount; ++n) {
    files_[n] = CreateExportFile(tracks, plan.track[n]);
    if (!files_[n].IsOpen()) return false;
    Take(n, header);
    if (WriteTaken() != platform::WriteResult::kDone) return false;
  }
  return true;
}

platform::WriteResult ExportFiles::WriteTaken() {
  for (std::uint32_t n = 0; n < kMaxTracks; ++n) {
    Taken& taken = taken_[n];
    const auto pieces = std::span(taken.pieces).first(std::exchange(taken.count, 0));
    if (pieces.empty()) continue;
    const platform::WriteResult result = files_[n].WriteGathered(taken.end, pieces);
    if (result != platform::WriteResult::kDone) return result;
    for (const auto& piece : pieces)
      taken.end += piece.size();
  }
  return platform::WriteResult::kDone;
}

bool ExportFiles::Close() {
  bool whole = true;
  for (platform::File& file : files_)
    whole = file.Close() && whole;
  return whole;
}

}  // namespace quorvan
