// The process table: the process code, name and text of every stage, the text of every failure, and
// the messages about the outcome of a job. The texts that the console prints exist in Japanese and
// in English; a function without a language returns Japanese, the language of the window.
//
// A stage's failures are its process code plus 1 to 32; from 15 on the number added means the same
// for every engine (state/job_fault.h). In every stage 0 is success, kCancelled a stop by the
// operator, and kDoneWithNotice a job that is done, with a notice for the operator.
//
// Functions that return a std::u16string throw std::bad_alloc when memory is out; the others throw
// nothing.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan {

// The process code of a job of `jobKind` by `method`, 2000 to 6000. 0 for an analysis, which sets
// the codes of its stages itself, and for an unknown kind.
std::uint32_t JobProcessCode(JobKind jobKind, Method method);

// The name of a job of `jobKind` in messages; empty for an analysis and an unknown kind. A name
// that is not empty is zero terminated.
std::u16string_view JobTitle(JobKind jobKind,
                             platform::Language language = platform::kWindowLanguage);

// The name of the method in messages.
std::u16string_view MethodName(Method method);

// The name of the stage with `processCode`; empty for stage 6000 and for a code without a stage.
std::u16string_view StageName(std::uint32_t processCode);

// The text that the operator reads while the stage with `processCode` runs; a general text when
// the stage has no text or there is no such stage. StageTexts returns a text that lives as long as
// the program, in both languages.
std::u16string_view StageText(std::uint32_t processCode);
const platform::Text& StageTexts(std::uint32_t processCode);

// The text that tells the operator why the stage with `processCode` ended with `result`; a filler
// text when the stage has no such result or there is no such stage. For a measurement (6000),
// results from 4001 on and results from 6001 on both have texts. At most 255 characters.
std::u16string_view FailureText(std::uint32_t processCode, std::int32_t result,
                                platform::Language language = platform::kWindowLanguage);

// The messages. `mxfPath` is the path of the clip; a message shows its last component, of any
// length.

// The message that the clip that was named on the command line or dropped on the window cannot be
// opened, for the system's reason `code`, shown in hexadecimal: the clip is missing, not readable
// or in use.
std::u16string ClipCannotBeOpenedMessage(std::u16string_view mxfPath, std::uint32_t code,
                                         platform::Language language = platform::kWindowLanguage);

// The question before a rewrite whether the clip has a backup, since the rewrite works on the clip
// itself. `keepsUmids` is true when the clip keeps its UMIDs.
std::u16string_view BackupQuestion(bool keepsUmids,
                                   platform::Language language = platform::kWindowLanguage);

// The message that the path of the clip is longer than the records can hold.
std::u16string ClipPathTooLongMessage(std::u16string_view mxfPath,
                                      platform::Language language = platform::kWindowLanguage);

// The question before a rewrite of a clip with UMIDs of 64 bytes: whether to leave the UMIDs as
// they are.
std::u16string LongUmidQuestion();

// The message that the stage `processCode` of the analysis sequence has refused the clip with
// `result`. `hasAudioDescriptor` says whether the analysis has found an audio descriptor. It
// selects the text for kAudioDescriptorUnfit, which the source package stage returns both for a
// missing descriptor and for a descriptor whose samples have neither 16 nor 24 bits.
std::u16string LoadFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                  std::int32_t result, Method method,
                                  bool hasAudioDescriptor = false,
                                  platform::Language language = platform::kWindowLanguage);

// The message that the clip that was chosen in a file dialog cannot be opened, for the system's
// reason `code`, shown in hexadecimal.
std::u16string ClipCannotBeLoadedMessage(std::u16string_view mxfPath, std::uint32_t code);

// The message that the loaded clip has more than kMaxTracks tracks; empty when it has at most
// kMaxTracks. `checked` says whether the continuity check has run to its end; the words depend on
// it.
std::u16string HiddenTracksMessage(const MXF_AUDIO_INFO& audio, bool checked);

// The message that the index of the loaded clip does not lead to the audio of every frame, or leads
// to more or fewer audio elements than tracks were counted; empty when all is well.
std::u16string IndexNoticeMessage(const MXF_BASE_INFO& mxf);

// The message that a job was refused with `result` before it began, for the reason `text`, whose
// language is that of the message.
std::u16string JobRefusalMessage(std::u16string_view mxfPath, std::int32_t result,
                                 std::u16string_view text, Method method);

// The message that the operator has stopped the analysis sequence, so that the clip is not loaded.
std::u16string LoadStoppedMessage(std::u16string_view mxfPath,
                                  platform::Language language = platform::kWindowLanguage);

// The message that the continuity check, stage `processCode`, has ended with `result`: a failure,
// or breaks.
std::u16string ContinuityFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                        std::int32_t result,
                                        platform::Language language = platform::kWindowLanguage);

// The console's message that the continuity check has found breaks. Unlike ContinuityFailureMessage
// it does not ask whether to write a log.
std::u16string TimecodeBreaksMessage(std::u16string_view mxfPath,
                                     platform::Language language = platform::kWindowLanguage);

// The message that the operator has stopped the continuity check, with the question whether to load
// the clip all the same.
std::u16string AnalysisStoppedMessage(std::u16string_view mxfPath,
                                      platform::Language language = platform::kWindowLanguage);

// The message that a rewrite, an export or a measurement is done.
std::u16string JobDoneMessage(std::u16string_view mxfPath, JobKind jobKind, Method method,
                              platform::Language language = platform::kWindowLanguage);

// The message that a rewrite is done, but has not renewed all UMIDs; `state` says what the clip
// holds. With `hasLog` the message points to the log.
std::u16string JobNoticeMessage(std::u16string_view mxfPath, UmidState state, bool hasLog,
                                platform::Language language = platform::kWindowLanguage);

// The message that a job was cancelled.
std::u16string JobCancelledMessage(std::u16string_view mxfPath, JobKind jobKind, Method method,
                                   platform::Language language = platform::kWindowLanguage);

// The message that the job with `processCode` has failed with `result`.
std::u16string JobFailureMessage(std::u16string_view mxfPath, JobKind jobKind,
                                 std::uint32_t processCode, std::int32_t result, Method method,
                                 platform::Language language = platform::kWindowLanguage);

// The text that says which UMIDs the header metadata of a rewritten clip holds.
std::u16string_view UmidStateText(UmidState state,
                                  platform::Language language = platform::kWindowLanguage);

// What follows the message of a job that failed: the file and the frame at fault, as far as they
// are known, each in a paragraph of its own; empty when neither is known.
std::u16string FaultDetails(const JOB_FAULT_INFO& fault, const MXF_TIMECODE_INFO& timecode,
                            platform::Language language = platform::kWindowLanguage);

// What follows the message of an export that was stopped before it created a file.
std::u16string_view NothingExportedText(platform::Language language = platform::kWindowLanguage);

// What follows the message of a rewrite that failed with `result` or was cancelled: which frames
// may have been rewritten, and which UMIDs the clip holds.
std::u16string WrittenFrames(const AUDIOTRACK_IO_INFO& tracks, const MXF_TIMECODE_INFO& timecode,
                             std::int32_t result,
                             platform::Language language = platform::kWindowLanguage);

}  // namespace quorvan
