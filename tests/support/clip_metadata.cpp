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
    std::vector<MetadataItem> items;
    cells >> std::hex >> kind;
    for (std::string value; cells >> tag >> value;) {
      if (tag == kUsualBitRateTag) tag = spec_.bitRateTag;
      items.push_back({tag, value == "*" ? told_.at(tag) : FromHex(value)});
    }
    sets_.push_back(EmptySet(static_cast<SetKind>(kind), sets_.size(), items));
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
    // References to the tracks, which no reader follows.
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
