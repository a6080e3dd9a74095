#include "cli/companion.h"

#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <exception>
#include <memory>
#include <new>
#include <sstream>

#include "cli/commands.h"
#include "cli/console.h"
#include "platform/console.h"
#include "platform/language.h"
#include "platform/text.h"
#include "state/program_name.h"
#include "state/wording.h"

namespace quorvan::cli {
namespace {

using platform::Language;

using Words = platform::InBoth<const char*>;

constexpr std::string_view kLanguageOption = "--language";
constexpr std::uint32_t kLastBuffer = 13;

// The language that the last --language of the command line names, wherever it stands and whatever
// else the command line holds; without such a name the user's language.
Language LanguageOf(int argc, const char* const* argv) {
  Language language = platform::UserLanguage();
  for (int i = 1; i < argc && std::string_view(argv[i]) != "--"; ++i) {
    std::string_view name = argv[i];
    if (!name.starts_with(kLanguageOption)) continue;
    name.remove_prefix(kLanguageOption.size());
    if (name.starts_with('=')) {
      name.remove_prefix(1);
    } else {
      name = name.empty() && i + 1 < argc ? argv[i + 1] : "";
    }
    if (name == "ja") language = Language::kJapanese;
    if (name == "en") language = Language::kEnglish;
  }
  return language;
}

// Aligns what the options are for: the library counts bytes, and a Japanese character has three in
// two columns.
class Formatter : public CLI::Formatter {
 public:
  std::string make_option(const CLI::Option* option, bool isPositional) const override {
    const std::string name = make_option_name(option, isPositional) + make_option_opts(option);
    const auto wide = std::count_if(name.begin(), name.end(), [](char c) {
      return (static_cast<unsigned char>(c) & 0xF0) == 0xE0;  // the first byte of three
    });
    std::stringstream out;
    CLI::detail::format_help(out, name, make_option_desc(option),
                             get_column_width() + static_cast<std::size_t>(wide));
    return out.str();
  }
};

// The commands, options and help of the companion in one language.
class CommandLine {
 public:
  explicit CommandLine(Language language);
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  // Reads the arguments and runs the command that they name.
  int Run(int argc, const char* const* argv);

 private:
  const char* In(const Words& words) const { return words.In(language_); }

  CLI::App* AddCommand(const char* name, const Words& words);
  void AddLanguage(CLI::App* app);
  void AddFile(CLI::App* app, std::string* file, const Words& words);
  CLI::Validator OneOf(std::vector<std::string> names) const;
  CLI::Validator UpTo(std::uint32_t last) const;
  void AddMethod(CLI::App* app, Method* method);
  void AddLoad(CLI::App* app, LoadArguments* load);
  void AddNoFlush(CLI::App* app, bool* noFlush);
  void AddRange(CLI::App* app, RangeArguments* range);
  void AddPlacement(CLI::App* app, PlacementArguments* placement);
  void AddInfo();
  void AddRewrap();
  void AddVerify();
  void AddExport();
  void AddLoudness();
  void AddConform();

  std::string WhatIsMissing() const;
  std::string Complaint(const CLI::ParseError& error) const;

  const Language language_;
  CLI::App app_;
  std::string languageName_;  // LanguageOf has read it before
  InfoArguments info_;
  RewrapArguments rewrap_;
  VerifyArguments verify_;
  ExportArguments export_;
  LoudnessArguments loudness_;
  ConformArguments conform_;
};

CommandLine::CommandLine(Language language)
    : language_(language),
      app_(In({"MXF Quorvan: 完成したMXFクリップの音声をその場で差替えます。",
               "MXF Quorvan: new sound for finished MXF clips, in place"}),
           "mxf-quorvan-cli") {
  const auto formatter = std::make_shared<Formatter>();
  formatter->label("Usage", In({"使い方", "Usage"}));
  formatter->label("OPTIONS", In({"オプション", "OPTIONS"}));
  formatter->label("SUBCOMMAND", In({"コマンド", "COMMAND"}));
  formatter->label("Positionals", In({"引数", "Positionals"}));
  formatter->label("REQUIRED", In({"必須", "REQUIRED"}));
  formatter->label("TEXT", In({"文字", "TEXT"}));
  formatter->label("UINT", In({"数", "UINT"}));
  app_.formatter(formatter);
  app_.option_defaults()->group(In({"オプション", "Options"}));
  app_.set_help_flag("-h,--help", In({"使い方を表示して終了します", "Show this help and exit"}));
  app_.set_version_flag("--version", platform::ToUtf8(kProgramTitle),
                        In({"プログラム名とバージョンを表示して終了します",
                            "Show the name and version of the program and exit"}));
  AddLanguage(&app_);
  app_.allow_windows_style_options(false);  // a path may begin with '/'
  app_.require_subcommand(1);
  app_.footer(In(
      {"終了ステータス: 0 完了、1 拒否またはエラー、2 使い方の誤り、3 中断、4 完了(お知らせあり)",
       "Exit status: 0 done, 1 refused or failed, 2 wrong usage, 3 cancelled, 4 done, with a "
       "notice."}));
  AddInfo();
  AddRewrap();
  AddVerify();
  AddExport();
  AddLoudness();
  AddConform();
}

CLI::App* CommandLine::AddCommand(const char* name, const Words& words) {
  CLI::App* command = app_.add_subcommand(name, In(words));
  command->group(In({"コマンド", "Commands"}));
  // The help flag that a command inherits stands in the library's own group.
  command->set_help_flag("-h,--help", app_.get_help_ptr()->get_description());
  return command;
}

void CommandLine::AddLanguage(CLI::App* app) {
  app->add_option(std::string(kLanguageOption), languageName_,
                  In({"表示の言語: ja 日本語、en 英語。省略するとロケールに従います",
                      "Language of what is said: ja Japanese, en English; that of the locale "
                      "when absent"}))
      ->take_last()
      ->check(OneOf({"ja", "en"}));
}

void CommandLine::AddFile(CLI::App* app, std::string* file, const Words& words) {
  app->add_option("FILE", *file, In(words))->required();
}

CLI::Validator CommandLine::OneOf(std::vector<std::string> names) const {
  const std::string list = fmt::format("{{{}}}", fmt::join(names, ","));
  const auto check = [language = language_, names = std::move(names), list](std::string& name) {
    if (std::find(names.begin(), names.end(), name) != names.end()) return std::string();
    return Worded(language, {"{} は使えません。{} から選んで下さい。", "{} is not one of {}"}, name,
                  list);
  };
  return CLI::Validator(check, list);
}

CLI::Validator CommandLine::UpTo(std::uint32_t last) const {
  const auto check = [language = language_, last](std::string& text) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec == std::errc() && read.ptr == end && number <= last) return std::string();
    return Worded(
        language,
        {"{} は使えません。0 から {} までの数を指定して下さい。", "{} is no number from 0 to {}"},
        text, last);
  };
  return CLI::Validator(check, fmt::format("0-{}", last));
}

void CommandLine::AddMethod(CLI::App* app, Method* method) {
  app->add_option_function<std::string>(
         "--method",
         [=](const std::string& name) {
           *method = name == "file" ? Method::kGenericFileIo : Method::kMemoryMapping;
         },
         In({"クリップの読み書きの方法: mapped メモリマッピング(既定)、file 標準ファイル入出力",
             "How the clip is read and written: mapped views (the default) or plain file access"}))
      ->check(OneOf({"mapped", "file"}));
}

// Adds the argument that every command with a clip to load has.
void CommandLine::AddLoad(CLI::App* app, LoadArguments* load) {
  app->add_flag("--no-timecode-check", load->noTimecodeCheck,
                In({"全フレームのタイムコードを検証しません。検証すると、タイムコードエラーのある"
                    "クリップは拒否されます",
                    "Do not compare the timecodes of all frames: a clip in which they break is "
                    "refused otherwise"}));
}

void CommandLine::AddNoFlush(CLI::App* app, bool* noFlush) {
  app->add_flag(
      "--no-flush", *noFlush,
      In({"ストレージへの書込みの完了を待ちません。停電やストレージの空き不足で、完了と表示した"
          "書込みが失われる場合があります",
          "Do not wait until what was written is on the medium: a power cut or a full storage "
          "behind it could then undo what was called done"}));
}

void CommandLine::AddRange(CLI::App* app, RangeArguments* range) {
  app->add_option(
      "--in", range->in,
      In({"最初のフレームのタイムコード、01:02:03:04 または 01020304。省略するとクリップの先頭",
          "First timecode, 01:02:03:04 or 01020304; the clip's first frame when absent"}));
  app->add_option(
      "--out", range->out,
      In({"最後のフレームのタイムコード(このフレームを含みます)。省略するとクリップの最後",
          "Last timecode, inclusive; the clip's last frame when absent"}));
}

void CommandLine::AddPlacement(CLI::App* app, PlacementArguments* placement) {
  app->add_option("--track", placement->tracks,
                  In({"N=WAV: トラック N (1から)に置くファイル。マルチチャンネルのファイルは、"
                      "続くトラックも使います。繰返し指定できます",
                      "N=WAV: this file on audio track N (from 1); a file of several channels "
                      "takes the tracks behind it too. May be given again"}))
      ->take_all()
      ->allow_extra_args(false);
  app->add_option("--silence", placement->silence,
                  In({"N: トラック N を無音にします。繰返し指定できます",
                      "N: silence on audio track N. May be given again"}))
      ->take_all()
      ->allow_extra_args(false);
}

constexpr Words kOnlyRead = {"MXFクリップ(読取りのみ)", "MXF clip, only read"};

void CommandLine::AddInfo() {
  CLI::App* app = AddCommand(
      "info", {"クリップを解析し、全フレームのタイムコードを検証して、結果を表示します",
               "Analyse a clip, compare the timecodes of its frames, and show what was found"});
  AddFile(app, &info_.file, kOnlyRead);
  app->add_flag("--json", info_.json,
                In({"テキストの代わりに、1つのJSONオブジェクトを出力します",
                    "One JSON object instead of text"}));
  app->add_flag("--index", info_.index,
                In({"インデックスエントリーも表示します", "List the index entries too"}));
  AddMethod(app, &info_.load.method);
  AddLoad(app, &info_.load);
  app->add_option(
      "--timecode-log", info_.timecodeLog,
      In({"タイムコードエラーがある場合に、その一覧を書込むファイル。同じ名前のファイルは、"
          "MXFまたはRIFFでなければ置き換えます",
          "Where to list the breaks of the timecode, if there are any; a file of that "
          "name is replaced, unless it begins as MXF or RIFF"}));
  AddLanguage(app);
}

void CommandLine::AddRewrap() {
  CLI::App* app = AddCommand(
      "rewrap", {"クリップの音声をINからOUTまで直接書換え、UMIDを更新します",
                 "Overwrite audio of a clip in place, between IN and OUT, and renew its UMIDs"});
  AddFile(app, &rewrap_.file, {"MXFクリップ(直接書換えます)", "MXF clip, overwritten in place"});
  AddPlacement(app, &rewrap_.placement);
  AddRange(app, &rewrap_.range);
  AddMethod(app, &rewrap_.load.method);
  AddLoad(app, &rewrap_.load);
  app->add_option(
         "--buffer", rewrap_.buffer,
         In({"--method file のとき、WAVファイルをどれだけ先読みするか。0 (少ない)から 13 "
             "(多い)まで。"
             "省略すると 4",
             "With --method file: how far ahead of the writing the WAV files are fetched, from 0 "
             "(little) to 13 (much); 4 when absent"}))
      ->check(UpTo(kLastBuffer));
  app->add_flag(
      "--no-log", rewrap_.noLog,
      In({"クリップと同じ場所にログを作成しません", "Do not write a log beside the clip"}));
  AddNoFlush(app, &rewrap_.noFlush);
  app->add_flag(
      "--keep-umids", rewrap_.keepUmids,
      In({"UMIDが64バイトで更新できないクリップも、元のUMIDのまま音声を書換えます。32バイトのUMIDは"
          "この指定があっても更新します",
          "Rewrite a clip whose UMIDs have 64 bytes and cannot be renewed: the new sound goes in "
          "under the old identity. UMIDs of 32 bytes are renewed all the same"}));
  app->add_flag("--yes", rewrap_.yes,
                In({"バックアップの確認をしません", "Do not ask whether there is a backup"}));
  AddLanguage(app);
}

void CommandLine::AddVerify() {
  CLI::App* app = AddCommand(
      "verify", {"クリップの音声を、書込んだファイルと比較します",
                 "Compare the audio of a clip with the files that were written into it"});
  AddFile(app, &verify_.file, kOnlyRead);
  AddPlacement(app, &verify_.placement);
  AddRange(app, &verify_.range);
  AddLoad(app, &verify_.load);
  AddLanguage(app);
}

void CommandLine::AddExport() {
  CLI::App* app = AddCommand("export", {"クリップのオーディオトラックをBWFファイルに書出します",
                                        "Write audio tracks of a clip into BWF files"});
  AddFile(app, &export_.file, kOnlyRead);
  app->add_option(
         "--tracks", export_.tracks,
         In({"トラック番号(1から)。1,3-5 のように指定します", "Audio tracks from 1, as in 1,3-5"}))
      ->required();
  app->add_option("--folder", export_.folder,
                  In({"作成するファイルのフォルダー。1トラックに1ファイルを作成します",
                      "Folder of the new files, one a track"}))
      ->required();
  app->add_option(
      "--prefix", export_.prefix,
      In({"ファイル名のうち、トラック番号の前の部分。省略すると "
          "Track-。同じ名前のファイルがあると、"
          "名前に番号を付けます",
          "What their names start with, in front of the track's number; Track- when absent. "
          "A number is added to a name that exists already"}));
  AddNoFlush(app, &export_.noFlush);
  AddRange(app, &export_.range);
  AddMethod(app, &export_.load.method);
  AddLoad(app, &export_.load);
  AddLanguage(app);
}

void CommandLine::AddLoudness() {
  CLI::App* app = AddCommand(
      "loudness",
      {"ラウドネス(インテグレーテッド、トゥルーピーク、ラウドネスレンジ、EBU R128)を測定します",
       "Measure integrated loudness, true peak and loudness range (EBU R128)"});
  AddFile(app, &loudness_.file, kOnlyRead);
  app->add_option("--tracks", loudness_.tracks,
                  In({"A,B: 左と右にするトラックの番号(1から)。1つだけでも測定できます",
                      "A,B: the audio tracks from 1 that are left and right; or one of them "
                      "alone"}))
      ->required();
  AddRange(app, &loudness_.range);
  AddLoad(app, &loudness_.load);
  app->add_flag("--json", loudness_.json,
                In({"1つのJSONオブジェクトを出力します: integratedLoudness (LUFS、無音では null)、"
                    "truePeak (dBTP)、loudnessRange (LU)",
                    "One JSON object: integratedLoudness (LUFS, null for silence), truePeak "
                    "(dBTP), loudnessRange (LU)"}));
  AddLanguage(app);
}

void CommandLine::AddConform() {
  CLI::App* app = AddCommand(
      "conform", {"ロードできない構造のクリップから、構造を整えたコピーを作成します",
                  "Copy a clip whose layout cannot be followed into one that can be loaded"});
  app->add_option("IN", conform_.in, In(kOnlyRead))->required();
  app->add_option("OUT", conform_.out,
                  In({"作成するコピー。同じ名前のファイルがあってはいけません",
                      "Copy to be made; must not exist"}));
  app->add_flag("--check", conform_.check,
                In({"コピーの結果を表示するだけで、何も書込みません",
                    "Only tell what a copy would mend; write nothing"}));
  app->add_flag(
      "--json", conform_.json,
      In({"1つのJSONオブジェクトを出力します: done、check、frames、mended "
          "(name、count、text)。コピーが"
          "ない場合は reason、reasons、result、message、messages も",
          "One JSON object: done, check, frames, mended (name, count, text); reason, reasons, "
          "result, message and messages when there is no copy"}));
  AddLanguage(app);
}

// The first of the required arguments that are missing.
std::string CommandLine::WhatIsMissing() const {
  const auto commands = app_.get_subcommands();
  if (commands.empty()) return In({"コマンド", "a command"});
  const auto missing = commands.front()->get_options(
      [](const CLI::Option* option) { return option->get_required() && option->count() == 0; });
  return missing.empty() ? std::string() : missing.front()->get_name();
}

// The name of the option or argument of which the library says `said`.
std::string NameIn(const std::string& said) {
  const std::size_t start = said.find("--");
  if (start == std::string::npos) return said.substr(0, said.find(':'));
  return said.substr(start, said.find_first_of(": ", start) - start);
}

// What is wrong with the arguments, in the language of the command line. The library's own words
// are English; OneOf and UpTo give it the words for a value that they refuse.
std::string CommandLine::Complaint(const CLI::ParseError& error) const {
  const std::string said = error.what();
  switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::ValidationError:
      return said;
    case CLI::ExitCodes::RequiredError:
      return Worded(language_, {"{} を指定して下さい。", "{} is required"}, WhatIsMissing());
    case CLI::ExitCodes::ExtrasError:
      return Worded(language_, {"余分な引数があります: {}", "not expected: {}"},
                    fmt::to_string(fmt::join(app_.remaining(true), " ")));
    case CLI::ExitCodes::ArgumentMismatch:
      return Worded(language_,
                    {"{}: 値を1つだけ指定して下さい。", "{}: exactly one value is expected"},
                    NameIn(said));
    default:
      return Worded(language_, {"{}: 値が正しくありません。", "{}: the value is not valid"},
                    NameIn(said));
  }
}

int CommandLine::Run(int argc, const char* const* argv) {
  try {
    app_.parse(argc, argv);
  } catch (const CLI::Success& asked) {  // for help or the version
    std::ostringstream text;
    const int status = app_.exit(asked, text, text);
    platform::WriteText(platform::StandardStream::kOutput, text.str());
    return status == 0 ? kDone : kFailed;
  } catch (const CLI::ParseError& error) {
    PrintErrorLine(Complaint(error));
    PrintErrorLine(In({"--help で使い方を表示します。", "run with --help for more information"}));
    return kWrongUsage;
  }
  if (app_.got_subcommand("info")) return RunInfo(info_, language_);
  if (app_.got_subcommand("rewrap")) return RunRewrap(rewrap_, language_);
  if (app_.got_subcommand("verify")) return RunVerify(verify_, language_);
  if (app_.got_subcommand("export")) return RunExport(export_, language_);
  if (app_.got_subcommand("loudness")) return RunLoudness(loudness_, language_);
  return RunConform(conform_, language_);
}

}  // namespace

int RunCompanion(int argc, const char* const* argv) {
  const Language language = LanguageOf(argc, argv);
  try {
    return CommandLine(language).Run(argc, argv);
  } catch (const std::bad_alloc&) {
    PrintErrorLine(Words{"メモリが確保できません。", "out of memory"}.In(language));
    return kFailed;
  } catch (const std::exception& error) {  // from the argument library: commands return a status
    PrintErrorLine(error.what());
    return kFailed;
  }
}

}  // namespace quorvan::cli
