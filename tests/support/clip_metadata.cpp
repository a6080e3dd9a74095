#include <algorithm>
#include <map>
#include <sstream>
#include <string>

#include "support/clip_parts.h"
#include "support/temp_folder.h"
#include "timecode/timecode.h"

namespace quorvan::test {

const std::array<std::uint8_t, 32> kMaterialUmid{
    0x06, 0x0A, 0x2B, 0x34, 1,    1,    1,    5,    1,    1,    0x0F, 0x20, 0x13, 0,    0,    0,
    0x4D, 0x31, 0x85, 0xC2, 0x17, 0x9E, 0x44, 0xA0, 0x8B, 0x5C, 0x6D, 0x02, 0xF1, 0x33, 0x90, 0x7E};
const std::array<std::uint8_t, 32> kSourceUmid{
    0x06, 0x0A, 0x2B, 0x34, 1,    1,    1,    5,    1,    1,    0x0D, 0x20, 0x13, 0,    0,    0,
    0x53, 0x72, 0x1B, 0xE9, 0x64, 0x0A, 0x4F, 0xD5, 0x91, 0x26, 0xB8, 0x7C, 0x3E, 0x49, 0x05, 0xAA};

namespace {

constexpr Label kAudioKey{0x06, 0x0E, 0x2B, 0x34, 1, 2, 1, 1, 0x0D, 1, 3, 1, 0x16, 0, 3, 0};
constexpr std::uint32_t kSampleRate = 48000;
constexpr std::uint32_t kFirstAvcCodec = 5;
constexpr std::uint16_t kUsualBitRateTag = 0x8000;  // in header_sets.txt
constexpr std::uint16_t kReferenceCell = 0;         // there, too

// Puts the lines of header_sets.txt together.
class HeaderBuilder {
 public:
  explicit HeaderBuilder(const ClipSpec& spec) : spec_(spec) {
    const RateRow& rate = RowOf(spec.rate);
    const auto base = static_cast<std::uint16_t>(FramesPerSecond(rate.fpsIndex));
    const auto blockAlign = static_cast<std::uint16_t>(spec.bits / 8);
    told_ = {{tag::kEssenceContainers, {}},
             {tag::kLinkedPackageUid, Umid(kSourceUmid)},
             {tag::kDuration, Big64(spec.frames)},
             {tag::kContainerDuration, Big64(spec.frames)},
             {tag::kStartTimecode, Big64(FrameCount(spec.start, spec.rate, spec.dropFrame))},
             {tag::kRoundedTimecodeBase, Big16(base)},
             {tag::kDropFrame, {spec.dropFrame}},
             {tag::kSampleRate, Big32(rate.numerator) + Big32(rate.denominator)},
             {tag::kEditRate, Big32(rate.numerator) + Big32(rate.denominator)},
             {tag::kDisplayHeight, Big32(spec.height)},
             {tag::kDisplayWidth, Big32(spec.width)},
             {tag::kFrameLayout, {spec.frameLayout}},
             {tag::kAvcMaximumBitRate, Big32(spec.bitRate)},
             {spec.bitRateTag, Big32(spec.bitRate)},
             {tag::kQuantizationBits, Big32(spec.bits)},
             {tag::kAvgBps, Big32(kSampleRate * blockAlign)},
             {tag::kBlockAlign, Big16(blockAlign)}};
  }

  HeaderSets Build() {
    Add(spec_.codec < kFirstAvcCodec ? "mpegPrimer" : "avcPrimer");
    Add("front");
    AddPackage("material", kMaterialUmid, Umid(kSourceUmid));
    AddPackage("source", kSourceUmid, Bytes(spec_.umidSize));
    Add("multiple");
    Add("codec" + std::to_string(spec_.codec));
    Add(spec_.waveAudio ? "wave" : "aes3", spec_.tracks);
    Add("dataDescriptor", spec_.dataTrack);
    SetOf(sets_, SetKind::kPreface).SetTag(tag::kEssenceContainers, Containers());
    if (spec_.setsInTurn) OrderInTurn();
    return std::move(sets_);
  }

 private:
  void Add(const std::string& part, std::uint32_t times = 1) {
    for (std::uint32_t n = 0; n < times; ++n) {
      std::istringstream lines(text_);
      for (std::string line; std::getline(lines, line);)
        if (line.starts_with(part + ' ')) AddSet(std::istringstream(line.substr(part.size())));
    }
  }

  void AddSet(std::istringstream cells) {
    std::uint32_t kind = 0;
    std::uint16_t tag = 0;
    cells >> std::hex >> kind;
    MetadataSet set = EmptySet(static_cast<SetKind>(kind), sets_.size());
    for (std::string value; cells >> tag >> value;) {
      if (tag == kUsualBitRateTag) tag = spec_.bitRateTag;
      if (tag == kReferenceCell && !spec_.references) break;
      if (tag == kReferenceCell)
        Refer(set.items[0].value, FromHex(value));
      else
        set.items.push_back({tag, value == "*" ? told_.at(tag) : FromHex(value)});
    }
    sets_.push_back(std::move(set));
  }

  // `cell` as header_sets.txt explains it.
  void Refer(const Bytes& uid, const Bytes& cell) {
    const auto parent = std::find_if(sets_.rbegin(), sets_.rend(), [&](const MetadataSet& set) {
      const bool source = set.kind == SetKind::kSourcePackage;
      return (source ? SetKind::kMaterialPackage : set.kind) == static_cast<SetKind>(cell[0]);
    });
    const auto tag = static_cast<tag::Tag>(cell[1] << 8 | cell[2]);
    Bytes& uids = references_[{parent->items[0].value, tag}];
    uids = std::move(uids) + uid;
    const auto count = static_cast<std::uint32_t>(uids.size() / sizeof(Label));
    parent->SetTag(tag, cell[3] != 0 ? Batch(count, sizeof(Label), uids) : uids);
    if (tag == tag::kSubDescriptors)
      told_[tag::kLinkedTrackId] = Big32(spec_.timecodeTracks + count);
    if (tag != tag::kTracks) return;
    const Label sound = AudioElementKey(spec_, count - spec_.timecodeTracks - 2);
    told_[tag::kTrackId] = Big32(count);
    told_[tag::kTrackNumber] = Bytes(sound.begin() + 12, sound.end());
    told_[tag::kSourceTrackId] = Big32(parent->kind == SetKind::kMaterialPackage ? count : 0);
  }

  // Track n of both packages stands in front of track n + 1, and the descriptors at the end.
  void OrderInTurn() {
    std::map<std::size_t, HeaderSets> turns;
    std::size_t turn = 0;
    for (MetadataSet& set : sets_) {
      if (set.kind == SetKind::kSourcePackage) turn = 0;
      if (set.kind == SetKind::kTimelineTrack) ++turn;
      if (set.kind == SetKind::kMultipleDescriptor) turn = sets_.size();
      turns[turn].push_back(std::move(set));
    }
    sets_.clear();
    for (const auto& [number, sets] : turns)
      sets_.insert(sets_.end(), sets.begin(), sets.end());
  }

  static Bytes FromHex(const std::string& digits) {
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
      bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
  }

  // A package with its tracks, whose clips come from the package of UMID `clipsOf`.
  void AddPackage(const char* part, const std::array<std::uint8_t, 32>& umid,
                  const Bytes& clipsOf) {
    // References of 0 to the tracks, unless the description asks for real ones.
    const std::size_t tracks = spec_.timecodeTracks + 1 + spec_.tracks + spec_.dataTrack;
    told_[tag::kTracks] = Batch(tracks, sizeof(Label), Bytes(tracks * sizeof(Label)));
    told_[tag::kPackageUid] = Umid(umid);
    told_[tag::kSourcePackageId] = clipsOf;
    Add(part);
    Add("timecode", spec_.timecodeTracks);
    Add("picture");
    Add("sound", spec_.tracks);
    Add("data", spec_.dataTrack);
  }

  Bytes Umid(const std::array<std::uint8_t, 32>& basic) const {
    Bytes umid(spec_.umidSize, 0x20);
    std::copy_n(basic.begin(), std::min(basic.size(), umid.size()), umid.begin());
    if (umid.size() > basic.size()) umid[11] = 0x33;
    return umid;
  }

  // Those that the descriptors name, each once.
  Bytes Containers() const {
    Bytes labels;
    for (const MetadataSet& set : sets_)
      for (const auto& [tag, value] : set.items)
        if (tag == tag::kEssenceContainer &&
            std::search(labels.begin(), labels.end(), value.begin(), value.end()) == labels.end())
          labels = std::move(labels) + value;
    return Batch(labels.size() / sizeof(Label), sizeof(Label), labels);
  }

  const ClipSpec& spec_;
  const Bytes file_ = ReadAll(TESTS_FOLDER "/support/header_sets.txt");
  const std::string text_{file_.begin(), file_.end()};
  std::map<std::uint16_t, Bytes> told_;
  std::map<std::pair<Bytes, tag::Tag>, Bytes> references_;  // by InstanceUID and tag
  HeaderSets sets_;
};

}  // namespace

HeaderSets BuildHeaderSets(const ClipSpec& spec) {
  return HeaderBuilder(spec).Build();
}

Label AudioElementKey(const ClipSpec& spec, std::uint32_t track) {
  Label key = kAudioKey;
  key[13] = static_cast<std::uint8_t>(spec.tracks);
  key[14] = spec.waveAudio ? 1 : 3;
  key[15] = static_cast<std::uint8_t>(track + 1);
  return key;
}

}  // namespace quorvan::test
