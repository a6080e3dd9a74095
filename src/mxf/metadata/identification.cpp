#include <algorithm>

#include "mxf/analysis.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/readers.h"
#include "platform/text.h"

namespace quorvan {
namespace {

constexpr char16_t kUnknown[] = u"unknown";
constexpr char16_t kFirstPrintable = 0x20;
constexpr char16_t kLastPrintable = 0x7E;

// A text item and the array that takes its text.
struct Field {
  std::uint16_t tag;
  char16_t* text;
  std::size_t capacity;  // char16_t, with the zero at the end
};

// Converts UTF-16 big-endian to printable ASCII and cuts the text to the size of the field. Every
// code unit that is not printable ASCII becomes a space, and so does a single byte at the end.
void ReadText(std::span<const std::uint8_t> value, const Field& field) {
  const std::size_t units = value.size() / 2 + value.size() % 2;
  const std::size_t count = std::min(units, field.capacity - 1);
  for (std::size_t i = 0; i < count; ++i) {
    const bool whole = 2 * i + 1 < value.size();
    const auto unit = static_cast<char16_t>(value[2 * i] << 8 | (whole ? value[2 * i + 1] : 0));
    const bool printable = unit >= kFirstPrintable && unit <= kLastPrintable;
    field.text[i] = printable ? unit : u' ';
  }
  field.text[count] = 0;
}

}  // namespace

std::int32_t ReadIdentification(platform::File* file, MXF_BASE_INFO* mxf) {
  if (!IsUsable(file)) return kIdentificationNoFile;
  if (mxf == nullptr) return kIdentificationNoBaseInfo;
  if (mxf->partitionTable == nullptr || *mxf->partitionTable == nullptr) {
    return kIdentificationNoCell;
  }
  const Field fields[] = {
      {tags::kCompanyName, mxf->companyName, std::size(mxf->companyName)},
      {tags::kProductName, mxf->productName, std::size(mxf->productName)},
      {tags::kProductVersion, mxf->productVersion, std::size(mxf->productVersion)},
      {tags::kPlatform, mxf->platform, std::size(mxf->platform)},
  };
  platform::CopyText(mxf->companyName, std::size(mxf->companyName), kUnknown);
  platform::CopyText(mxf->productName, std::size(mxf->productName), kUnknown);
  platform::CopyText(mxf->platform, std::size(mxf->platform), kUnknown);

  std::uint64_t length = 0;
  const std::uint64_t limit = (*mxf->partitionTable)[0].headerByteCount;
  if (FindKlvKey(file, keys::kIdentification, 0, limit, &length) == 0) return kSuccess;
  const auto set = MetadataSet::Read(file, length);
  if (!set) return kSuccess;

  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    for (const Field& field : fields) {
      if (field.tag == item.tag) ReadText(item.value, field);
    }
  }
  return kSuccess;
}

}  // namespace quorvan
