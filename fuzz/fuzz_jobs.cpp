// Fuzz target: runs every job on an input that the analysis accepts. Both methods of file access
// must succeed or fail alike, a job that fails must leave the clip unchanged, and a rewrite must
// change only audio values and header metadata.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "export/export_file_io.h"
#include "export/export_mapped.h"
#include "loudness/measure_loudness.h"
#include "memory_file.h"
#include "mxf/analysis.h"
#include "mxf/essence/audio_element.h"
#include "mxf/essence/continuity.h"
#include "platform/path.h"
#include "platform/text.h"
#include "report/timecode_log.h"
#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_mapped.h"
#include "rewrite/verify.h"
#include "state/clip_state.h"
#include "state/frame_range.h"
#include "support/temp_folder.h"

namespace quorvan {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kExtensionSizePlace = 72;  // offset of cbSize in a BWF header
constexpr std::uint32_t kMeasuredInputs = 16;  // one input in 16 is measured: measuring takes long

void Require(bool holds) {
  if (!holds) std::abort();
}

// The input as a clip, analysed, with all tracks ON and all ranges over the whole clip.
class Clip {
 public:
  Clip(fuzz::MemoryFile* memory, const std::uint8_t* data, std::size_t size)
      : memory_(*memory), original_(data, data + size) {
    memory_.Replace(data, size);
    platform::File file = Open();
    accepted_ = AnalyzeMxfFile(&file, app.info.mxf) == kSuccess;
    if (!accepted_) return;
    EnterLoadedState(&app.info);
    for (std::uint32_t t = 0; t < UsableTracks(app.mxf.audio); ++t)
      app.tracks.rewrapSwitch[t] = app.tracks.exportSwitch[t] = kSwitchOn;
    for (const RangeFields& range : {kRewrapRange, kExportRange, kLoudnessRange}) {
      app.tracks.*range.in = FirstFramePoint(app.mxf.timecode);
      app.tracks.*range.out = LastFramePoint(app.mxf.timecode);
    }
    app.tracks.wavBufferIndex = 0;
    app.tracks.noFlush = app.tracks.keepUmids = 1;
  }

  bool accepted() const { return accepted_; }
  const std::u16string& path() const { return memory_.Path(); }
  bool IsUntouched() const { return Now() == original_; }

  // True when only values of audio elements have changed, and bytes that come before both the first
  // frame and the second partition.
  bool HoldsItsPicture() const {
    Bytes now = Now();
    if (now.size() != original_.size()) return false;
    const MXF_BASE_INFO& mxf = app.mxf.base;
    const auto takeOver = [&](std::uint64_t from, std::uint64_t to) {
      std::copy(original_.begin() + static_cast<long>(from),
                original_.begin() + static_cast<long>(to), now.begin() + static_cast<long>(from));
    };
    std::uint64_t metadataEnd = (*mxf.indexEntries)[0].fileOffset;
    const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
    for (std::uint32_t i = 1; i < table[0].partitionCount; ++i) {
      if (table[i].thisPartition > table[0].thisPartition)
        metadataEnd = std::min(metadataEnd, table[i].thisPartition);
    }
    takeOver(0, metadataEnd);
    for (std::uint32_t f = 0; f < mxf.timecode->frameCount; ++f) {
      for (std::uint32_t t = 0; t < UsableTracks(*mxf.audio); ++t) {
        const auto value = LocateElementValue(mxf, (*mxf.indexEntries)[f], t);
        if (value) takeOver(value->fileOffset(), value->end());
      }
    }
    return now == original_;
  }

  platform::File Open() const {
    return platform::File::Open(memory_.Path(), platform::OpenMode::kReadAlone);
  }

  Bytes Now() const {
    const platform::File file = Open();
    Bytes bytes(file.Size().value_or(0));
    Require(file.ReadAt(0, bytes.data(), bytes.size()) == bytes.size());
    return bytes;
  }

  AppState app;

 private:
  fuzz::MemoryFile& memory_;
  Bytes original_;
  bool accepted_ = false;
};

constexpr std::array kMethods = {Method::kMemoryMapping, Method::kGenericFileIo};

void CheckContinuity(Clip* clip, const std::u16string& logPath) {
  std::int32_t results[2];
  std::uint32_t counts[2];
  for (const Method method : kMethods) {
    const auto n = static_cast<std::size_t>(method);
    clip->app.mxf.timecode.useFileIo = method;
    platform::File file = clip->Open();
    results[n] = CheckTimecodeContinuity(&file, clip->app.info.mxf);
    counts[n] = clip->app.mxf.timecode.errorCount;
  }
  Require(results[0] == results[1] && counts[0] == counts[1]);
  Require(results[0] == kSuccess || results[0] == kContinuityBreaks);
  std::uint32_t error = 0;
  Require(WriteTimecodeLog(logPath, clip->app.info, &error));
}

std::vector<Bytes> TakeFiles(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path());
  std::sort(names.begin(), names.end());
  std::vector<Bytes> files;
  for (const auto& name : names) {
    files.push_back(test::ReadAll(name));
    Require(files.back().size() > kExtensionSizePlace);
    files.back()[kExtensionSizePlace] = 0;
    std::filesystem::remove(name);
  }
  return files;
}

void ExportBothWays(Clip* clip, const std::filesystem::path& folder) {
  const std::u16string out = platform::ToUtf16(folder.string());
  platform::CopyText(clip->app.tracks.exportFolder, 1024, out);
  const std::int32_t mapped =
      ExportMapped(clip->path().c_str(), &clip->app.tracks, clip->app.info.mxf);
  const std::vector<Bytes> mappedFiles = TakeFiles(folder);
  const std::int32_t fileIo =
      ExportFileIo(clip->path().c_str(), &clip->app.tracks, clip->app.info.mxf);
  const std::vector<Bytes> fileIoFiles = TakeFiles(folder);
  Require((mapped == kSuccess) == (fileIo == kSuccess));
  if (mapped == kSuccess) Require(mappedFiles == fileIoFiles);
  Require(clip->IsUntouched());
}

void Measure(Clip* clip) {
  const std::uint8_t selected[kMaxTracks] = {1, 1};
  MeasureLoudness(clip->path().c_str(), &clip->app.tracks, clip->app.info.mxf, selected);
  Require(clip->IsUntouched());
}

// Runs a rewrite and checks what it has left. kSuccess for a rewrite that is done, with or without
// a notice; else the result of the engine.
std::int32_t Rewrite(Clip* clip, Method method) {
  const auto engine = method == Method::kMemoryMapping ? RewrapMapped : RewrapFileIo;
  const std::int32_t result = engine(clip->path().c_str(), &clip->app.tracks, clip->app.info.mxf);
  if (result == kSuccess || result == kDoneWithNotice) {
    Require(clip->HoldsItsPicture());
    JobProgress progress;
    const VerifyResult verified =
        VerifyRewrap(clip->path().c_str(), &clip->app.tracks, clip->app.info.mxf, &progress);
    Require(verified.state == VerifyState::kSame);
    return kSuccess;
  }
  // The storage is memory and does not fail, so a failure can only be a refusal before the first
  // write.
  Require(clip->app.tracks.fault.framesBegun == 0 && clip->IsUntouched());
  return result;
}

}  // namespace
}  // namespace quorvan

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvan;
  static fuzz::MemoryFile memory;
  static const test::TempFolder folder;
  static const std::filesystem::path out = folder.Path() / "out";
  std::filesystem::create_directory(out);
  std::int32_t results[2] = {};
  for (const Method method : kMethods) {
    Clip clip(&memory, data, size);
    if (!clip.accepted()) return 0;
    if (method == kMethods.front()) {
      CheckContinuity(&clip, folder.PathOf("breaks.txt"));
      ExportBothWays(&clip, out);
      if (size % kMeasuredInputs == 0) Measure(&clip);
    }
    results[static_cast<std::size_t>(method)] = Rewrite(&clip, method);
  }
  Require((results[0] == kSuccess) == (results[1] == kSuccess));
  return 0;
}
