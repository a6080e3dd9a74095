// What an index table says about the pictures of a frame-wrapped clip (SMPTE ST 377-1, index
// entry), from the first bytes of each coded picture.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quorvan {

enum class PictureCoding : std::uint8_t {
  kMpeg2,  // elementary stream, ISO/IEC 13818-2
  kAvc,    // byte stream with start codes, ISO/IEC 14496-10
  kOther,  // its pictures stay unknown
};

enum class PictureType : std::uint8_t { kUnknown, kIntra, kPredicted, kBidirectional };

// What the headers of one coded frame say. Of two fields, the first one counts.
struct PictureFacts {
  PictureType type = PictureType::kUnknown;
  bool hasSequenceHeader = false;  // AVC: a sequence parameter set
  bool startsGop = false;          // a GOP header; AVC: IDR or a sequence parameter set
  bool closedGop = false;          // of a started GOP: no picture needs the GOP before; AVC: IDR

  // MPEG-2: place in the display order of the GOP, modulo 1024. AVC: none.
  std::optional<std::uint16_t> temporalReference{};

  bool operator==(const PictureFacts&) const = default;
};
static_assert(sizeof(PictureFacts) == 8);

// Number of bytes of a picture that hold its headers in practice. AVC without an access unit
// delimiter may need more, when long messages (SEI) precede the slice.
inline constexpr std::size_t kPictureHeadBytes = 1024;

// Reads the facts of one frame from `head`, the first bytes of its coded picture:
// kPictureHeadBytes, or the whole picture if that is shorter. Any bytes are allowed; what `head`
// does not hold keeps its default. Throws nothing.
PictureFacts ReadPictureFacts(PictureCoding coding, std::span<const std::uint8_t> head);

// The part of an index entry that describes the picture.
struct IndexPicture {
  // Number of edit units from this place in the display order to where the picture that is
  // displayed here is stored.
  std::int8_t temporalOffset = 0;

  // Number of edit units from the picture stored here back to the intra picture where decoding has
  // to start, 0 or negative.
  std::int8_t keyFrameOffset = 0;

  // Bit 7: random access; bit 6: sequence header; bit 5: forward prediction; bit 4: backward
  // prediction; bits 1 and 0: 0 intra, 2 predicted, 3 bidirectional. 0 for an unknown picture.
  std::uint8_t flags = 0;

  bool operator==(const IndexPicture&) const = default;
};

// Returns one element for each element of `facts`, which holds all frames of a clip in the order of
// the file. A bidirectional picture between the intra picture of an open GOP and the next predicted
// one needs the GOP before: its keyFrameOffset leads there, and the intra picture is no random
// access point. In a closed GOP of MPEG-2 it has backward prediction only. Every picture of an
// all-intra clip is a random access point.
//
// temporalOffset is 0 for AVC, whose display order stands deeper in the stream, and where the GOP
// lacks the picture; when the last GOP lacks pictures, those that are displayed behind them move
// up. Offsets that do not fit are clamped to -128 or 127; keyFrameOffset is 0 for an unknown
// picture. Throws std::bad_alloc.
std::vector<IndexPicture> IndexPictures(std::span<const PictureFacts> facts);

}  // namespace quorvan
