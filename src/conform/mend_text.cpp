#include <fmt/format.h>

#include <array>

#include "conform/conform.h"
#include "mxf/analysis.h"

namespace quorvan {
namespace {

struct MendRow {
  const char* name;
  const char* form;  // with the count
};

// By Mend.
constexpr std::array<MendRow, 13> kMends = {{
    {"layout", "length fields and fill of the metadata and the partition packs"},
    {"byteCounts", "byte counts in {} partition packs that did not end at a KLV"},
    {"randomIndex", "the Random Index Pack, which was missing or wrong"},
    {"bytesBehind", "{} bytes behind the Random Index Pack are left out"},
    {"footer", "the footer partition, which was missing"},
    {"openPartitions", "{} partitions that were open or incomplete"},
    {"metadataOfPartition", "the header gets the complete metadata of the partition at byte {}"},
    {"setOrder", "the order of the metadata sets: {} sets stand at another place"},
    {"durations", "durations that were unknown or wrong, {} frames now"},
    {"noIndex", "the index table, which was missing, for {} frames"},
    {"index", "the index table, which is written anew for {} frames"},
    {"frames", "fill and length fields of the elements in {} frames"},
    {"cutOff", "{} bytes behind the last whole frame are left out"},
}};
static_assert(kMends.size() == static_cast<std::size_t>(Mend::kCutOff) + 1);

}  // namespace

std::string MendText(const MendNote& note) {
  return fmt::format(fmt::runtime(kMends[static_cast<std::size_t>(note.mend)].form), note.count);
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
