#include "conform/metadata_sets.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <utility>

#include "mxf/metadata/klv.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"

namespace quorvan {
namespace {

constexpr KlvKey kTimecodeDefinition = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01,
                                        0x01, 0x03, 0x02, 0x01, 0x01, 0x00, 0x00, 0x00};
constexpr std::uint64_t kUnknownDuration = ~std::uint64_t{0};
constexpr std::uint64_t kLongestDuration = ~std::uint64_t{0} >> 1;
constexpr std::size_t kDurationBytes = 8;
constexpr std::size_t kItemHeaderBytes = 4;

using KeyList = std::span<const KlvKey>;
constexpr std::array<KlvKey, 2> kPictureDescriptors = {keys::kMpegVideoDescriptor,
                                                       keys::kCdciDescriptor};
constexpr std::array<KlvKey, 2> kAudioDescriptors = {keys::kAes3AudioDescriptor,
                                                     keys::kWaveAudioDescriptor};
constexpr std::array<KlvKey, 1> kContainerDescriptors = {keys::kMultipleDescriptor};
constexpr std::array<KlvKey, 1> kSubDescriptors = {keys::kAvcSubDescriptor};

bool Is(const LoadedKlv& set, const KlvKey& wanted) {
  return KeyMatches(set.key.data(), wanted);
}

bool IsAny(const LoadedKlv& set, KeyList wanted) {
  return std::any_of(wanted.begin(), wanted.end(),
                     [&set](const KlvKey& key) { return Is(set, key); });
}

std::optional<std::span<const std::uint8_t>> ItemOf(const LoadedKlv& set, std::uint16_t tag) {
  LocalItem item;
  for (LocalSetWalk walk(set.value); walk.Next(&item);) {
    if (item.tag == tag) return item.value;
  }
  return std::nullopt;
}

// The bytes of the item `tag` with at least `size` bytes, for a change in place; null for none.
std::uint8_t* ItemBytes(LoadedKlv* set, std::uint16_t tag, std::size_t size) {
  const auto item = ItemOf(*set, tag);
  if (!item || item->size() < size) return nullptr;
  return set->value.data() + (item->data() - set->value.data());
}

std::optional<Fraction> FractionIn(const LoadedKlv& set, std::uint16_t tag) {
  const auto item = ItemOf(set, tag);
  if (!item || item->size() < 8) return std::nullopt;
  const Fraction fraction{ReadBe32(item->data()), ReadBe32(item->data() + 4)};
  if (fraction.numerator == 0 || fraction.denominator == 0) return std::nullopt;
  return fraction;
}

// The sets and the references between them. A set counts by its place in the list. Of several sets
// with the same instance UID, the first is meant by a reference.
class SetGraph {
 public:
  explicit SetGraph(const MetadataSets& sets) : sets_(sets), isRepeated_(sets.size()) {
    for (std::size_t i = 0; i < sets.size(); ++i) {
      const auto uid = ItemOf(sets[i], tags::kInstanceUid);
      if (!uid || uid->size() != kKlvKeyBytes) continue;
      isRepeated_[i] = !byUid_.emplace(LabelOf(uid->data()), i).second;
    }
  }

  // True when a set before `set` has the same instance UID.
  bool IsRepeated(std::size_t set) const { return isRepeated_[set]; }

  // The sets to which the items of `set` refer, in the order of the references: an item that is an
  // instance UID, and a batch of instance UIDs.
  std::vector<std::size_t> ReferencesOf(std::size_t set) const {
    std::vector<std::size_t> found;
    LocalItem item;
    for (LocalSetWalk walk(sets_[set].value); walk.Next(&item);) {
      if (item.tag != tags::kInstanceUid) AddReferences(item.value, &found);
    }
    return found;
  }

  // The tracks to which a package refers, as far as they are in the list.
  std::vector<std::size_t> TracksOf(std::size_t package) const {
    std::vector<std::size_t> found;
    if (const auto item = ItemOf(sets_[package], tags::kTracks)) AddReferences(*item, &found);
    return found;
  }

  // All sets below `set`, in the order of the references, each set in front of those to which it
  // refers; `set` is the first. Leaves out the sets in `*visited`, and adds the sets to it.
  void AddTree(std::size_t set, std::vector<bool>* visited, std::vector<std::size_t>* tree) const {
    std::vector<std::size_t> waiting = {set};
    while (!waiting.empty()) {
      const std::size_t next = waiting.back();
      waiting.pop_back();
      if ((*visited)[next]) continue;
      (*visited)[next] = true;
      tree->push_back(next);
      const std::vector<std::size_t> below = ReferencesOf(next);
      waiting.insert(waiting.end(), below.rbegin(), below.rend());
    }
  }

  // The first set with the key `key` from the place `from` on; the number of sets for none.
  std::size_t Next(const KlvKey& key, std::size_t from) const {
    while (from < sets_.size() && !Is(sets_[from], key))
      ++from;
    return from;
  }

  // The first of the sets `among` with one of the keys `wanted`; the number of sets for none.
  std::size_t FirstAmong(const std::vector<std::size_t>& among, KeyList wanted) const {
    const auto found = std::find_if(among.begin(), among.end(),
                                    [&](std::size_t set) { return IsAny(sets_[set], wanted); });
    return found == among.end() ? sets_.size() : *found;
  }

  // The Material Package that the analysis takes, and the Source Package of the file: the package
  // that refers to a Multiple Descriptor, else the first. The number of sets for none.
  std::size_t MaterialPackage() const { return Next(keys::kMaterialPackage, 0); }
  std::size_t FilePackage() const {
    const std::size_t first = Next(keys::kSourcePackage, 0);
    for (std::size_t at = first; at < sets_.size(); at = Next(keys::kSourcePackage, at + 1)) {
      if (FirstAmong(ReferencesOf(at), kContainerDescriptors) != sets_.size()) {
        return at;
      }
    }
    return first;
  }

  const MetadataSets& sets() const { return sets_; }

 private:
  static KlvKey LabelOf(const std::uint8_t* bytes) {
    KlvKey label;
    std::copy_n(bytes, label.size(), label.begin());
    return label;
  }

  void AddReferences(std::span<const std::uint8_t> value, std::vector<std::size_t>* found) const {
    const bool isBatch = value.size() >= kBatchHeaderBytes &&
                         ReadBatchHeader(value).itemSize == kKlvKeyBytes &&
                         (value.size() - kBatchHeaderBytes) % kKlvKeyBytes == 0;
    if (!isBatch && value.size() != kKlvKeyBytes) return;
    for (std::size_t at = isBatch ? kBatchHeaderBytes : 0; at < value.size(); at += kKlvKeyBytes) {
      const auto target = byUid_.find(LabelOf(value.data() + at));
      if (target != byUid_.end()) found->push_back(target->second);
    }
  }

  const MetadataSets& sets_;
  std::map<KlvKey, std::size_t> byUid_;
  std::vector<bool> isRepeated_;
};

// True when the searches of the analysis, each of which starts behind the set found before, find
// the tracks of the Material Package `package` and their own sequences and timecode components.
bool FindsOwnTracks(const SetGraph& graph, std::size_t package) {
  const MetadataSets& sets = graph.sets();
  std::vector<std::size_t> own = graph.TracksOf(package);
  std::size_t at = package;
  for (std::size_t left = own.size(); left != 0; --left) {
    const std::size_t track = at = graph.Next(keys::kTimelineTrack, at + 1);
    const auto found = std::find(own.begin(), own.end(), track);
    if (found == own.end()) return false;
    own.erase(found);
    const std::size_t sequence = at = graph.Next(keys::kSequence, at + 1);
    const std::vector<std::size_t> ofTrack = graph.ReferencesOf(track);
    if (std::find(ofTrack.begin(), ofTrack.end(), sequence) == ofTrack.end()) return false;
    const auto definition = ItemOf(sets[sequence], tags::kDataDefinition);
    if (!definition || !EqualsLabel(*definition, kTimecodeDefinition)) continue;
    at = graph.Next(keys::kTimecodeComponent, at + 1);
    const std::vector<std::size_t> ofSequence = graph.ReferencesOf(sequence);
    if (std::find(ofSequence.begin(), ofSequence.end(), at) == ofSequence.end()) return false;
  }
  return true;
}

// True when the searches of the analysis find the file's Source Package `package` and its
// descriptors.
bool FindsOwnDescriptors(const SetGraph& graph, std::size_t package) {
  const std::size_t none = graph.sets().size();
  if (graph.Next(keys::kSourcePackage, 0) != package) return false;
  const std::size_t container =
      graph.FirstAmong(graph.ReferencesOf(package), kContainerDescriptors);
  if (container == none) return true;
  const std::size_t found = graph.Next(keys::kMultipleDescriptor, package);
  if (found != container) return false;
  const std::vector<std::size_t> own = graph.ReferencesOf(container);
  // The analysis takes the first descriptor of a kind that stands behind the container.
  const auto firstBehind = [&](KeyList wanted) {
    for (const KlvKey& key : wanted) {
      const std::size_t at = graph.Next(key, found + 1);
      if (at != none) return at;
    }
    return none;
  };
  const auto isOwn = [&](KeyList wanted) {
    return graph.FirstAmong(own, wanted) == none ||
           std::find(own.begin(), own.end(), firstBehind(wanted)) != own.end();
  };
  if (!isOwn(kPictureDescriptors) || !isOwn(kAudioDescriptors)) return false;
  const std::size_t picture = firstBehind(kPictureDescriptors);
  if (picture == none) return true;
  const std::size_t ofPicture = graph.FirstAmong(graph.ReferencesOf(picture), kSubDescriptors);
  return ofPicture == none || graph.Next(keys::kAvcSubDescriptor, picture + 1) == ofPicture;
}

// The order of the sets for the analysis: all sets that belong to no package, then the Material
// Package and the file's Source Package, each with its own sets, then the other packages with
// theirs. Sets without a package whose instance UID another set has stand at the end, so that
// references in the new order mean the same sets.
std::vector<std::size_t> OrderFor(const SetGraph& graph, std::size_t material, std::size_t file) {
  const std::size_t count = graph.sets().size();
  std::vector<std::size_t> packages = {material, file};
  for (const KlvKey& key : {keys::kMaterialPackage, keys::kSourcePackage}) {
    for (std::size_t at = graph.Next(key, 0); at < count; at = graph.Next(key, at + 1)) {
      if (at != material && at != file) packages.push_back(at);
    }
  }
  std::vector<bool> visited(count);
  std::vector<std::size_t> trees;
  for (const std::size_t package : packages) {
    if (visited[package]) continue;
    visited[package] = true;
    trees.push_back(package);
    for (const std::size_t track : graph.TracksOf(package))
      graph.AddTree(track, &visited, &trees);
    for (const std::size_t below : graph.ReferencesOf(package))
      graph.AddTree(below, &visited, &trees);
  }
  std::vector<std::size_t> order, last;
  for (std::size_t i = 0; i < count; ++i) {
    if (!visited[i]) (graph.IsRepeated(i) ? last : order).push_back(i);
  }
  order.insert(order.end(), trees.begin(), trees.end());
  order.insert(order.end(), last.begin(), last.end());
  return order;
}

// `frames` of `rate` in units of `other`, rounded, and at most the longest duration.
std::uint64_t InUnitsOf(Fraction other, std::uint64_t frames, Fraction rate) {
  const long double units = static_cast<long double>(frames) * rate.denominator / rate.numerator *
                            other.numerator / other.denominator;
  return units < kLongestDuration ? static_cast<std::uint64_t>(units + 0.5L) : kLongestDuration;
}

// Sets the duration `tag` of a set. True when the set had another.
bool SetDuration(LoadedKlv* set, std::uint16_t tag, std::uint64_t duration, bool onlyUnknown) {
  std::uint8_t* item = ItemBytes(set, tag, kDurationBytes);
  if (item == nullptr || ReadBe64(item) == duration) return false;
  const bool isUnknown = ReadBe64(item) == kUnknownDuration || ReadBe64(item) == 0;
  if (onlyUnknown && !isUnknown) return false;
  PutBe64(item, duration);
  return true;
}

// The duration of the first timecode component; nothing when there is none.
std::optional<std::uint64_t> TimecodeDuration(const MetadataSets& sets) {
  for (const LoadedKlv& set : sets) {
    if (!Is(set, keys::kTimecodeComponent)) continue;
    const auto item = ItemOf(set, tags::kDuration);
    if (!item || item->size() < kDurationBytes) return std::nullopt;
    return ReadBe64(item->data());
  }
  return std::nullopt;
}

const LoadedKlv* PictureDescriptor(const MetadataSets& sets) {
  const auto found = std::find_if(sets.begin(), sets.end(), [](const LoadedKlv& set) {
    return IsAny(set, kPictureDescriptors);
  });
  return found == sets.end() ? nullptr : &*found;
}

}  // namespace

bool LoadSets(const platform::File& file, const std::vector<KlvSpan>& klvs, MetadataSets* sets) {
  for (const KlvSpan& klv : klvs) {
    LoadedKlv& set = sets->emplace_back();
    set.key = klv.key;
    set.value.resize(static_cast<std::size_t>(klv.length));
    if (file.ReadAt(klv.valueOffset, set.value.data(), set.value.size()) != set.value.size()) {
      return false;
    }
  }
  return true;
}

std::uint32_t OrderSets(MetadataSets* sets) {
  const SetGraph graph(*sets);
  const std::size_t material = graph.MaterialPackage();
  const std::size_t file = graph.FilePackage();
  if (material == sets->size() || file == sets->size()) return 0;
  const bool isFollowed = !graph.TracksOf(material).empty();
  if (!isFollowed || (FindsOwnTracks(graph, material) && FindsOwnDescriptors(graph, file))) {
    return 0;
  }
  const std::vector<std::size_t> order = OrderFor(graph, material, file);
  std::uint32_t moved = 0;
  MetadataSets ordered;
  for (std::size_t place = 0; place < order.size(); ++place) {
    if (order[place] != place) ++moved;
    ordered.push_back(std::move((*sets)[order[place]]));
  }
  *sets = std::move(ordered);
  return moved;
}

bool SetDurations(std::uint32_t frames, Fraction rate, bool onlyUnknown, MetadataSets* sets) {
  const SetGraph graph(*sets);
  const std::optional<std::uint64_t> timecode = TimecodeDuration(*sets);
  bool changed = false;
  bool isFollowed = false;
  std::vector<bool> visited(sets->size());
  for (const std::size_t package : {graph.MaterialPackage(), graph.FilePackage()}) {
    if (package == sets->size()) continue;
    for (const std::size_t track : graph.TracksOf(package)) {
      isFollowed = true;
      std::vector<std::size_t> below;
      graph.AddTree(track, &visited, &below);
      const Fraction units = FractionIn((*sets)[track], tags::kEditRate).value_or(rate);
      const bool hasSeveral = std::any_of(below.begin(), below.end(), [&](std::size_t set) {
        return Is((*sets)[set], keys::kSequence) && graph.ReferencesOf(set).size() > 1;
      });
      for (const std::size_t set : below) {
        // How long each of several components is, only the sets themselves can tell.
        const bool isPart = hasSeveral && !Is((*sets)[set], keys::kSequence);
        changed |= SetDuration(&(*sets)[set], tags::kDuration, InUnitsOf(units, frames, rate),
                               onlyUnknown || isPart);
      }
    }
  }
  for (LoadedKlv& set : *sets) {
    const Fraction units = FractionIn(set, tags::kSampleRate).value_or(rate);
    changed |=
        SetDuration(&set, tags::kContainerDuration, InUnitsOf(units, frames, rate), onlyUnknown);
    // Where no references can be followed, open durations count frames, and so do durations that
    // are as long as that of the timecode.
    if (isFollowed) continue;
    const auto item = ItemOf(set, tags::kDuration);
    const bool isOfTimecode =
        item && timecode && item->size() >= kDurationBytes && ReadBe64(item->data()) == *timecode;
    changed |= SetDuration(&set, tags::kDuration, frames, onlyUnknown || !isOfTimecode);
  }
  return changed;
}

std::uint32_t IndexSidOf(const MetadataSets& sets) {
  for (const LoadedKlv& set : sets) {
    if (!Is(set, keys::kEssenceContainerData)) continue;
    const auto item = ItemOf(set, tags::kIndexSid);
    return item && item->size() >= 4 ? ReadBe32(item->data()) : 0;
  }
  return 0;
}

void SetIndexSid(std::uint32_t indexSid, MetadataSets* sets) {
  const auto set = std::find_if(sets->begin(), sets->end(), [](const LoadedKlv& candidate) {
    return Is(candidate, keys::kEssenceContainerData);
  });
  if (set == sets->end() || IndexSidOf(*sets) != 0) return;
  if (std::uint8_t* item = ItemBytes(&*set, tags::kIndexSid, 4)) return PutBe32(item, indexSid);
  const std::size_t place = set->value.size();
  set->value.resize(place + kItemHeaderBytes + 4);
  PutBe32(set->value.data() + place, std::uint32_t{tags::kIndexSid} << 16 | 4);
  PutBe32(set->value.data() + place + kItemHeaderBytes, indexSid);
}

std::optional<Fraction> PictureRate(const MetadataSets& sets) {
  const LoadedKlv* descriptor = PictureDescriptor(sets);
  return descriptor == nullptr ? std::nullopt : FractionIn(*descriptor, tags::kSampleRate);
}

std::optional<KlvKey> PictureCodingLabel(const MetadataSets& sets) {
  const LoadedKlv* descriptor = PictureDescriptor(sets);
  if (descriptor == nullptr) return std::nullopt;
  const auto item = ItemOf(*descriptor, tags::kPictureCoding);
  if (!item || item->size() < kKlvKeyBytes) return std::nullopt;
  KlvKey label;
  std::copy_n(item->begin(), label.size(), label.begin());
  return label;
}

}  // namespace quorvan
