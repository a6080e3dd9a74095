#include <array>

#include "conform/conform.h"
#include "mxf/analysis.h"
#include "platform/text.h"

namespace quorvan {
namespace {

struct MendRow {
  const char* name;
  platform::Text form;  // kPlace stands for the count
};

constexpr std::u16string_view kPlace = u"%s";

// By Mend.
constexpr std::array<MendRow, 13> kMends = {{
    {"layout",
     {u"メタデータとパーティションパックの構造を整えました。",
      u"length fields and fill of the metadata and the partition packs"}},
    {"byteCounts",
     {u"パーティションのバイト数を訂正しました。(%s か所)",
      u"byte counts in %s partition packs that did not end at a KLV"}},
    {"randomIndex",
     {u"ランダム・インデックス・テーブルを作成しました。",
      u"the Random Index Pack, which was missing or wrong"}},
    {"bytesBehind",
     {u"ファイルの末尾にある余分なデータを除きました。(%s バイト)",
      u"%s bytes behind the Random Index Pack are left out"}},
    {"footer",
     {u"フッターパーティションを作成しました。", u"the footer partition, which was missing"}},
    {"openPartitions",
     {u"OPEN(未確定状態)または不完全なパーティションを確定しました。(%s か所)",
      u"%s partitions that were open or incomplete"}},
    {"metadataOfPartition",
     {u"ヘッダーのメタデータを、%s バイト目のパーティションのメタデータに替えました。",
      u"the header gets the complete metadata of the partition at byte %s"}},
    {"setOrder",
     {u"メタデータセットの順序を整えました。(%s 個)",
      u"the order of the metadata sets: %s sets stand at another place"}},
    {"durations",
     {u"メディアのデュレーションを訂正しました。(%s フレーム)",
      u"durations that were unknown or wrong, %s frames now"}},
    {"noIndex",
     {u"インデックステーブルを作成しました。(%s フレーム)",
      u"the index table, which was missing, for %s frames"}},
    {"index",
     {u"インデックステーブルを作成し直しました。(%s フレーム)",
      u"the index table, which is written anew for %s frames"}},
    {"frames",
     {u"フレーム内のフィルと長さの記述を整えました。(%s フレーム)",
      u"fill and length fields of the elements in %s frames"}},
    {"cutOff",
     {u"末尾の不完全なフレームを除きました。(%s バイト)",
      u"%s bytes behind the last whole frame are left out"}},
}};
static_assert(kMends.size() == static_cast<std::size_t>(Mend::kCutOff) + 1);

}  // namespace

std::u16string MendText(const MendNote& note, platform::Language language) {
  std::u16string text(kMends[static_cast<std::size_t>(note.mend)].form.In(language));
  const std::size_t place = text.find(kPlace);
  if (place != std::u16string::npos) {
    text.replace(place, kPlace.size(), platform::ToUtf16(std::to_string(note.count)));
  }
  return text;
}

const char* MendName(Mend mend) {
  return kMends[static_cast<std::size_t>(mend)].name;
}

bool MayConform(std::int32_t analysisCode, const MXF_BASE_INFO& mxf) {
  if (mxf.indexContradicted != 0 || mxf.audio->indexedElements > UsableTracks(*mxf.audio)) {
    return true;
  }
  switch (analysisCode) {
    case kRandomIndexNotFound:
    case kPartitionOpen:
    case kNoFooterPartition:
    case kPrefaceNotFound:
    case kContentStorageNotFound:
    case kEssenceDataNotFound:
    case kIndexSidZero:
    case kEssenceDataTagsMissing:
    case kMaterialPackageNotFound:
    case kTimelineTrackMissing:
    case kSequenceMissing:
    case kTimecodeComponentMissing:
    case kDurationZero:
    case kNoSoundTrack:
    case kSourcePackageNotFound:
    case kMultipleDescriptorNotFound:
    case kPictureDescriptorNotFound:
    case kAudioDescriptorUnfit:
    case kTooManyDeltaEntries:
    case kNoIndexTable:
      return true;
    default:
      return false;
  }
}

}  // namespace quorvan
