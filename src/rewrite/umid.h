// New UMIDs for a rewritten clip (SMPTE 330M).

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "mxf/header_block.h"
#include "mxf/records.h"
#include "mxf/umid_text.h"
#include "platform/file.h"
#include "state/job_fault.h"

namespace quorvan {

using Umid = std::array<std::uint8_t, kUmidBytes>;

// A new basic UMID: bytes 7 and 10 of `old`, instance number zero, and a new UUID as material
// number, zeros where the system has none.
Umid MakeUmid(const Umid& old);

// Gives one package a new UMID: writes it in place of `*umid` to all `places`, and then the local
// time to `stamp`, where the package has one. Bytes that do not begin as a UMID stay what they are.
// Where a place cannot be written, the old UMID is put back everywhere, as far as writes succeed.
// Returns 0, with the new UMID in `*umid` if there is one; -1 for a null argument or when a write
// has failed, with the UMID in `*umid` that the places hold then.
std::int32_t RegenerateUmid(platform::File* file, Umid* umid, std::span<const MetadataPlace> places,
                            const std::optional<MetadataPlace>& stamp);

// The identity of the clip that is being rewritten, from the proof in front of the first write to
// the last look at the file.
class ClipIdentity {
 public:
  // All of it must outlive the object.
  ClipIdentity(platform::File* clip, MXF_BASE_INFO* mxf) : clip_(*clip), mxf_(*mxf) {}
  ClipIdentity(const ClipIdentity&) = delete;
  ClipIdentity& operator=(const ClipIdentity&) = delete;

  // True when both UMIDs have 32 bytes: others cannot be renewed.
  static bool CanBeRenewed(const MXF_BASE_INFO& mxf);

  // Finds every place that Renew is going to write. kNoFault; kClipChanged when the file's header
  // metadata does not hold both package sets with the UMIDs of the records, as in the clip that was
  // analysed and in no other; kClipFault. Throws when memory is out; no later step takes any.
  JobFault Locate();

  // Gives both packages new UMIDs and stamps, as far as writes succeed. What came of it, ReadBack
  // tells.
  void Renew();

  // Looks at what the header metadata holds now, puts UMIDs and dates as they stand there into the
  // records, and says which UMIDs those are.
  UmidState ReadBack();

 private:
  struct Package {
    Umid old{};
    std::optional<MetadataPlace> own;    // the PackageUID of the set
    std::vector<MetadataPlace> places;   // that one and every reference to it, ascending
    std::optional<MetadataPlace> stamp;  // PackageModifiedDate, where the set has room for it
  };

  JobFault LocatePackage(const METADATA_SET_PLACE& set, const Umid& umid, std::uint32_t size,
                         Package* package);
  UmidState StateOf(const Package& package) const;

  platform::File& clip_;
  MXF_BASE_INFO& mxf_;
  HeaderBlock header_;
  Package material_;
  Package source_;
  bool written_ = true;  // no write of Renew has failed
};

}  // namespace quorvan
