// The stages of all operations: their process codes, names and texts, the text of every failure,
// and the messages that tell a job's outcome. Texts are those of the user interface, in Japanese.
//
// A stage's failures are its process code plus 1 to 14; 0 is success and kCancelled a stop by the
// operator, for every stage alike.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "state/app_state_info.h"

namespace quorvan {

// Process code under which a job of `jobKind` runs: 2000 to 6000. `useFileIo` is 0 for mapped views
// and anything else for plain file access. 0 for an analysis, which enters its stages itself, and
// for an unknown kind.
std::uint32_t JobProcessCode(std::uint32_t jobKind, std::uint32_t useFileIo);

// What a job of `jobKind` is called in its messages; empty for an analysis and an unknown kind.
std::u16string_view JobTitle(std::uint32_t jobKind);

// How a job gets at the clip: mapped views for 0, plain file access for anything else.
std::u16string_view MethodName(std::uint32_t useFileIo);

// Name of the stage with `processCode`; empty for stage 6000 and for a code of no stage.
std::u16string_view StageName(std::uint32_t processCode);

// What the stage is doing, for the operator to read meanwhile; a general text for a code without
// one.
std::u16string_view StageText(std::uint32_t processCode);

// Why `result` came out of the stage with `processCode`; a filler text when the stage knows no such
// result or there is no such stage. A measurement knows its results from 4001 on. At most 255
// characters.
std::u16string_view FailureText(std::uint32_t processCode, std::int32_t result);

// The messages. `mxfPath` is the path of the clip, of which its last component shows, however long
// it is.

// The clip cannot be opened: it is missing, not readable or in use. `code` is shown in hexadecimal.
std::u16string ClipCannotBeOpenedMessage(std::u16string_view mxfPath, std::uint32_t code);

// Asked before a rewrite, since it works on the only copy of the clip.
std::u16string_view BackupQuestion();

// The analysis sequence has refused the clip with `result`.
std::u16string LoadFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                  std::int32_t result, std::uint32_t useFileIo);

// The continuity check behind it has failed, or found breaks, with `result`.
std::u16string ContinuityFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                        std::int32_t result);

// The operator has stopped the continuity check; asks whether to load the clip anyway.
std::u16string AnalysisStoppedMessage(std::u16string_view mxfPath);

// A rewrite, an export or a measurement has ended well, was cancelled, or failed with `result`.
std::u16string JobDoneMessage(std::u16string_view mxfPath, std::uint32_t jobKind,
                              std::uint32_t useFileIo);
std::u16string JobNoticeMessage(std::u16string_view mxfPath);  // done, but for its UMIDs
std::u16string JobCancelledMessage(std::u16string_view mxfPath, std::uint32_t jobKind,
                                   std::uint32_t useFileIo);
std::u16string JobFailureMessage(std::u16string_view mxfPath, std::uint32_t jobKind,
                                 std::uint32_t processCode, std::int32_t result,
                                 std::uint32_t useFileIo);

}  // namespace quorvan
