// The header metadata of a clip in memory: the order of its sets, its durations and the IndexSID
// that it names (SMPTE ST 377-1).

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "conform/partition_map.h"

namespace quorvan {

// A KLV of the copy whose value is in memory.
struct LoadedKlv {
  KlvKey key;
  std::vector<std::uint8_t> value;
};

// The Primer Pack and the sets of one partition, in their order.
using MetadataSets = std::vector<LoadedKlv>;

// A fraction like an edit rate. `denominator` is not 0.
struct Fraction {
  std::uint32_t numerator;
  std::uint32_t denominator;
};

// Reads the values of `klvs`. False when a read fails or is stopped. Throws std::bad_alloc.
bool LoadSets(const platform::File& file, const std::vector<KlvSpan>& klvs, MetadataSets* sets);

// Brings the sets of the Material Package and of the file's Source Package into the order in which
// the analysis looks for them: the package, each of its tracks with its sequence and components,
// then the descriptors. Changes nothing when the analysis finds the package's own sets as they
// stand, or when the references between the sets cannot be followed. Returns the number of sets
// that stand at another place now. Throws std::bad_alloc.
std::uint32_t OrderSets(MetadataSets* sets);

// Makes all durations of both packages and of their descriptors those of a clip of `frames` frames
// of `rate`; in a track with another edit rate, the same time in its units. With `onlyUnknown`,
// changes only durations that the sets leave open. True when a duration has changed. Throws
// std::bad_alloc.
bool SetDurations(std::uint32_t frames, Fraction rate, bool onlyUnknown, MetadataSets* sets);

// Makes the first Essence Container Data set name the IndexSID `indexSid`, when it names none.
// Throws std::bad_alloc.
void SetIndexSid(std::uint32_t indexSid, MetadataSets* sets);

// The IndexSID that the first Essence Container Data set names; 0 for none.
std::uint32_t IndexSidOf(const MetadataSets& sets);

// The SampleRate of the first picture descriptor; nothing when there is none.
std::optional<Fraction> PictureRate(const MetadataSets& sets);

// The PictureEssenceCoding label of the first picture descriptor; nothing when there is none.
std::optional<KlvKey> PictureCodingLabel(const MetadataSets& sets);

}  // namespace quorvan
