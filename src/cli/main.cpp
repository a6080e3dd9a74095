// MXF Quorvan's console companion, for unattended work and for checks.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

#include "cli/commands.h"
#include "platform/console.h"

namespace {

using namespace quorvan::cli;

void AddInfo(CLI::App* app, InfoArguments* arguments) {
  app->add_option("FILE", arguments->file, "MXF clip")->required();
  app->add_flag("--json", arguments->json, "One JSON object instead of text");
  app->add_flag("--index", arguments->index, "List the index entries too");
  app->add_option_function<std::string>(
         "--method", [=](const std::string& m) { arguments->fileIo = m == "file"; },
         "How the clip is read: mapped views (the default) or plain file access")
      ->check(CLI::IsMember({"mapped", "file"}));
}

void AddRewrap(CLI::App* app, RewrapArguments* arguments) {
  app->add_option("FILE", arguments->file, "MXF clip, overwritten in place")->required();
  app->add_option("--track", arguments->tracks,
                  "N=WAV: this file on audio track N (from 1); a file of several channels takes "
                  "the tracks behind it too. May be given again")
      ->take_all()
      ->allow_extra_args(false);
  app->add_option("--silence", arguments->silence,
                  "N: silence on audio track N. May be given again")
      ->take_all()
      ->allow_extra_args(false);
  app->add_option("--in", arguments->in,
                  "First timecode to rewrite, 01:02:03:04 or 01020304; the clip's first frame "
                  "when absent");
  app->add_option("--out", arguments->out,
                  "Last timecode to rewrite, inclusive; the clip's last frame when absent");
  app->add_flag("--yes", arguments->yes, "Do not ask whether there is a backup");
}

void AddConform(CLI::App* app, ConformArguments* arguments) {
  app->add_option("IN", arguments->in, "MXF clip, only read")->required();
  app->add_option("OUT", arguments->out, "Copy to be made; must not exist")->required();
}

int RunCompanion(int argc, char** argv) {
  CLI::App app("MXF Quorvan: new sound for finished MXF clips, in place", "mxf-quorvan-cli");
  app.require_subcommand(1);
  app.footer("Exit status: 0 done, 1 refused or failed, 2 wrong usage, 3 cancelled.");

  InfoArguments info;
  RewrapArguments rewrap;
  ConformArguments conform;
  CLI::App* infoCommand = app.add_subcommand("info", "Analyse a clip and show what was found");
  CLI::App* rewrapCommand = app.add_subcommand(
      "rewrap", "Overwrite audio of a clip in place, between IN and OUT, and renew its UMIDs");
  CLI::App* conformCommand = app.add_subcommand(
      "conform",
      "Copy a clip whose metadata lengths cannot be followed into one that can be loaded");
  AddInfo(infoCommand, &info);
  AddRewrap(rewrapCommand, &rewrap);
  AddConform(conformCommand, &conform);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  if (infoCommand->parsed()) return RunInfo(info);
  if (rewrapCommand->parsed()) return RunRewrap(rewrap);
  return RunConform(conform);
}

}  // namespace

int main(int argc, char** argv) {
  quorvan::platform::PrepareStandardStreams();
  try {
    return RunCompanion(argc, argv);
  } catch (const std::exception& error) {  // memory is out: every other failure is a status
    std::fputs(error.what(), stderr);
    return kFailed;
  }
}
