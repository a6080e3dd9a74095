#include "cli/companion.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <new>

#include "cli/commands.h"
#include "cli/console.h"
#include "platform/text.h"
#include "state/program_name.h"

namespace quorvan::cli {
namespace {

void AddFile(CLI::App* app, std::string* file, const char* what) {
  app->add_option("FILE", *file, what)->required();
}

void AddMethod(CLI::App* app, Method* method) {
  app->add_option_function<std::string>(
         "--method",
         [=](const std::string& name) {
           *method = name == "file" ? Method::kGenericFileIo : Method::kMemoryMapping;
         },
         "How the clip is read and written: mapped views (the default) or plain file access")
      ->check(CLI::IsMember({"mapped", "file"}));
}

// Adds the argument that every command with a clip to load has.
void AddLoad(CLI::App* app, LoadArguments* load) {
  app->add_flag("--no-timecode-check", load->noTimecodeCheck,
                "Do not compare the timecodes of all frames: a clip in which they break is refused "
                "otherwise");
}

void AddNoFlush(CLI::App* app, bool* noFlush) {
  app->add_flag(
      "--no-flush", *noFlush,
      "Do not wait until what was written is on the medium: a power cut or a full storage "
      "behind it could then undo what was called done");
}

void AddRange(CLI::App* app, RangeArguments* range) {
  app->add_option("--in", range->in,
                  "First timecode, 01:02:03:04 or 01020304; the clip's first frame when absent");
  app->add_option("--out", range->out,
                  "Last timecode, inclusive; the clip's last frame when absent");
}

void AddPlacement(CLI::App* app, PlacementArguments* placement) {
  app->add_option("--track", placement->tracks,
                  "N=WAV: this file on audio track N (from 1); a file of several channels takes "
                  "the tracks behind it too. May be given again")
      ->take_all()
      ->allow_extra_args(false);
  app->add_option("--silence", placement->silence,
                  "N: silence on audio track N. May be given again")
      ->take_all()
      ->allow_extra_args(false);
}

void AddInfo(CLI::App* app, InfoArguments* arguments) {
  AddFile(app, &arguments->file, "MXF clip, only read");
  app->add_flag("--json", arguments->json, "One JSON object instead of text");
  app->add_flag("--index", arguments->index, "List the index entries too");
  AddMethod(app, &arguments->load.method);
  AddLoad(app, &arguments->load);
  app->add_option("--timecode-log", arguments->timecodeLog,
                  "Where to list the breaks of the timecode, if there are any; a file of that name "
                  "is replaced, unless it begins as MXF or RIFF");
}

void AddRewrap(CLI::App* app, RewrapArguments* arguments) {
  AddFile(app, &arguments->file, "MXF clip, overwritten in place");
  AddPlacement(app, &arguments->placement);
  AddRange(app, &arguments->range);
  AddMethod(app, &arguments->load.method);
  AddLoad(app, &arguments->load);
  app->add_option(
         "--buffer", arguments->buffer,
         "With --method file: how far ahead of the writing the WAV files are fetched, from 0 "
         "(little) to 13 (much); 4 when absent")
      ->check(CLI::Range(0, 13));
  app->add_flag("--no-log", arguments->noLog, "Do not write a log beside the clip");
  AddNoFlush(app, &arguments->noFlush);
  app->add_flag(
      "--keep-umids", arguments->keepUmids,
      "Rewrite a clip whose UMIDs have 64 bytes and cannot be renewed: the new sound goes in "
      "under the old identity. UMIDs of 32 bytes are renewed all the same");
  app->add_flag("--yes", arguments->yes, "Do not ask whether there is a backup");
}

void AddExport(CLI::App* app, ExportArguments* arguments) {
  AddFile(app, &arguments->file, "MXF clip, only read");
  app->add_option("--tracks", arguments->tracks, "Audio tracks from 1, as in 1,3-5")->required();
  app->add_option("--folder", arguments->folder, "Folder of the new files, one a track")
      ->required();
  app->add_option(
      "--prefix", arguments->prefix,
      "What their names start with, in front of the track's number; Track- when absent. "
      "A number is added to a name that exists already");
  AddNoFlush(app, &arguments->noFlush);
  AddRange(app, &arguments->range);
  AddMethod(app, &arguments->load.method);
  AddLoad(app, &arguments->load);
}

void AddLoudness(CLI::App* app, LoudnessArguments* arguments) {
  AddFile(app, &arguments->file, "MXF clip, only read");
  app->add_option("--tracks", arguments->tracks,
                  "A,B: the audio tracks from 1 that are left and right; or one of them alone")
      ->required();
  AddRange(app, &arguments->range);
  AddLoad(app, &arguments->load);
  app->add_flag("--json", arguments->json,
                "One JSON object: integratedLoudness (LUFS, null for silence), truePeak (dBTP), "
                "loudnessRange (LU)");
}

void AddVerify(CLI::App* app, VerifyArguments* arguments) {
  AddFile(app, &arguments->file, "MXF clip, only read");
  AddPlacement(app, &arguments->placement);
  AddRange(app, &arguments->range);
  AddLoad(app, &arguments->load);
}

void AddConform(CLI::App* app, ConformArguments* arguments) {
  app->add_option("IN", arguments->in, "MXF clip, only read")->required();
  app->add_option("OUT", arguments->out, "Copy to be made; must not exist");
  app->add_flag("--check", arguments->check, "Only tell what a copy would mend; write nothing");
  app->add_flag("--json", arguments->json,
                "One JSON object: done, check, frames, mended (name, count, text); reason, result "
                "and message when there is no copy");
}

int Dispatch(int argc, const char* const* argv) {
  CLI::App app("MXF Quorvan: new sound for finished MXF clips, in place", "mxf-quorvan-cli");
  app.require_subcommand(1);
  app.set_version_flag("--version", platform::ToUtf8(kProgramTitle));
  app.footer(
      "Exit status: 0 done, 1 refused or failed, 2 wrong usage, 3 cancelled, 4 done, with a "
      "notice.");

  InfoArguments info;
  RewrapArguments rewrap;
  ExportArguments exporting;
  LoudnessArguments loudness;
  VerifyArguments verify;
  ConformArguments conform;
  CLI::App* infoCommand = app.add_subcommand(
      "info", "Analyse a clip, compare the timecodes of its frames, and show what was found");
  CLI::App* rewrapCommand = app.add_subcommand(
      "rewrap", "Overwrite audio of a clip in place, between IN and OUT, and renew its UMIDs");
  CLI::App* verifyCommand = app.add_subcommand(
      "verify", "Compare the audio of a clip with the files that were written into it");
  CLI::App* exportCommand =
      app.add_subcommand("export", "Write audio tracks of a clip into BWF files");
  CLI::App* loudnessCommand = app.add_subcommand(
      "loudness", "Measure integrated loudness, true peak and loudness range (EBU R128)");
  CLI::App* conformCommand = app.add_subcommand(
      "conform", "Copy a clip whose layout cannot be followed into one that can be loaded");
  AddInfo(infoCommand, &info);
  AddRewrap(rewrapCommand, &rewrap);
  AddVerify(verifyCommand, &verify);
  AddExport(exportCommand, &exporting);
  AddLoudness(loudnessCommand, &loudness);
  AddConform(conformCommand, &conform);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  if (infoCommand->parsed()) return RunInfo(info);
  if (rewrapCommand->parsed()) return RunRewrap(rewrap);
  if (verifyCommand->parsed()) return RunVerify(verify);
  if (exportCommand->parsed()) return RunExport(exporting);
  if (loudnessCommand->parsed()) return RunLoudness(loudness);
  return RunConform(conform);
}

}  // namespace

int RunCompanion(int argc, const char* const* argv) {
  try {
    return Dispatch(argc, argv);
  } catch (const std::bad_alloc&) {
    PrintRaw("mxf-quorvan-cli: out of memory\n");
    return kFailed;
  } catch (const std::exception& error) {  // from the argument library: commands return a status
    PrintRaw(error.what());
    PrintRaw("\n");
    return kFailed;
  }
}

}  // namespace quorvan::cli
