#include "bench/bare_ways.h"

#include <ebur128.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "export/bwf_header.h"
#include "mxf/essence/audio_element.h"
#include "platform/text.h"
#include "wav/wav_library.h"

namespace quorvan::bench {
namespace {

constexpr std::uint32_t kFramesAhead = 64;
constexpr std::size_t kExportBuffer = std::size_t{1} << 20;
constexpr std::uint8_t kBlank = 0x55;
constexpr std::uint32_t kChannels = 2;
constexpr std::size_t kPadFrames = 5 * 48000;
constexpr std::uint32_t kSampleBytes = 3;
constexpr int kLoudnessMode = EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA |
                              EBUR128_MODE_SAMPLE_PEAK | EBUR128_MODE_TRUE_PEAK;

// A whole file, mapped as one view; `data` is null when that fails.
class WholeFile {
 public:
  WholeFile(const std::filesystem::path& path, bool writes) {
    const int file = open(path.c_str(), (writes ? O_RDWR : O_RDONLY) | O_CLOEXEC);
    struct stat info {};
    if (file >= 0 && fstat(file, &info) == 0) {
      size_ = static_cast<std::size_t>(info.st_size);
      void* data = mmap(nullptr, size_, PROT_READ | (writes ? PROT_WRITE : 0), MAP_SHARED, file, 0);
      if (data != MAP_FAILED) data_ = static_cast<std::uint8_t*>(data);
    }
    if (file >= 0) close(file);
  }
  WholeFile(WholeFile&& other) noexcept : data_(other.data_), size_(other.size_) {
    other.data_ = nullptr;
  }
  WholeFile& operator=(WholeFile&&) = delete;
  ~WholeFile() {
    if (data_ != nullptr) munmap(data_, size_);
  }

  std::uint8_t* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
};

WholeFile OpenClip(const APP_STATE_INFO& app, bool writes) {
  return {platform::ToUtf8(app.mxfPath), writes};
}

const INDEX_ENTRY_ARRAY& EntryOf(const APP_STATE_INFO& app, std::uint32_t frame) {
  return (*app.mxf->indexEntries)[frame];
}

// Calls `eachFrame` with each frame number, and `visit` with the track (from 0) and the place of
// each value of the frame, track by track. False when a value is not in the index or `visit`
// returns false.
template <typename EachFrame, typename Visit>
bool VisitValues(const APP_STATE_INFO& app, EachFrame eachFrame, Visit visit) {
  const std::uint32_t tracks = UsableTracks(*app.mxf->audio);
  for (std::uint32_t frame = 0; frame < app.mxf->timecode->frameCount; ++frame) {
    eachFrame(frame);
    for (std::uint32_t t = 0; t < tracks; ++t) {
      const auto value = LocateElementValue(*app.mxf, EntryOf(app, frame), t);
      if (!value || !visit(t, *value)) return false;
    }
  }
  return true;
}

template <typename Visit>
bool VisitValues(const APP_STATE_INFO& app, Visit visit) {
  return VisitValues(
      app, [](std::uint32_t) {}, visit);
}

// Asks the system to prefetch the pages with the audio of `frame`.
void FetchAudio(const APP_STATE_INFO& app, std::uint32_t frame, const WholeFile& clip) {
  if (frame >= app.mxf->timecode->frameCount) return;
  const INDEX_ENTRY_ARRAY& entry = EntryOf(app, frame);
  const auto first = LocateElementValue(*app.mxf, entry, 0);
  const auto last = LocateElementValue(*app.mxf, entry, UsableTracks(*app.mxf->audio) - 1);
  if (!first || !last) return;
  const std::uint64_t start = first->fileOffset() / kPageBytes * kPageBytes;
  madvise(clip.data() + start, last->end() - start, MADV_WILLNEED);
}

std::vector<WholeFile> OpenSources(const APP_STATE_INFO& app) {
  std::vector<WholeFile> sources;
  for (std::uint32_t t = 0; t < UsableTracks(*app.mxf->audio); ++t) {
    const WAV_FILE_INFO* wav = app.tracks->wav[t];
    sources.emplace_back(platform::ToUtf8(wav == nullptr ? u"" : wav->filePath), false);
  }
  return sources;
}

bool AreOpen(const std::vector<WholeFile>& files) {
  return std::all_of(files.begin(), files.end(),
                     [](const WholeFile& file) { return file.data() != nullptr; });
}

// Address of the first audio byte of each track's source.
std::vector<const std::uint8_t*> Starts(const APP_STATE_INFO& app,
                                        const std::vector<WholeFile>& sources) {
  std::vector<const std::uint8_t*> starts;
  for (std::size_t t = 0; t < sources.size(); ++t)
    starts.push_back(sources[t].data() + app.tracks->wav[t]->dataOffset);
  return starts;
}

bool WriteWhole(int file, const std::uint8_t* data, std::size_t size) {
  return write(file, data, size) == static_cast<ssize_t>(size);
}

// The file of an exported track, and the bytes that are not written yet.
struct ExportFile {
  int file = -1;
  std::vector<std::uint8_t> waiting;

  bool Flush() {
    const bool written = WriteWhole(file, waiting.data(), waiting.size());
    waiting.clear();
    return written;
  }
};

float FloatOf(const std::uint8_t* bytes) {
  const std::uint32_t word =
      std::uint32_t{bytes[0]} << 8 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 24;
  constexpr float factor = 1.0F / static_cast<float>(1 << 23);
  return static_cast<float>(static_cast<std::int32_t>(word) >> 8) * factor;
}

}  // namespace

ClipFacts FactsOf(const APP_STATE_INFO& app) {
  const MXF_BASE_INFO& mxf = *app.mxf;
  ClipFacts facts{mxf.fileSize,
                  0,
                  0,
                  mxf.timecode->frameCount,
                  mxf.partitionTable->get()[0].partitionCount,
                  UsableTracks(*mxf.audio)};
  std::uint64_t counted = 0;  // number of the first page that is not counted yet
  VisitValues(app, [&](std::uint32_t, const ElementValue& value) {
    facts.audioBytes += value.bytes();
    const std::uint64_t first = std::max(counted, value.fileOffset() / kPageBytes);
    counted = (value.end() + kPageBytes - 1) / kPageBytes;
    facts.audioPages += counted - first;
    return true;
  });
  return facts;
}

bool BareRewrite(const APP_STATE_INFO& app, bool advised) {
  const WholeFile clip = OpenClip(app, true);
  const std::vector<WholeFile> sources = OpenSources(app);
  if (clip.data() == nullptr || !AreOpen(sources)) return false;
  std::vector<const std::uint8_t*> next = Starts(app, sources);
  if (advised) madvise(clip.data(), clip.size(), MADV_RANDOM);
  const auto fetch = [&](std::uint32_t frame) {
    if (advised) FetchAudio(app, frame + kFramesAhead, clip);
  };
  const bool written = VisitValues(app, fetch, [&](std::uint32_t t, const ElementValue& value) {
    std::memcpy(clip.data() + value.fileOffset(), next[t], value.bytes());
    next[t] += value.bytes();
    return true;
  });
  return written && (app.tracks->noFlush == 1 || FlushFile(platform::ToUtf8(app.mxfPath)));
}

bool FlushFile(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY);
  const bool flushed = file >= 0 && fsync(file) == 0;
  if (file >= 0) close(file);
  return flushed;
}

bool BlankAudio(const APP_STATE_INFO& app) {
  const WholeFile clip = OpenClip(app, true);
  return clip.data() != nullptr && VisitValues(app, [&](std::uint32_t, const ElementValue& value) {
           std::memset(clip.data() + value.fileOffset(), kBlank, value.bytes());
           return true;
         });
}

bool HoldsSources(const APP_STATE_INFO& app) {
  const WholeFile clip = OpenClip(app, false);
  const std::vector<WholeFile> sources = OpenSources(app);
  if (clip.data() == nullptr || !AreOpen(sources)) return false;
  std::vector<const std::uint8_t*> next = Starts(app, sources);
  return VisitValues(app, [&](std::uint32_t t, const ElementValue& value) {
    const std::uint8_t* found = clip.data() + value.fileOffset();
    const std::uint32_t skipped = app.tracks->wavChannel[t] * kSampleBytes;
    for (std::uint32_t i = 0; i < value.bytes(); i += kSampleBytes) {
      if (std::memcmp(found + i, next[t] + skipped, kSampleBytes) != 0) return false;
      next[t] += app.tracks->wav[t]->blockAlign;
    }
    return true;
  });
}

bool BareExport(const APP_STATE_INFO& app, const std::filesystem::path& folder) {
  const WholeFile clip = OpenClip(app, false);
  if (clip.data() == nullptr) return false;
  std::vector<ExportFile> files(UsableTracks(*app.mxf->audio));
  bool done = true;
  for (std::uint32_t t = 0; t < files.size(); ++t) {
    files[t].file = open(ExportPath(folder, t).c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    done = done && files[t].file >= 0;
    files[t].waiting.reserve(kExportBuffer);
    files[t].waiting.resize(kBwfHeaderBytes);
  }
  done = done && VisitValues(app, [&](std::uint32_t t, const ElementValue& value) {
           ExportFile& file = files[t];
           if (file.waiting.size() + value.bytes() > kExportBuffer && !file.Flush()) return false;
           const std::uint8_t* bytes = clip.data() + value.fileOffset();
           file.waiting.insert(file.waiting.end(), bytes, bytes + value.bytes());
           return true;
         });
  for (ExportFile& file : files) {
    done = file.Flush() && done;
    if (app.tracks->noFlush == 0) done = fsync(file.file) == 0 && done;
    done = close(file.file) == 0 && done;
  }
  return done;
}

bool HoldExports(const APP_STATE_INFO& app, const std::filesystem::path& folder) {
  const WholeFile clip = OpenClip(app, false);
  std::vector<WholeFile> files;
  std::vector<std::size_t> next(UsableTracks(*app.mxf->audio), kBwfHeaderBytes);
  for (std::uint32_t t = 0; t < next.size(); ++t)
    files.emplace_back(ExportPath(folder, t), false);
  if (clip.data() == nullptr || !AreOpen(files)) return false;
  const bool same = VisitValues(app, [&](std::uint32_t t, const ElementValue& value) {
    if (next[t] + value.bytes() > files[t].size()) return false;
    const std::uint8_t* written = files[t].data() + next[t];
    next[t] += value.bytes();
    return std::memcmp(written, clip.data() + value.fileOffset(), value.bytes()) == 0;
  });
  for (std::size_t t = 0; t < next.size(); ++t) {
    if (next[t] != files[t].size()) return false;
  }
  return same;
}

std::filesystem::path ExportPath(const std::filesystem::path& folder, std::uint32_t track) {
  return folder / fmt::format("Track-{}.wav", track + 1);
}

std::vector<float> LoudnessSamples(const APP_STATE_INFO& app) {
  const WholeFile clip = OpenClip(app, false);
  std::vector<float> samples;
  if (clip.data() == nullptr || app.mxf->audio->blockAlign != kSampleBytes) return samples;
  std::array<std::uint64_t, kChannels> next = {0, 1};
  VisitValues(app, [&](std::uint32_t t, const ElementValue& value) {
    if (t >= kChannels) return true;
    const std::size_t count = value.bytes() / kSampleBytes;
    samples.resize(
        std::max(samples.size(), static_cast<std::size_t>(next[t] - t) + count * kChannels));
    for (std::size_t i = 0; i < count; ++i, next[t] += kChannels)
      samples[next[t]] = FloatOf(clip.data() + value.fileOffset() + i * kSampleBytes);
    return true;
  });
  return samples;
}

bool BareLoudness(const APP_STATE_INFO& app, const std::vector<float>& samples,
                  Loudness* loudness) {
  ebur128_state* state = ebur128_init(kChannels, app.mxf->audio->sampleRate, kLoudnessMode);
  if (state == nullptr || samples.empty()) return false;
  ebur128_set_channel(state, 0, EBUR128_LEFT);
  ebur128_set_channel(state, 1, EBUR128_RIGHT);
  const std::vector<float> pad(kPadFrames * kChannels);
  ebur128_add_frames_float(state, pad.data(), kPadFrames);
  const float* next = samples.data();
  for (std::uint32_t frame = 0; frame < app.mxf->timecode->frameCount; ++frame) {
    const std::uint32_t count = EntryOf(app, frame).audioSamples;
    ebur128_add_frames_float(state, next, count);
    next += std::size_t{count} * kChannels;
  }
  ebur128_add_frames_float(state, pad.data(), kPadFrames);
  std::array<double, kChannels> peak{};
  for (std::uint32_t c = 0; c < kChannels; ++c)
    ebur128_true_peak(state, c, &peak[c]);
  ebur128_loudness_global(state, &loudness->integrated);
  ebur128_loudness_range(state, &loudness->range);
  loudness->truePeak = 20.0 * std::log10(std::max(peak[0], peak[1]));
  ebur128_destroy(&state);
  return true;
}

}  // namespace quorvan::bench
