#include "conform/conform.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

#include "conform/copy_file.h"
#include "conform/frame_map.h"
#include "conform/layout.h"
#include "conform/metadata_sets.h"
#include "conform/partition_map.h"
#include "mxf/analysis.h"
#include "mxf/essence/index_proof.h"
#include "mxf/metadata/readers.h"
#include "platform/file.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/wording.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kUsualIndexSid = 2;
constexpr platform::Text kPlanStage = {u"クリップの構造を確認中...",
                                       u"checking the structure of the clip..."};

ConformResult Refused(ConformFault fault, Reason reason) {
  ConformResult result;
  result.fault = fault;
  result.reason = std::move(reason);
  return result;
}

PictureCoding CodingOf(const MetadataSets& sets) {
  // Byte 13 of the coding labels of MPEG-2 and AVC pictures (SMPTE registry of labels).
  constexpr std::size_t kFamilyByte = 13;
  const auto label = PictureCodingLabel(sets);
  if (!label) return PictureCoding::kOther;
  switch ((*label)[kFamilyByte] & 0xF0) {
    case 0x00:
      return PictureCoding::kMpeg2;
    case 0x30:
      return PictureCoding::kAvc;
    default:
      return PictureCoding::kOther;
  }
}

// Takes a file offset of the copy to the place of the same byte in the clip. Nothing outside of the
// essence, or when the frames are laid anew.
std::optional<std::uint64_t> PlaceInClip(const CopyPlan& plan, std::uint64_t offset) {
  if (plan.laidFrames != nullptr) return std::nullopt;
  auto behind = std::upper_bound(plan.partitions.begin(), plan.partitions.end(), offset,
                                 [](std::uint64_t wanted, const CopyPartition& partition) {
                                   return wanted < partition.offset;
                                 });
  if (behind == plan.partitions.begin()) return std::nullopt;
  const CopyPartition& partition = *--behind;
  const std::uint64_t essence = plan.EssenceOffset(partition);
  if (offset < essence || offset - essence >= partition.essenceBytes) return std::nullopt;
  return partition.sourceOffset + (offset - essence);
}

// One copy of one clip.
class Conformer {
 public:
  Conformer(platform::File* clip, std::uint64_t size, JobProgress* progress)
      : clip_(*clip), size_(size), times_(clip->Times()), progress_(*progress) {}

  // Decides what the copy holds. False when there can be none; `result` then tells why.
  bool Plan() {
    progress_.stage = &kPlanStage;
    Reason reason;
    if (!ReadSourceClip(clip_, size_, &source_, &reason)) return Unfit(std::move(reason));
    if (!ReadMetadata()) return Unreadable();
    if (!PlanWithIndex() && (HasEnded() || !PlanWithFrames())) return false;
    return clip_.Trouble() == platform::ReadTrouble::kNone || Unreadable();
  }

  // Writes the copy to `out`.
  void Write(const std::u16string& out) {
    const auto room = platform::FreeBytesBeside(out);
    if (room && *room < plan_.fileSize) {
      return End(ConformFault::kNoRoom,
                 WordedInBoth({"コピーには {} バイト必要ですが、空き容量は {} バイトです。",
                               "the copy needs {} bytes, where {} are free"},
                              plan_.fileSize, *room));
    }
    UnfinishedCopy copy(out);
    if (!platform::CanBeNamed(out) || !copy.file().IsOpen()) {
      return End(ConformFault::kUnwritable, {"コピーの保存先にファイルを作成できません。",
                                             "no file can be created where the copy shall stand"});
    }
    copy.file().StopOn(&progress_.cancel);
    switch (WriteCopy(plan_, clip_, &copy.file(), &progress_)) {
      case CopyEnd::kDone:
        break;
      case CopyEnd::kStopped:
        return EndStopped();
      case CopyEnd::kUnreadable:
        Unreadable();
        return;
      case CopyEnd::kUnwritable:
        return End(ConformFault::kUnwritable, {"コピーの書込みまたは読返しができません。",
                                               "the copy cannot be written or read back"});
    }
    if (!CheckCopy(&copy.file())) return;
    if (clip_.Trouble() != platform::ReadTrouble::kNone) {
      Unreadable();
      return;
    }
    if (HasChanged()) {
      return End(ConformFault::kUnreadable, {"コピーの作成中に元のファイルが変更されました。",
                                             "the clip has changed meanwhile"});
    }
    if (!copy.TakeName(out)) {
      End(ConformFault::kUnwritable,
          {"コピーに名前を付けられないか、名前をストレージに書込めません。",
           "the copy cannot take its name, or the name not be brought onto the medium"});
    }
  }

  ConformResult TakeResult() {
    result_.frames = frames_;
    std::stable_sort(result_.mended.begin(), result_.mended.end(),
                     [](const MendNote& a, const MendNote& b) { return a.mend < b.mend; });
    return std::move(result_);
  }

 private:
  bool HasEnded() const { return result_.fault != ConformFault::kNone; }

  // True when the clip is not as it was before the first read: the copy may then be a mix. Programs
  // that ask for no lock may write to the clip.
  bool HasChanged() const {
    const auto times = clip_.Times();
    return !times || !times_ || times->lastWrite != times_->lastWrite || clip_.Size() != size_;
  }

  void End(ConformFault fault, Reason reason) {
    result_.fault = fault;
    result_.reason = std::move(reason);
  }

  void EndStopped() { End(ConformFault::kStopped, {"中断しました。", "cancelled"}); }

  // Each ends the work and is false.
  bool Unreadable() {
    if (progress_.cancel != 0) {
      EndStopped();
    } else {
      End(ConformFault::kUnreadable, {"MXFファイルを読込めません。", "the clip cannot be read"});
    }
    return false;
  }
  bool Unfit(Reason reason) {
    if (clip_.Trouble() != platform::ReadTrouble::kNone) return Unreadable();
    End(ConformFault::kUnfit, std::move(reason));
    return false;
  }

  void Note(Mend mend, std::uint64_t count = 0) { result_.mended.push_back({mend, count}); }

  // Reads the metadata of all partitions. The header gets the metadata of the last closed and
  // complete partition that has any, when its own are of an earlier state.
  bool ReadMetadata() {
    metadata_.resize(source_.partitions.size());
    std::size_t best = 0;
    for (std::size_t i = 0; i < metadata_.size(); ++i) {
      const SourcePartition& partition = source_.partitions[i];
      if (!LoadSets(clip_, partition.metadata, &metadata_[i])) return false;
      const bool isComplete = partition.pack.Status() == kClosedCompletePack;
      if (isComplete && !partition.metadata.empty()) best = i;
    }
    if (source_.partitions.front().pack.Status() != kClosedCompletePack && best != 0) {
      metadata_.front() = metadata_[best];
      Note(Mend::kMetadataOfPartition, source_.partitions[best].offset);
    }
    if (const std::uint32_t moved = OrderSets(&metadata_.front())) Note(Mend::kSetOrder, moved);
    NoteSkeleton();
    return true;
  }

  void NoteSkeleton() {
    if (source_.wrongCounts != 0) Note(Mend::kByteCounts, source_.wrongCounts);
    if (!source_.hasRandomIndex) Note(Mend::kRandomIndex);
    if (source_.bytesBehind != 0) Note(Mend::kBytesBehind, source_.bytesBehind);
    if (!source_.HasFooter()) Note(Mend::kFooter);
    if (source_.unfinished != 0) Note(Mend::kOpenPartitions, source_.unfinished);
  }

  // True when a partition of the clip holds an index table segment.
  bool HasIndex() const {
    return std::any_of(source_.partitions.begin(), source_.partitions.end(),
                       [](const SourcePartition& p) { return !p.indexSegments.empty(); });
  }

  // True when the layout of the copy differs from that of the clip.
  bool ChangesLayout() const {
    if (plan_.partitions.size() != source_.partitions.size()) return true;
    for (std::size_t i = 0; i < plan_.partitions.size(); ++i) {
      const CopyPartition& target = plan_.partitions[i];
      const SourcePartition& source = source_.partitions[i];
      const PartitionPack& pack = source.pack;
      const bool losesBodyOffset =
          pack.U32(pack_field::kBodySid) == 0 && pack.U64(pack_field::kBodyOffset) != 0;
      if (losesBodyOffset || target.offset != source.offset ||
          target.headerByteCount != pack.U64(pack_field::kHeaderByteCount) ||
          plan_.kagSize != pack.U32(pack_field::kKagSize)) {
        return true;
      }
    }
    return false;
  }

  // Plans a copy with the partitions and the index table of the clip. False when the index table
  // does not lead to the audio of every frame or the metadata name no index table, and when the
  // work has ended.
  bool PlanWithIndex() {
    if (!HasIndex() || source_.cutBytes != 0 || !source_.HasFooter()) return false;
    if (IndexSidOf(metadata_.front()) == 0) return false;
    for (std::size_t i = 0; i < source_.partitions.size(); ++i) {
      const SourcePartition& from = source_.partitions[i];
      CopyPartition& to = plan_.partitions.emplace_back(CopyPartition{.pack = from.pack});
      to.metadata = metadata_[i];
      if (!LoadSets(clip_, from.indexSegments, &to.indexSegments)) return Unreadable();
      to.sourceOffset = from.essenceStart;
      to.sourceBytes = from.end - from.essenceStart;
    }
    PlaceParts(&plan_);
    platform::File skeleton;
    MxfRecords records;
    const std::int32_t code = AnalyzeSkeleton(&skeleton, &records);
    if (HasEnded()) return false;
    const bool isOfIndex = code == kDurationZero || code / 100 == kStageIndexTable / 100;
    if (code != kSuccess && !isOfIndex) return RefusedBy(records, code);
    const MXF_TIMECODE_INFO& timecode = records.timecode;
    const bool isComplete = !HasRange(timecode) || timecode.duration == timecode.frameCount;
    if (code != kSuccess || !isComplete || !IndexFits(&records) ||
        !EndsWithFrame(records.indexEntries[timecode.frameCount - 1].fileOffset)) {
      plan_ = {};
      return false;
    }
    frames_ = records.timecode.frameCount;
    if (ChangesLayout()) Note(Mend::kLayout);
    return !HasEnded();
  }

  // Plans a copy of the frames that a walk over the essence finds, with a new index table in the
  // footer.
  bool PlanWithFrames() {
    MetadataSets& sets = metadata_.front();
    const std::optional<Fraction> rate = PictureRate(sets);
    if (!rate) {
      return Unfit({"メタデータから映像のフレームレートが分かりません。",
                    "the metadata do not tell the rate of the picture"});
    }
    Reason reason;
    if (!ReadFrames(clip_, source_, CodingOf(sets), &map_, &reason)) return Unfit(reason);
    frames_ = static_cast<std::uint32_t>(map_.frames.size());
    const bool isUnfinished = source_.unfinished != 0 || source_.cutBytes != 0 ||
                              map_.lostBytes != 0 || !source_.HasFooter();
    const bool changesTime = SetDurations(frames_, *rate, !isUnfinished, &sets);
    const std::uint32_t named = IndexSidOf(sets);
    const std::uint32_t indexSid = named == 0 ? kUsualIndexSid : named;
    SetIndexSid(indexSid, &sets);
    if (!map_.isRegular) plan_.laidFrames = &map_;
    PlanPartitions(!changesTime);
    WriteIndex(map_, *rate, indexSid, &plan_);
    PlaceParts(&plan_);
    NoteFrames(changesTime);
    platform::File skeleton;
    MxfRecords records;
    const std::int32_t code = AnalyzeSkeleton(&skeleton, &records);
    if (HasEnded()) return false;
    if (code != kSuccess) return RefusedBy(records, code);
    if (records.timecode.frameCount != frames_) {
      return Unfit(
          {"作成したインデックステーブルを読取れません。", "the new index table cannot be read"});
    }
    const bool fits =
        map_.isRegular ? IndexIsOfMap(&records) : FirstFrameStands(skeleton, &records);
    if (fits || HasEnded()) return fits;
    const std::int32_t unfit = map_.isRegular ? MeasureFirstFrame(&clip_, &records.base) : kSuccess;
    if (unfit != kSuccess) return RefusedBy(records, unfit);
    return Unfit({"作成したインデックステーブルがフレームを示していません。",
                  "the new index table does not lead to the frames"});
  }

  // True when the index leads to the audio of the first frame, the only one in `skeleton`. All
  // frames that are laid anew have their elements at the same places.
  static bool FirstFrameStands(const platform::File& skeleton, MxfRecords* records) {
    records->timecode.frameCount = 1;
    return EveryFrameStands(skeleton, records->base, ColdWalk::kReadsAll);
  }

  void NoteFrames(bool changesTime) {
    const std::uint64_t lost = source_.cutBytes + map_.lostBytes;
    if (ChangesLayout()) Note(Mend::kLayout);
    if (changesTime) Note(Mend::kDurations, frames_);
    Note(HasIndex() ? Mend::kIndex : Mend::kNoIndex, frames_);
    if (!map_.isRegular) Note(Mend::kFrames, frames_);
    if (lost != 0) Note(Mend::kCutOff, lost);
  }

  // Plans the partitions of a copy of the frames. Metadata that are repeated behind the header are
  // kept only with `keepsRepetitions`.
  void PlanPartitions(bool keepsRepetitions) {
    std::size_t frame = 0;
    for (std::size_t i = 0; i < source_.partitions.size(); ++i) {
      const SourcePartition& from = source_.partitions[i];
      CopyPartition to{.pack = from.pack};
      if (i == 0 || keepsRepetitions) to.metadata = metadata_[i];
      to.firstFrame = static_cast<std::uint32_t>(frame);
      while (frame < map_.frames.size() && map_.frames[frame].partition == i)
        ++frame;
      to.frames = static_cast<std::uint32_t>(frame) - to.firstFrame;
      const bool isOther = from.pack.U32(pack_field::kBodySid) != map_.bodySid;
      if (to.frames == 0 && isOther) {
        to.sourceOffset = from.essenceStart;
        to.sourceBytes = from.end - from.essenceStart;
      }
      const bool isEmpty = to.frames == 0 && to.sourceBytes == 0 && to.metadata.empty();
      const bool isFooter = from.pack.Kind() == kFooterPackKind;
      if (i == 0 || isFooter || !isEmpty) plan_.partitions.push_back(std::move(to));
    }
    if (source_.HasFooter()) return;
    CopyPartition footer{.pack = source_.partitions.front().pack};
    footer.pack.key[kPackKindByte] = kFooterPackKind;
    PutBe32(footer.pack.value.data() + pack_field::kBodySid, 0);
    PutBe64(footer.pack.value.data() + pack_field::kBodyOffset, 0);
    plan_.partitions.push_back(std::move(footer));
  }

  // Makes the copy without its essence, in memory, in `*skeleton` and analyses it, so that an unfit
  // clip is refused before anything is written. Of frames that are laid anew the first one stands
  // in the skeleton, too. Returns the result of the analysis; any number when the work has ended.
  std::int32_t AnalyzeSkeleton(platform::File* skeleton, MxfRecords* records) {
    *skeleton = platform::File::OpenInMemory();
    skeleton->StopOn(&progress_.cancel);
    const CopyEnd end =
        skeleton->IsOpen() ? WriteSkeleton(plan_, clip_, skeleton) : CopyEnd::kUnwritable;
    switch (end) {
      case CopyEnd::kDone:
        return Analyze(skeleton, records);
      case CopyEnd::kStopped:
        EndStopped();
        break;
      case CopyEnd::kUnreadable:
        Unreadable();
        break;
      case CopyEnd::kUnwritable:
        End(ConformFault::kNoMemory,
            {"コピー用のメモリが確保できません。", "no memory for the copy"});
        break;
    }
    return kSuccess;
  }

  std::int32_t Analyze(platform::File* file, MxfRecords* records) {
    records->timecode.useFileIo = Method::kGenericFileIo;
    const std::int32_t code = AnalyzeMxfFile(file, &records->base);
    if (code == kCancelled) EndStopped();
    if (code % 100 == kStageNoMemory) {
      End(ConformFault::kNoMemory,
          {"解析用のメモリが確保できません。", "no memory for the analysis"});
    }
    if (code % 100 == kStageUnreadable) {
      End(ConformFault::kUnwritable,
          {"コピーの読返しができません。", "the copy cannot be read back"});
    }
    return code;
  }

  bool RefusedBy(const MxfRecords& records, std::int32_t code) {
    result_.analysisCode = code;
    result_.processCode = records.base.processCode;
    result_.hasAudioDescriptor = records.audio.hasDescriptor == 1;
    End(ConformFault::kUnfit,
        WordedInBoth({"構造を整えてもロードできません。(ERR: {})",
                      "the clip is refused in its conformed form too, with {}"},
                     code));
    return false;
  }

  // True when the index of the copy leads to all frames of the clip and to the audio in them, as a
  // walk over the clip's own keys finds them. `records` are those of the copy; their offsets become
  // those of the clip.
  bool IndexFits(MxfRecords* records) {
    const std::uint32_t count = records->timecode.frameCount;
    for (std::uint32_t i = 0; i < count; ++i) {
      INDEX_ENTRY_ARRAY& entry = records->indexEntries[i];
      const auto place = PlaceInClip(plan_, entry.fileOffset);
      if (!place) return false;
      entry.fileOffset = *place;
    }
    records->base.fileSize = size_;
    if (MeasureFirstFrame(&clip_, &records->base) != kSuccess) return false;
    const bool fits = EveryFrameStands(clip_, records->base, ColdWalk::kReadsAll);
    if (clip_.Trouble() != platform::ReadTrouble::kNone) return Unreadable();
    return fits;
  }

  // True when the index of the copy leads to the frames of the map and to their audio, and to
  // nothing else for the tracks of the metadata. `records` are those of the copy; their offsets
  // become those of the clip.
  bool IndexIsOfMap(MxfRecords* records) const {
    for (std::size_t i = 0; i < map_.frames.size(); ++i) {
      INDEX_ENTRY_ARRAY& entry = records->indexEntries[i];
      const auto place = PlaceInClip(plan_, entry.fileOffset);
      if (place != map_.frames[i].offset || entry.sliceOffset != map_.frames[i].sliceOffset) {
        return false;
      }
      entry.fileOffset = *place;
      const std::size_t tracks = std::min<std::size_t>(map_.deltas.size(), kMaxTracks);
      if (tracks < UsableTracks(records->audio) && entry.deltaCount > kDeltasBeforeAudio + tracks) {
        return false;
      }
      for (std::size_t t = 0; t < tracks; ++t) {
        const std::size_t k = kDeltasBeforeAudio + t;
        if (k >= entry.deltaCount || entry.delta[k].elementDelta != map_.deltas[t]) return false;
      }
    }
    records->base.fileSize = size_;
    return MeasureFirstFrame(&clip_, &records->base) == kSuccess;
  }

  // True when the frame at the file offset `offset` is the last one of the clip's essence: the key
  // with which it starts does not stand behind it again.
  bool EndsWithFrame(std::uint64_t offset) const {
    const auto holds = [offset](const SourcePartition& p) {
      return offset >= p.essenceStart && offset < p.end;
    };
    const auto& partitions = source_.partitions;
    const auto last = std::find_if(partitions.begin(), partitions.end(), holds);
    KlvSpan first;
    if (last == partitions.end() || !ReadKlvSpan(clip_, offset, last->end, &first)) return false;
    KlvSpan klv;
    for (std::uint64_t at = first.End(); ReadKlvSpan(clip_, at, last->end, &klv); at = klv.End()) {
      if (klv.key == first.key && IsContainerElement(klv.key.data())) return false;
    }
    const std::uint32_t bodySid = last->pack.U32(pack_field::kBodySid);
    return std::none_of(last + 1, partitions.end(), [bodySid](const SourcePartition& p) {
      return p.pack.U32(pack_field::kBodySid) == bodySid && p.essenceStart < p.end;
    });
  }

  // The analysis accepts the copy, and its index leads to every frame.
  bool CheckCopy(platform::File* file) {
    MxfRecords records;
    const std::int32_t code = Analyze(file, &records);
    if (HasEnded()) return false;
    if (code != kSuccess) return RefusedBy(records, code);
    // Frames that were copied as they are have been proven in the clip.
    const bool stands =
        plan_.laidFrames == nullptr || EveryFrameStands(*file, records.base, ColdWalk::kReadsAll);
    if (stands && records.timecode.frameCount == frames_) return true;
    if (progress_.cancel != 0) {
      EndStopped();
    } else {
      End(ConformFault::kUnwritable,
          {"コピーの読返しができません。", "the copy cannot be read back"});
    }
    return false;
  }

  platform::File& clip_;
  const std::uint64_t size_;
  const std::optional<platform::FileTimes> times_;  // before the first read
  JobProgress& progress_;
  SourceClip source_;
  std::vector<MetadataSets> metadata_;  // of each partition of the clip
  FrameMap map_;
  CopyPlan plan_;
  std::uint32_t frames_ = 0;  // of the copy
  ConformResult result_;
};

// What the analysis says of the clip itself, for the refusal of a clip that has no copy.
void AddAnalysisOf(platform::File* clip, ConformResult* result) {
  if (result->fault != ConformFault::kUnfit || result->analysisCode != 0) return;
  MxfRecords records;
  records.timecode.useFileIo = Method::kGenericFileIo;
  const std::int32_t code = AnalyzeMxfFile(clip, &records.base);
  if (code <= 0 || code == kCancelled) return;
  result->analysisCode = code;
  result->processCode = records.base.processCode;
  result->hasAudioDescriptor = records.audio.hasDescriptor == 1;
}

ConformResult Conform(const ConformRequest& request, JobProgress* progress) {
  const bool writes = !request.checkOnly;
  if (writes && platform::AbsolutePath(request.in) == platform::AbsolutePath(request.out)) {
    return Refused(ConformFault::kSameFile, {"コピーが元のファイルと同じファイルになります。",
                                             "the copy would replace the clip itself"});
  }
  if (writes && platform::IsNameTaken(request.out)) {
    return Refused(ConformFault::kNameTaken,
                   WordedInBoth({"{} はすでにあります。", "{} exists already"},
                                platform::ToUtf8(request.out)));
  }
  platform::File clip = platform::File::Open(request.in, platform::OpenMode::kReadShared);
  if (!clip.IsOpen()) {
    return Refused(ConformFault::kUnreadable,
                   {"MXFファイルを開くことができません。", "the clip cannot be opened"});
  }
  clip.StopOn(&progress->cancel);
  const std::optional<std::uint64_t> size = clip.Size();
  if (!size) {
    return Refused(ConformFault::kUnreadable,
                   {"MXFファイルのサイズが分かりません。", "the size of the clip is unknown"});
  }
  Conformer conformer(&clip, *size, progress);
  if (conformer.Plan() && writes) conformer.Write(request.out);
  ConformResult result = conformer.TakeResult();
  AddAnalysisOf(&clip, &result);
  return result;
}

}  // namespace

ConformResult ConformClip(const ConformRequest& request, JobProgress* progress) {
  try {
    return Conform(request, progress);
  } catch (const std::bad_alloc&) {
    // Texts of at most 15 bytes, which a std::string holds without an allocation.
    return Refused(ConformFault::kNoMemory, {"メモリ不足", "out of memory"});
  }
}

}  // namespace quorvan
