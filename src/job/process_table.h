// The stages of all operations: their process codes, names and texts, the text of every failure,
// and the messages that tell a job's outcome. Texts are those of the user interface, in Japanese.
//
// A stage's failures are its process code plus 1 to 32, from 15 on the same for every engine
// (state/job_fault.h); 0 is success, kCancelled a stop by the operator and kDoneWithNotice a job
// that is done but for something that the operator has to know, for every stage alike.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "state/app_state_info.h"

namespace quorvan {

// Process code under which a job of `jobKind` runs: 2000 to 6000. 0 for an analysis, which
// enters its stages itself, and for an unknown kind.
std::uint32_t JobProcessCode(std::uint32_t jobKind, Method method);

// What a job of `jobKind` is called in its messages; empty for an analysis and an unknown kind.
std::u16string_view JobTitle(std::uint32_t jobKind);

// What the method is called in messages.
std::u16string_view MethodName(Method method);

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

// Asked before a rewrite, since it works on the only copy of the clip. `keepsUmids` is true when
// the clip keeps its UMIDs.
std::u16string_view BackupQuestion(bool keepsUmids);

// The path of the clip has more characters than the records hold.
std::u16string ClipPathTooLongMessage(std::u16string_view mxfPath);

// Asked before a rewrite of a clip whose UMIDs are not 32 bytes long.
std::u16string LongUmidQuestion();

// The analysis sequence has refused the clip with `result`. `hasAudioDescriptor` is what the audio
// record tells by then.
std::u16string LoadFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                  std::int32_t result, Method method,
                                  bool hasAudioDescriptor = false);

// The clip that was chosen in a file dialog cannot be opened, for the system's reason `code`.
std::u16string ClipCannotBeLoadedMessage(std::u16string_view mxfPath, std::uint32_t code);

// The loaded clip has more tracks than the program works with; empty when it has not. `checked`
// tells whether its timecodes have been compared to the end.
std::u16string HiddenTracksMessage(const MXF_AUDIO_INFO& audio, bool checked);

// A job that was refused with `result` before it began, for the reason `text`.
std::u16string JobRefusalMessage(std::u16string_view mxfPath, std::int32_t result,
                                 std::u16string_view text, Method method);

// The operator has stopped the analysis sequence: the clip cannot be loaded.
std::u16string LoadStoppedMessage(std::u16string_view mxfPath);

// The continuity check behind it has failed, or found breaks, with `result`.
std::u16string ContinuityFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                        std::int32_t result);

// The breaks of ContinuityFailureMessage, for the console, which cannot ask whether to write a log.
std::u16string TimecodeBreaksMessage(std::u16string_view mxfPath);

// The operator has stopped the continuity check; asks whether to load the clip anyway.
std::u16string AnalysisStoppedMessage(std::u16string_view mxfPath);

// A rewrite, an export or a measurement has ended well, was cancelled, or failed with `result`.
std::u16string JobDoneMessage(std::u16string_view mxfPath, std::uint32_t jobKind, Method method);
std::u16string JobNoticeMessage(std::u16string_view mxfPath, UmidState state,
                                bool hasLog);  // done, but for UMIDs
std::u16string JobCancelledMessage(std::u16string_view mxfPath, std::uint32_t jobKind,
                                   Method method);
std::u16string JobFailureMessage(std::u16string_view mxfPath, std::uint32_t jobKind,
                                 std::uint32_t processCode, std::int32_t result, Method method);

// What the header metadata of a rewritten clip holds.
std::u16string_view UmidStateText(UmidState state);

// What stands behind the message of a job that failed: the file and the frame at fault, as far as
// they are known, each in a paragraph of its own.
std::u16string FaultDetails(const JOB_FAULT_INFO& fault, const MXF_TIMECODE_INFO& timecode);

// What stands behind the message of a rewrite that failed with `result` or was cancelled: how much
// of the clip has changed.
std::u16string WrittenFrames(const AUDIOTRACK_IO_INFO& tracks, const MXF_TIMECODE_INFO& timecode,
                             std::int32_t result);

}  // namespace quorvan
