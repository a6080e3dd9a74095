// New UMIDs for a rewritten clip (SMPTE 330M).

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "mxf/metadata/header_block.h"
#include "mxf/metadata/package_uid.h"
#include "mxf/records.h"
#include "platform/file.h"
#include "state/job_fault.h"

namespace quorvan {

using Umid = std::array<std::uint8_t, kUmidBytes>;

// A new basic UMID: bytes 7 and 10 of `old`, instance number zero, and a new UUID as material
// number, zeros where the system has none.
Umid MakeUmid(const Umid& old);

// The modification stamp of a package: year, month, day, hour, minute, second, day of the week.
using PackageStamp = std::array<std::uint8_t, 8>;

// Gives one package a new UMID: writes it in place of `*umid` to all `references`, then to `own`,
// the package's PackageUID, and then `stamp` to `stampPlace`, where the package has one. Bytes that
// do not begin as a UMID stay what they are. Where a reference cannot be written, the old UMID is
// put back, as far as writes succeed, and the package keeps its own: an interrupted step therefore
// leaves references to a package that is not there, and never a package that nothing refers to.
// Returns 0, with the new UMID in `*umid` if there is one; -1 for a null argument or when a write
// has failed, with the UMID in `*umid` that the package has then.
std::int32_t RegenerateUmid(platform::File* file, Umid* umid,
                            std::span<const MetadataPlace> references, const MetadataPlace& own,
                            const std::optional<MetadataPlace>& stampPlace,
                            const PackageStamp& stamp);

enum class UmidWidth {
  kBasic,     // 32 bytes: only such UMIDs can be renewed
  kExtended,  // 64 bytes
  kUnknown,   // any other
};

// The widest of the clip's two UMIDs; kUnknown when either of them is.
UmidWidth WidthOfUmids(const MXF_BASE_INFO& mxf);

// The identity of the clip that is being rewritten, from the proof in front of the first write to
// the last look at the file.
class ClipIdentity {
 public:
  // All of it must outlive the object.
  ClipIdentity(platform::File* clip, MXF_BASE_INFO* mxf) : clip_(*clip), mxf_(*mxf) {}
  ClipIdentity(const ClipIdentity&) = delete;
  ClipIdentity& operator=(const ClipIdentity&) = delete;

  // Finds every place that Renew is going to write. kNoFault; kClipChanged when the file's header
  // metadata does not hold the UMIDs of the records in both package sets, as the clip that was
  // analysed does and no other; kHeaderUnfit when a package set that was accepted does not lie in
  // the header metadata, or has a UMID of neither 32 nor 64 bytes; kClipFault. Throws when memory
  // is out; no later step takes any.
  JobFault Locate();

  // Gives both packages new UMIDs and stamps, as far as writes succeed, and writes nothing when the
  // header metadata cannot be read or is no longer what Locate has seen. What came of it, ReadBack
  // tells.
  void Renew();

  // Looks at what the header metadata holds now, puts UMIDs and dates as they stand there into the
  // records, and says which UMIDs those are. kUmidsRenewed means that every byte of the header
  // metadata is what it should be. Where nothing can be read, the records get the UMIDs that were
  // written.
  UmidState ReadBack();

 private:
  struct Package {
    Umid old{};
    Umid fresh{};                             // what its places are to hold
    std::optional<MetadataPlace> own;         // the PackageUID of the set
    std::vector<MetadataPlace> references;    // every other place
    std::optional<MetadataPlace> stampPlace;  // PackageModifiedDate, where the set has room for it
  };

  JobFault LocatePackage(const METADATA_SET_PLACE& set, const Umid& umid, Package* package);
  void Expect(const Package& package);
  bool HoldsThroughout(const Package& package, const Umid& umid) const;
  bool IsAsExpected(bool stamped);

  platform::File& clip_;
  MXF_BASE_INFO& mxf_;
  HeaderBlock wanted_;  // the header metadata as it was, then as it is to be
  HeaderBlock now_;
  Package material_;
  Package source_;
  PackageStamp stamp_{};
};

}  // namespace quorvan
