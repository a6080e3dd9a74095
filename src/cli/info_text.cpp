#include <fmt/format.h>

#include <array>
#include <iterator>
#include <utility>

#include "cli/info_views.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_text.h"

namespace quorvan::cli {
namespace {

constexpr const char* kPartitionKinds[] = {"header", "body", "footer"};
constexpr const char* kElementKinds[] = {"not found", "AES3", "Wave"};

// Writes lines of text into the output, with a line end between each two.
class Page {
 public:
  explicit Page(LongOutput* output) : output_(*output) {}

  void Line(std::string_view name, std::string_view value) {
    BeginLine();
    fmt::format_to(Out(), "{:<18}{}", name, value);
  }
  void Heading(std::string_view text) {
    BeginLine();
    fmt::format_to(Out(), "\n{}", text);
  }
  // Writes a line of a table. False when more lines are of no use.
  template <typename... Columns>
  bool Row(fmt::format_string<Columns...> form, Columns&&... columns) {
    BeginLine();
    fmt::format_to(Out(), form, std::forward<Columns>(columns)...);
    return output_.Send();
  }

 private:
  std::back_insert_iterator<std::string> Out() { return std::back_inserter(output_.text()); }
  void BeginLine() {
    if (!std::exchange(isEmpty_, false)) output_.text() += '\n';
  }

  LongOutput& output_;
  bool isEmpty_ = true;
};

std::string Umid(const std::array<std::uint8_t, kUmidBytes>& umid, std::uint32_t size) {
  const std::string hex = UmidText(umid);
  return size == kUmidBytes ? hex : fmt::format("{} (first 32 of {} bytes)", hex, size);
}

std::string FileSize(std::uint64_t bytes) {
  return fmt::format("{} ({} bytes)", FileSizeText(bytes), bytes);
}

std::string FrameRate(const MXF_TIMECODE_INFO& t) {
  if (t.editRateDenominator <= 1) return fmt::format("{}", t.editRateNumerator);
  return fmt::format("{}/{} ({:.2f})", t.editRateNumerator, t.editRateDenominator,
                     static_cast<double>(t.editRateNumerator) / t.editRateDenominator);
}

void AddIdentity(const MXF_BASE_INFO& mxf, Page* page) {
  using platform::ToUtf8;
  page->Line("Size", FileSize(mxf.fileSize));
  page->Line("MXF version", fmt::format("{}.{}", mxf.versionMajor, mxf.versionMinor));
  page->Line("Written by",
             fmt::format("{} / {} / {} / {}", ToUtf8(mxf.companyName), ToUtf8(mxf.productName),
                         ToUtf8(mxf.productVersion), ToUtf8(mxf.platform)));
  page->Line("Created", ToUtf8(mxf.creationDateText));
  page->Line("Modified", ToUtf8(mxf.modifiedDateText));
  page->Line("Material UMID", Umid(mxf.materialUmid, mxf.materialUmidSize));
  page->Line("Source UMID", Umid(mxf.sourceUmid, mxf.sourceUmidSize));
}

void AddTimecode(const MXF_TIMECODE_INFO& t, Page* page) {
  page->Heading("Timecode");
  if (HasRange(t)) {
    page->Line("First frame", TimecodeText(t, t.startFrames));
    page->Line("Last frame", TimecodeText(t, t.lastFrames));
    page->Line("Duration", fmt::format("{} ({} frames)", TimecodeText(t, t.duration), t.duration));
  } else {
    page->Line("First frame", "unknown");
  }
  page->Line("Base", fmt::format("{}{}", t.roundedBase, t.dropFrame == 1 ? " drop frame" : ""));
  page->Line("Frame rate", FrameRate(t));
  page->Line("Index entries", fmt::format("{}", t.frameCount));
}

void AddAudio(const MXF_BASE_INFO& mxf, Page* page) {
  const MXF_AUDIO_INFO& a = *mxf.audio;
  page->Heading("Audio");
  page->Line("Tracks",
             a.trackCount > kMaxTracks
                 ? fmt::format("{}, of which the first {} can be used", a.trackCount, kMaxTracks)
                 : fmt::format("{}", a.trackCount));
  page->Line("Format", fmt::format("{} Hz, {} bits", a.sampleRate, a.quantizationBits));
  page->Line("Element",
             fmt::format("{}, {} bytes with fill", kElementKinds[a.elementKind], a.elementSize));
  page->Line("Ancillary data", mxf.hasAncillaryData == 0
                                   ? std::string("none")
                                   : fmt::format("{} bytes with fill", mxf.ancillaryElementSize));
}

void AddVideo(const MXF_VIDEO_INFO& v, Page* page) {
  page->Heading("Video");
  page->Line("Coding", platform::ToUtf8(v.codecName));
  page->Line("Picture", fmt::format("{} x {} {}, {}:{}", v.width, v.height,
                                    v.frameLayout == 0 ? "progressive" : "interlaced",
                                    v.aspectNumerator, v.aspectDenominator));
  page->Line("Bit rate", fmt::format("{:.1f} Mbps", v.bitRate / 1e6));
}

void AddPartitions(const MXF_BASE_INFO& mxf, Page* page) {
  page->Heading("Partitions");
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  page->Row("{:>5} {:<7}{:>16}{:>12}{:>12}{:>16}{:>6}{:>6}{:>9}", "", "kind", "offset", "header",
            "index", "body offset", "body", "index", "KAG");
  for (std::uint32_t i = 0; i < table[0].partitionCount; ++i) {
    const MXF_PARTITION_INFO& p = table[i];
    page->Row("{:>5} {:<7}{:>16}{:>12}{:>12}{:>16}{:>6}{:>6}{:>9}", i, kPartitionKinds[p.kind],
              p.thisPartition, p.headerByteCount, p.indexByteCount, p.bodyOffset, p.bodySid,
              p.indexSid, p.kagSize);
  }
}

void AddIndex(const MXF_BASE_INFO& mxf, Page* page) {
  page->Heading("Index");
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  page->Row("{:>8}{:>10}{:>16}{:>12}{:>8}{:>7}{:>9}{:>5}{:>5}", "frame", "partition", "offset",
            "slice", "deltas", "flags", "samples", "temp", "key");
  for (std::uint32_t i = 0; i < mxf.timecode->frameCount; ++i) {
    const INDEX_ENTRY_ARRAY& e = (*mxf.indexEntries)[i];
    const bool goesOn =
        page->Row("{:>8}{:>10}{:>16}{:>12}{:>8}{:>7}{:>9}{:>5}{:>5}", i, e.partition - table,
                  e.fileOffset, e.sliceOffset, e.deltaCount, fmt::format("{:02X}", e.flags),
                  e.audioSamples, e.temporalOffset, e.keyFrameOffset);
    if (!goesOn) return;
  }
}

}  // namespace

std::string PatternLine(const MXF_AUDIO_INFO& audio) {
  return fmt::format(
      "the 5-frame sample pattern starts at its position {} instead of 0: no job takes the clip",
      audio.patternStart);
}

std::string WrongIndexLine() {
  return "the index does not lead to the audio of every frame, and no job takes the frames that it "
         "misses; a conformed copy may get another index";
}

std::vector<std::string> NoticeLines(const MXF_BASE_INFO& mxf) {
  std::vector<std::string> lines;
  for (const ClipNotice notice : NoticesOf(mxf)) {
    switch (notice) {
      case ClipNotice::kNoRange:
        lines.emplace_back(
            "start, timecode base or duration cannot be read: nothing but looking is possible");
        break;
      case ClipNotice::kUnknownRate:
        lines.emplace_back("the edit rate is not supported: nothing but looking is possible");
        break;
      case ClipNotice::kNoSampleFormat:
        lines.emplace_back(
            "sampling rate or sample width cannot be read: nothing but looking is possible");
        break;
      case ClipNotice::kOtherLength:
        lines.push_back(fmt::format("the duration says {} frames, the index holds {}",
                                    mxf.timecode->duration, mxf.timecode->frameCount));
        break;
      case ClipNotice::kOtherPattern:
        lines.push_back(PatternLine(*mxf.audio));
        break;
      case ClipNotice::kIndexContradicted:
        lines.push_back(WrongIndexLine());
        break;
      case ClipNotice::kHiddenTracks:
        lines.push_back(
            fmt::format("the index holds {} audio elements a frame, {} audio tracks were counted",
                        mxf.audio->indexedElements, mxf.audio->trackCount));
        break;
    }
  }
  return lines;
}

void WriteInfoText(const ClipSession& session, bool index, LongOutput* output) {
  const APP_STATE_INFO& app = session.app.info;
  Page page(output);
  page.Line("File", platform::ToUtf8(platform::LastComponent(app.mxfPath)));
  AddIdentity(*app.mxf, &page);
  AddTimecode(*app.mxf->timecode, &page);
  AddAudio(*app.mxf, &page);
  AddVideo(*app.mxf->video, &page);
  AddPartitions(*app.mxf, &page);
  const std::vector<std::string> notices = NoticeLines(*app.mxf);
  if (!notices.empty()) page.Heading("Notices");
  for (const std::string& line : notices)
    page.Line("", line);
  if (index) AddIndex(*app.mxf, &page);
}

}  // namespace quorvan::cli
