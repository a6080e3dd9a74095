#include <fmt/format.h>

#include <array>
#include <iterator>
#include <utility>

#include "cli/info_views.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_text.h"
#include "state/wording.h"

namespace quorvan::cli {
namespace {

using platform::Language;

using Label = platform::InBoth<std::string_view>;

constexpr Label kPartitionKinds[] = {
    {"ヘッダー", "header"}, {"ボディ", "body"}, {"フッター", "footer"}};
constexpr Label kElementKinds[] = {{"不明", "not found"}, {"AES3", "AES3"}, {"Wave", "Wave"}};

// Writes lines of text into the output, with a line end between each two.
class Page {
 public:
  Page(Language language, LongOutput* output) : language_(language), output_(*output) {}

  std::string_view In(const Label& label) const { return label.In(language_); }

  void Line(const Label& name, std::string_view value) {
    BeginLine();
    fmt::format_to(Out(), "{:<18}{}", In(name), value);
  }
  // Writes a line whose value is `form` in the language of the page, with its values filled in.
  template <typename... Values>
  void Worded(const Label& name, const std::type_identity_t<WordingForm<Values...>>& form,
              const Values&... values) {
    Line(name, quorvan::Worded(language_, form, values...));
  }
  void Heading(const Label& text) {
    BeginLine();
    fmt::format_to(Out(), "\n{}", In(text));
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

  const Language language_;
  LongOutput& output_;
  bool isEmpty_ = true;
};

void AddUmid(const Label& name, const std::array<std::uint8_t, kUmidBytes>& umid,
             std::uint32_t size, Page* page) {
  const std::string hex = UmidText(umid);
  if (size == kUmidBytes) return page->Line(name, hex);
  page->Worded(name, {"{} ({} バイトのうち先頭の32バイト)", "{} (first 32 of {} bytes)"}, hex,
               size);
}

std::string FrameRate(const MXF_TIMECODE_INFO& t) {
  if (t.editRateDenominator <= 1) return fmt::format("{}", t.editRateNumerator);
  return fmt::format("{}/{} ({:.2f})", t.editRateNumerator, t.editRateDenominator,
                     static_cast<double>(t.editRateNumerator) / t.editRateDenominator);
}

void AddIdentity(const MXF_BASE_INFO& mxf, Page* page) {
  using platform::ToUtf8;
  page->Worded({"サイズ", "Size"}, {"{} ({} バイト)", "{} ({} bytes)"}, FileSizeText(mxf.fileSize),
               mxf.fileSize);
  page->Line({"MXFバージョン", "MXF version"},
             fmt::format("{}.{}", mxf.versionMajor, mxf.versionMinor));
  page->Line({"作成アプリ", "Written by"},
             fmt::format("{} / {} / {} / {}", ToUtf8(mxf.companyName), ToUtf8(mxf.productName),
                         ToUtf8(mxf.productVersion), ToUtf8(mxf.platform)));
  page->Line({"作成日時", "Created"}, ToUtf8(mxf.creationDateText));
  page->Line({"更新日時", "Modified"}, ToUtf8(mxf.modifiedDateText));
  AddUmid({"マテリアルUMID", "Material UMID"}, mxf.materialUmid, mxf.materialUmidSize, page);
  AddUmid({"ソースUMID", "Source UMID"}, mxf.sourceUmid, mxf.sourceUmidSize, page);
}

void AddTimecode(const MXF_TIMECODE_INFO& t, Page* page) {
  const Label first = {"開始フレーム", "First frame"};
  page->Heading({"タイムコード", "Timecode"});
  if (HasRange(t)) {
    page->Line(first, TimecodeText(t, t.startFrames));
    page->Line({"最終フレーム", "Last frame"}, TimecodeText(t, t.lastFrames));
    page->Worded({"デュレーション", "Duration"}, {"{} ({} フレーム)", "{} ({} frames)"},
                 TimecodeText(t, t.duration), t.duration);
  } else {
    page->Worded(first, {"不明", "unknown"});
  }
  page->Line({"ベース", "Base"},
             fmt::format("{}{}", t.roundedBase,
                         t.dropFrame == 1 ? page->In({" ドロップフレーム", " drop frame"}) : ""));
  page->Line({"フレームレート", "Frame rate"}, FrameRate(t));
  page->Line({"インデックス数", "Index entries"}, fmt::format("{}", t.frameCount));
}

void AddAudio(const MXF_BASE_INFO& mxf, Page* page) {
  const MXF_AUDIO_INFO& a = *mxf.audio;
  const Label tracks = {"トラック数", "Tracks"};
  const Label ancillary = {"アンシラリデータ", "Ancillary data"};
  page->Heading({"オーディオ", "Audio"});
  if (a.trackCount > kMaxTracks) {
    page->Worded(tracks,
                 {"{} (使用できるのは先頭の {} トラック)", "{}, of which the first {} can be used"},
                 a.trackCount, kMaxTracks);
  } else {
    page->Line(tracks, fmt::format("{}", a.trackCount));
  }
  page->Worded({"フォーマット", "Format"}, {"{} Hz, {} ビット", "{} Hz, {} bits"}, a.sampleRate,
               a.quantizationBits);
  page->Worded({"エレメント", "Element"},
               {"{}, フィルを含めて {} バイト", "{}, {} bytes with fill"},
               page->In(kElementKinds[a.elementKind]), a.elementSize);
  if (mxf.hasAncillaryData == 0) {
    page->Worded(ancillary, {"なし", "none"});
  } else {
    page->Worded(ancillary, {"フィルを含めて {} バイト", "{} bytes with fill"},
                 mxf.ancillaryElementSize);
  }
}

void AddVideo(const MXF_VIDEO_INFO& v, Page* page) {
  page->Heading({"ビデオ", "Video"});
  page->Line({"コーデック", "Coding"}, platform::ToUtf8(v.codecName));
  page->Line({"映像", "Picture"},
             fmt::format("{} x {} {}, {}:{}", v.width, v.height,
                         page->In(v.frameLayout == 0 ? Label{"プログレッシブ", "progressive"}
                                                     : Label{"インターレース", "interlaced"}),
                         v.aspectNumerator, v.aspectDenominator));
  page->Line({"ビットレート", "Bit rate"}, fmt::format("{:.1f} Mbps", v.bitRate / 1e6));
}

void AddPartitions(const MXF_BASE_INFO& mxf, Page* page) {
  page->Heading({"パーティション", "Partitions"});
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  page->Row("{:>5} {:<8}{:>15}{:>12}{:>12}{:>16}{:>6}{:>6}{:>9}", "", page->In({"種類", "kind"}),
            page->In({"位置", "offset"}), page->In({"ヘッダー", "header"}),
            page->In({"索引", "index"}), page->In({"ボディ位置", "body offset"}),
            page->In({"BODY", "body"}), page->In({"INDEX", "index"}), "KAG");
  for (std::uint32_t i = 0; i < table[0].partitionCount; ++i) {
    const MXF_PARTITION_INFO& p = table[i];
    page->Row("{:>5} {:<8}{:>15}{:>12}{:>12}{:>16}{:>6}{:>6}{:>9}", i,
              page->In(kPartitionKinds[p.kind]), p.thisPartition, p.headerByteCount,
              p.indexByteCount, p.bodyOffset, p.bodySid, p.indexSid, p.kagSize);
  }
}

void AddIndex(const MXF_BASE_INFO& mxf, Page* page) {
  page->Heading({"インデックス", "Index"});
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  page->Row("{:>8}{:>10}{:>16}{:>12}{:>8}{:>7}{:>9}{:>5}{:>5}", page->In({"フレーム", "frame"}),
            page->In({"区画", "partition"}), page->In({"位置", "offset"}),
            page->In({"スライス", "slice"}), page->In({"デルタ", "deltas"}),
            page->In({"フラグ", "flags"}), page->In({"サンプル", "samples"}),
            page->In({"順序", "temp"}), page->In({"キー", "key"}));
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

std::string PatternLine(Language language, const MXF_AUDIO_INFO& audio) {
  return Worded(
      language,
      {"5フレームのサンプルパターンが、先頭ではなく位置 {} "
       "から始まっているため、処理ができません。",
       "the 5-frame sample pattern starts at its position {} instead of 0: no job takes the clip"},
      audio.patternStart);
}

std::string WrongIndexLine(Language language) {
  return Worded(
      language,
      {"インデックスがオーディオを示していないフレームがあり、そのフレームは処理ができません。"
       "構造を整えたコピーでは、インデックスを作成し直せる場合があります。",
       "the index does not lead to the audio of every frame, and no job takes the frames that it "
       "misses; a conformed copy may get another index"});
}

namespace {

std::string NoticeLine(Language language, ClipNotice notice, const MXF_BASE_INFO& mxf) {
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  switch (notice) {
    case ClipNotice::kNoRange:
      return Worded(
          language,
          {"開始、タイムコードベースまたはデュレーションが読取れません。情報の表示のみ可能です。",
           "start, timecode base or duration cannot be read: nothing but looking is possible"});
    case ClipNotice::kUnknownRate:
      return Worded(language, {"エディットレートが対応していません。情報の表示のみ可能です。",
                               "the edit rate is not supported: nothing but looking is possible"});
    case ClipNotice::kNoSampleFormat:
      return Worded(
          language,
          {"サンプルレートまたはサンプルビット数が読取れません。情報の表示のみ可能です。",
           "sampling rate or sample width cannot be read: nothing but looking is possible"});
    case ClipNotice::kOtherLength:
      return Worded(language,
                    {"デュレーションは {} フレームですが、インデックスは {} フレームです。",
                     "the duration says {} frames, the index holds {}"},
                    mxf.timecode->duration, mxf.timecode->frameCount);
    case ClipNotice::kOtherPattern:
      return PatternLine(language, audio);
    case ClipNotice::kIndexContradicted:
      return WrongIndexLine(language);
    case ClipNotice::kHiddenTracks:
      return Worded(language,
                    {"インデックスのオーディオエレメントは1フレームに {} "
                     "個ですが、オーディオトラックは {} です。",
                     "the index holds {} audio elements a frame, {} audio tracks were counted"},
                    audio.indexedElements, audio.trackCount);
  }
  return {};
}

}  // namespace

std::vector<std::string> NoticeLines(Language language, const MXF_BASE_INFO& mxf) {
  std::vector<std::string> lines;
  for (const ClipNotice notice : NoticesOf(mxf))
    lines.push_back(NoticeLine(language, notice, mxf));
  return lines;
}

void WriteInfoText(const ClipSession& session, bool index, LongOutput* output) {
  const APP_STATE_INFO& app = session.app.info;
  Page page(session.language, output);
  page.Line({"ファイル", "File"}, platform::ToUtf8(platform::LastComponent(app.mxfPath)));
  AddIdentity(*app.mxf, &page);
  AddTimecode(*app.mxf->timecode, &page);
  AddAudio(*app.mxf, &page);
  AddVideo(*app.mxf->video, &page);
  AddPartitions(*app.mxf, &page);
  const std::vector<std::string> notices = NoticeLines(session.language, *app.mxf);
  if (!notices.empty()) page.Heading({"注意", "Notices"});
  for (const std::string& line : notices)
    page.Line({}, line);
  if (index) AddIndex(*app.mxf, &page);
}

}  // namespace quorvan::cli
