// Fuzz target: asks what a conformed copy of the input would mend. Where there can be a copy, makes
// one, which must mend the same, be a clip that needs no mending, and hold the same audio. The
// input must keep its bytes, and no other file may be left behind.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "conform/conform.h"
#include "memory_file.h"
#include "mxf/analysis.h"
#include "mxf/essence/audio_element.h"
#include "mxf/essence/index_proof.h"
#include "platform/file.h"
#include "support/temp_folder.h"

namespace quorvan {

static bool operator==(const MendNote& a, const MendNote& b) {
  return a.mend == b.mend && a.count == b.count;
}

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLargestCopied = 1 << 20;  // bytes of an input of which a copy is made

void Require(bool holds) {
  if (!holds) std::abort();
}

ConformResult Conform(const ConformRequest& request) {
  JobProgress progress;
  const ConformResult result = ConformClip(request, &progress);
  Require(result.IsDone() == result.reason.en.empty());
  Require(result.fault != ConformFault::kStopped);
  return result;
}

Bytes Contents(const std::u16string& path) {
  const auto file = platform::File::Open(path, platform::OpenMode::kReadShared);
  Require(file.IsOpen());
  Bytes bytes(file.Size().value_or(0));
  Require(file.ReadAt(0, bytes.data(), bytes.size()) == bytes.size());
  return bytes;
}

// A file and what the analysis and its index table say of it.
class Clip {
 public:
  explicit Clip(const std::u16string& path)
      : file_(platform::File::Open(path, platform::OpenMode::kReadShared)) {
    Require(file_.IsOpen());
    records_.timecode.useFileIo = Method::kGenericFileIo;
    isAccepted_ = AnalyzeMxfFile(&file_, &records_.base) == kSuccess;
  }

  // True when the analysis accepts the clip and its index leads to the audio of every frame.
  bool IsFollowed() const {
    return isAccepted_ && EveryFrameStands(file_, records_.base, ColdWalk::kReadsAll);
  }

  std::uint32_t Frames() const { return records_.timecode.frameCount; }

  // True when the metadata tell another duration than the index table.
  bool ContradictsItself() const {
    return HasRange(records_.timecode) && records_.timecode.duration != Frames();
  }

  // The audio of all tracks, frame by frame, by the index and the sample pattern.
  Bytes Audio() const {
    Bytes audio;
    for (std::uint32_t f = 0; f < Frames(); ++f) {
      for (std::uint32_t t = 0; t < UsableTracks(records_.audio); ++t) {
        const auto value = LocateElementValue(records_.base, records_.indexEntries[f], t);
        if (!value) continue;
        const std::size_t held = audio.size();
        audio.resize(held + value->bytes());
        Require(file_.ReadAt(value->fileOffset(), audio.data() + held, value->bytes()) ==
                value->bytes());
      }
    }
    return audio;
  }

 private:
  platform::File file_;
  MxfRecords records_;
  bool isAccepted_ = false;
};

// True when the copy has the metadata and the index table of the clip.
bool KeepsWhatLeadsToAudio(const ConformResult& result) {
  constexpr Mend kOthers[] = {Mend::kMetadataOfPartition, Mend::kSetOrder, Mend::kNoIndex,
                              Mend::kIndex};
  return std::none_of(result.mended.begin(), result.mended.end(), [&](const MendNote& note) {
    return std::find(std::begin(kOthers), std::end(kOthers), note.mend) != std::end(kOthers);
  });
}

// Checks the copy of the clip `in` at `out`, which `result` describes.
void CheckCopy(const std::u16string& in, const std::u16string& out, const ConformResult& result) {
  const Clip copy(out);
  Require(copy.IsFollowed() && copy.Frames() == result.frames);
  if (!KeepsWhatLeadsToAudio(result)) return;
  const Clip clip(in);
  if (clip.IsFollowed()) Require(copy.Audio() == clip.Audio());
}

// Copies the copy at `first` to `second`. Both must be the same. A finished clip keeps a duration
// that is not that of its frames; then every copy gets the same new index, and tells it.
void CopyAgain(const std::u16string& first, const std::u16string& second) {
  const ConformResult again = Conform({.in = first, .out = second});
  Require(again.IsDone() && Contents(first) == Contents(second));
  Require(again.mended.empty() || Clip(first).ContradictsItself());
}

}  // namespace
}  // namespace quorvan

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvan;
  static fuzz::MemoryFile memory;
  static const test::TempFolder folder;
  static const std::u16string first = folder.PathOf("first.mxf");
  static const std::u16string second = folder.PathOf("second.mxf");
  memory.Replace(data, size);
  const ConformResult checked = Conform({.in = memory.Path(), .out = {}, .checkOnly = true});
  Require(std::is_sorted(checked.mended.begin(), checked.mended.end(),
                         [](const MendNote& a, const MendNote& b) { return a.mend < b.mend; }));
  if (checked.IsDone() && size <= kLargestCopied) {
    const ConformResult copied = Conform({.in = memory.Path(), .out = first});
    Require(copied.IsDone() && copied.frames == checked.frames && copied.mended == checked.mended);
    CheckCopy(memory.Path(), first, copied);
    CopyAgain(first, second);
    platform::RemoveFile(first);
    platform::RemoveFile(second);
  }
  Require(std::filesystem::is_empty(folder.Path()));
  const Bytes now = Contents(memory.Path());
  Require(now.size() == size && std::equal(now.begin(), now.end(), data));
  return 0;
}
