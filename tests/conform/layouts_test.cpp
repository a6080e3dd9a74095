// Clips in the layouts of many writers: each loads, or its conformed copy does, and a rewrite of it
// then changes the audio that it was asked to change, and nothing else.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "conformed.h"
#include "mxf/essence/audio_element.h"
#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_mapped.h"
#include "support/command.h"
#include "support/loaded_clip.h"

namespace quorvan::test {
namespace {

using enum IndexPlacement;
using Segments = std::vector<IndexSegment>;

// A clip whose five-frame sample pattern goes on across partitions.
ClipSpec Of(ClipSpec spec) {
  spec.frames = 13;
  spec.references = true;
  spec.dataTrack = spec.dataElement;
  return spec;
}

ClipSpec WithIndex(void (*edit)(Segments&)) {
  return Of({.indexEdits = {edit}});
}

ClipSpec WithoutIndexSid() {
  ClipSpec spec = WithIndex([](Segments& s) { s.clear(); });
  return spec.SetTag(SetKind::kEssenceContainerData, 0, tag::kIndexSid, Big32(0));
}

void MoveEntries(Segments& segments) {
  for (IndexSegment& segment : segments) {
    for (IndexEntry& entry : segment.entries)
      entry.streamOffset += 512;
  }
}

struct Layout {
  const char* name;
  bool loads;          // as it is, and the index leads to all audio
  std::string mended;  // by the copy, beside the layout
  ClipSpec spec;
};

const Layout kLayouts[] = {
    {"plain", true, "", Of({})},
    {"index in its own partition", true, "", Of({.indexPlacement = kOwnPartition})},
    {"index in the footer", true, "", Of({.indexPlacement = kFooter, .fillBetweenSegments = true})},
    {"index twice", true, "",
     Of({.indexPlacement = kFollowingAndFooter, .fillBetweenSegments = true})},
    {"sets in turn", false, "setOrder", Of({.setsInTurn = true})},
    {"metadata everywhere", true, "", Of({.metadataEverywhere = true})},
    {"one body of many segments", true, "index",
     Of({.framesPerPartition = 0, .framesPerSegment = 3, .indexPlacement = kFooter})},
    {"segments through partitions", true, "index",
     Of({.framesPerPartition = 3, .framesPerSegment = 5, .indexPlacement = kFooter})},
    {"constant bytes", true, "index", Of({.constantBytes = true})},
    {"constant bytes, uneven", true, "index", Of({.rate = Rate::k29_97, .constantBytes = true})},
    {"constant bytes, one body", true, "index",
     Of({.framesPerPartition = 0, .constantBytes = true})},
    {"two audio slices", false, "index", Of({.audioSlices = 2})},
    {"a slice for each element", false, "index frames",
     Of({.rate = Rate::k29_97, .noFill = true, .dataElement = true, .audioSlices = 5})},
    {"KAG of 1", false, "", Of({.kagSize = 1})},
    {"no fill", false, "", Of({.noFill = true})},
    {"no fill, uneven", false, "index frames", Of({.rate = Rate::k29_97, .noFill = true})},
    {"no fill, uneven, 16 bit", false, "index frames",
     Of({.rate = Rate::k29_97, .bits = 16, .noFill = true})},
    {"mixed lengths", false, "", Of({.mixedLengths = true})},
    {"mixed element lengths", false, "index frames", Of({.mixedElementLengths = true})},
    {"mixed lengths, no fill", false, "index frames",
     Of({.noFill = true, .mixedLengths = true, .mixedElementLengths = true})},
    {"Wave", true, "", Of({.waveAudio = true})},
    {"Wave with data, no fill", false, "index frames",
     Of({.rate = Rate::k59_94,
         .bits = 16,
         .waveAudio = true,
         .noFill = true,
         .dataElement = true})},
    {"data", true, "", Of({.dataElement = true})},
    {"data, mixed element lengths", false, "index frames",
     Of({.dataElement = true, .mixedElementLengths = true})},
    {"no system element", false, "index", Of({.systemElement = false})},
    {"30 tracks", false, "index", Of({.tracks = 30, .bits = 16})},
    {"all at once", false, "setOrder index frames",
     Of({.rate = Rate::k29_97,
         .noFill = true,
         .systemElement = false,
         .setsInTurn = true,
         .metadataEverywhere = true,
         .mixedLengths = true,
         .mixedElementLengths = true,
         .audioSlices = 3})},
    {"no segments", false, "noIndex", WithIndex([](Segments& s) { s.clear(); })},
    {"no segments and no IndexSID", false, "noIndex", WithoutIndexSid()},
    {"wrong stream offsets", false, "index", WithIndex(MoveEntries)},
    {"last frame missing", false, "index", WithIndex([](Segments& s) {
       s.back().entries.pop_back();
       --s.back().duration;
     })},
    {"last segment missing", false, "index", WithIndex([](Segments& s) { s.pop_back(); })},
    {"one wrong delta", false, "index",
     WithIndex([](Segments& s) { s[1].deltas[3].elementDelta += 16; })},
};

// True when the index leads to the audio that the builder made, track by track.
bool LeadsToAllAudio(const Clip& clip, const Bytes& file, const MxfRecords& records) {
  const auto& frames = clip.layout.frames;
  const auto tracks = static_cast<std::uint32_t>(frames[0].audio.size());
  if (records.timecode.frameCount != frames.size() || records.audio.trackCount != tracks) {
    return false;
  }
  for (std::uint32_t f = 0; f < frames.size(); ++f) {
    for (std::uint32_t t = 0; t < std::min(tracks, kMaxTracks); ++t) {
      const KlvPlace& built = frames[f].audio[t];
      const auto found = LocateElementValue(records.base, records.indexEntries[f], t);
      if (!found || found->bytes() != built.valueBytes) return false;
      const auto value = clip.bytes.begin() + static_cast<long>(built.value);
      if (!std::equal(value, value + found->bytes(),
                      file.begin() + static_cast<long>(found->fileOffset()))) {
        return false;
      }
    }
  }
  return true;
}

bool Loads(const Clip& clip) {
  const TempFolder folder;
  const std::u16string path = folder.Write("clip.mxf", clip.bytes);
  auto file = platform::File::Open(path, platform::OpenMode::kReadAlone);
  MxfRecords records;
  return AnalyzeMxfFile(&file, &records.base) == 0 && LeadsToAllAudio(clip, clip.bytes, records);
}

// The copy has the elements of every frame, whatever their lengths and fill, and nothing else.
void ExpectSameElements(const Clip& clip, const Bytes& copy, const MxfRecords& records) {
  for (std::size_t f = 0; f < clip.layout.frames.size(); ++f) {
    const FramePlace& frame = clip.layout.frames[f];
    std::vector<KlvPlace> built{frame.system, frame.picture};
    if (frame.system.key == 0) built.erase(built.begin());
    built.insert(built.end(), frame.audio.begin(), frame.audio.end());
    if (frame.data) built.push_back(*frame.data);
    const std::uint8_t* at = copy.data() + records.indexEntries[f].fileOffset;
    for (const KlvPlace& element : built) {
      std::uint64_t length = 0;
      const auto next = [&] { return at + ReadKlvHeader({at, kMostKlvHeaderBytes}, &length); };
      const std::uint8_t* value = next();
      for (; KeyMatches(at, keys::kFill); value = next())
        at = value + length;
      ASSERT_EQ(length, element.valueBytes) << "frame " << f;
      EXPECT_TRUE(std::equal(at, at + 16, clip.bytes.data() + element.key)) << "frame " << f;
      EXPECT_TRUE(std::equal(value, value + length, clip.bytes.data() + element.value));
      at = value + length;
    }
  }
}

// Takes the new UMIDs and modification dates of the header metadata, which end at `end`, from
// `now`.
void RenewIdentity(const Bytes& now, std::uint64_t end, Bytes* expected) {
  const auto renew = [&](const Bytes& mark, long from, long bytes) {
    const auto stop = expected->begin() + static_cast<long>(end);
    auto at = std::search(expected->begin(), stop, mark.begin(), mark.end());
    EXPECT_NE(at, stop);
    for (; at != stop; at = std::search(at + 1, stop, mark.begin(), mark.end())) {
      const auto renewed = now.begin() + (at - expected->begin()) + from;
      EXPECT_FALSE(std::equal(renewed, renewed + bytes, at + from));
      std::copy_n(renewed, bytes, at + from);
    }
  };
  renew({kMaterialUmid.begin(), kMaterialUmid.end()}, 0, 32);
  renew({kSourceUmid.begin(), kSourceUmid.end()}, 0, 32);
  renew(Bytes{0x44, 0x04, 0, 8}, 4, 8);
}

// Silences the first and the last track of `file`, which is `clip` or its copy, with each engine.
void ExpectRewritten(const ClipSpec& spec, const Clip& clip, const Bytes& file) {
  for (const auto engine : {RewrapMapped, RewrapFileIo}) {
    LoadedClip job(spec, clip, &file);
    ASSERT_EQ(job.analysis, 0);
    Bytes expected = file;
    for (const std::uint32_t track : {0U, std::min(spec.tracks, kMaxTracks) - 1}) {
      job.app.tracks.rewrapSwitch[track] = kSwitchOn;
      for (std::uint32_t f = 0; f < spec.frames; ++f) {
        const auto value = LocateElementValue(job.app.mxf.base, job.app.mxf.indexEntries[f], track);
        Patch(expected, value->fileOffset(), Bytes(value->bytes()));
      }
    }
    ASSERT_EQ(engine(job.path.c_str(), &job.app.tracks, job.app.info.mxf), 0);
    const Bytes now = job.Now();
    RenewIdentity(now, job.app.mxf.partitionTable[1].thisPartition, &expected);
    EXPECT_TRUE(now == expected);
  }
}

// Stream, size and checksum of each packet that ffprobe finds.
std::string PacketsOf(const std::string& path) {
  return RunCommand(
             "ffprobe -v quiet -of csv=p=0 -show_data_hash md5 "
             "-show_entries packet=stream_index,size,data_hash " +
             path)
      .output;
}

void ExpectLayout(const Layout& layout) {
  const auto& [name, loads, mended, spec] = layout;
  const Clip clip = BuildClip(spec);
  EXPECT_EQ(Loads(clip), loads);
  if (loads) ExpectRewritten(spec, clip, clip.bytes);

  const TempFolder folder;
  const ConformResult result = Conform(folder, clip.bytes);
  ASSERT_TRUE(result.IsDone()) << result.reason.en;
  EXPECT_EQ(MendedBy(result), mended);
  const Bytes copy = ReadAll(folder.Path() / "out.mxf");
  const LoadedClip loaded(spec, clip, &copy);
  ASSERT_TRUE(LeadsToAllAudio(clip, copy, loaded.app.mxf));
  EXPECT_EQ(loaded.app.mxf.base.ancillaryElementSize != 0, spec.dataElement);
  ExpectSameElements(clip, copy, loaded.app.mxf);
  if (mended.find("frames") == std::string::npos) ExpectSameFrames(clip, copy, spec.frames);
  ExpectTrueOffsets(copy);
  ExpectRewritten(spec, clip, copy);
  EXPECT_EQ(Conformed(copy), copy);
  const std::string before = PacketsOf(folder.Path() / "in.mxf");
  EXPECT_NE(before, "");
  EXPECT_EQ(before, PacketsOf(folder.Path() / "out.mxf"));
}

TEST(Layouts, LoadAfterACopyAtTheLatestAndAreRewrittenAsTheIndexSays) {
  for (const Layout& layout : kLayouts) {
    SCOPED_TRACE(layout.name);
    ExpectLayout(layout);
  }
}

}  // namespace
}  // namespace quorvan::test
