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

// Makes a new basic UMID. It keeps bytes 7 and 10 (zero-based) of `old`. The instance number is
// zero. The material number is a new UUID, or zeros when the system cannot make a UUID. Throws
// nothing.
Umid MakeUmid(const Umid& old);

// The modification stamp of a package, as it stands in the file: year (two bytes, high byte first),
// month, day, hour, minute, second, day of the week. Local time.
using PackageStamp = std::array<std::uint8_t, 8>;

// Gives one package a new UMID. Writes the new UMID in place of `*umid` to all `references`, then
// to `own`, the package's PackageUID, and then `stamp` to `stampPlace` when the package has one. An
// interruption before `own` is written leaves references that lead to no package. When `*umid` does
// not begin as a UMID, it stays and only the stamp is written. A write that fails is tried once
// more. When a UMID still cannot be written, the old UMID is put back everywhere, as far as writes
// succeed.
//
// Returns 0, with the package's UMID in `*umid`. Returns -1 for a null argument, or when a write
// has failed: `*umid` is then the old UMID, or the new UMID when only the stamp was not written.
// Throws nothing.
std::int32_t RegenerateUmid(platform::File* file, Umid* umid,
                            std::span<const MetadataPlace> references, const MetadataPlace& own,
                            const std::optional<MetadataPlace>& stampPlace,
                            const PackageStamp& stamp);

// True when a UMID of the clip's two packages has 64 bytes, by the sizes in the records. Only UMIDs
// of 32 bytes can be renewed.
bool HasExtendedUmid(const MXF_BASE_INFO& mxf);

// Renews the UMIDs of the clip that is being rewritten, in three steps: Locate before the first
// write, Renew when all audio is on the medium, ReadBack at the end.
class ClipIdentity {
 public:
  // `*clip` and `*mxf` must outlive the object. Call Locate when the clip is open.
  ClipIdentity(platform::File* clip, MXF_BASE_INFO* mxf) : clip_(*clip), mxf_(*mxf) {}
  ClipIdentity(const ClipIdentity&) = delete;
  ClipIdentity& operator=(const ClipIdentity&) = delete;

  // Finds every place in the header metadata that Renew is going to write. Returns kNoFault;
  // kClipChanged when a package set does not hold the UMID of the records, so that the file is not
  // the clip that was analysed; kHeaderUnfit when the header metadata cannot be located, a package
  // set does not lie in it or has no PackageUID, a UMID has neither 32 nor 64 bytes, or a UMID
  // stands in more places than any clip has; kClipFault when the clip cannot be read. Throws
  // std::bad_alloc; the later steps allocate nothing.
  JobFault Locate();

  // Gives both packages new UMIDs and the stamp of the present local time, as far as writes
  // succeed. Writes nothing when the header metadata cannot be read or has changed since Locate.
  // ReadBack tells the outcome. Throws nothing.
  void Renew();

  // Reads the header metadata again, puts the UMIDs and dates that it holds into the records, and
  // returns what it holds. kUmidsRenewed: every byte of the header metadata is as expected.
  // kUmidsUndated: every byte but those of the stamps. kUmidsOld: all places hold the old UMIDs.
  // kUmidsMixed: anything else. kUmidsUnknown: the header metadata cannot be read, and the records
  // get the UMIDs that Renew has written. Throws nothing.
  UmidState ReadBack();

 private:
  struct Package {
    Umid old{};
    Umid fresh{};                             // UMID that all places must hold after Renew
    std::optional<MetadataPlace> own;         // PackageUID of the package's set
    std::vector<MetadataPlace> references;    // every other place of the UMID
    std::optional<MetadataPlace> stampPlace;  // PackageModifiedDate; nothing when the set has none
  };

  JobFault LocatePackage(const METADATA_SET_PLACE& set, const Umid& umid, Package* package);
  void Expect(const Package& package);
  bool HoldsThroughout(const Package& package, const Umid& umid) const;
  bool IsAsExpected(bool stamped);

  platform::File& clip_;
  MXF_BASE_INFO& mxf_;
  HeaderBlock wanted_;  // the header metadata as Locate read it; Renew puts in what it writes
  HeaderBlock now_;     // the header metadata as it was read last
  Package material_;
  Package source_;
  PackageStamp stamp_{};
};

}  // namespace quorvan
