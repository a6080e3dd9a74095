// Compares the jobs with their bare loops and with other programs, side by side in one run.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "bench/bare_ways.h"
#include "bench/material.h"
#include "bench/measured_run.h"
#include "bench/sparse_clip.h"
#include "cli/clip_session.h"
#include "cli/job_setup.h"
#include "export/export_file_io.h"
#include "export/export_mapped.h"
#include "job/worker.h"
#include "loudness/measure_loudness.h"
#include "mxf/analysis.h"
#include "platform/text.h"
#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_mapped.h"

namespace quorvan::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::uint32_t, 4> kSparseMinutes = {10, 30, 60, 120};
constexpr double kMegabyte = 1e6;

struct Column {
  const char* title;
  double Figures::*field;
  double unit;
};
constexpr std::array<Column, 8> kColumns = {{{"job ms", &Figures::job, 1},
                                             {"cpu ms", &Figures::cpu, 1},
                                             {"+sync ms", &Figures::synced, 1},
                                             {"read MB", &Figures::diskRead, kMegabyte},
                                             {"write MB", &Figures::diskWritten, kMegabyte},
                                             {"fetch MB", &Figures::processRead, kMegabyte},
                                             {"dirty MB", &Figures::processDirtied, kMegabyte},
                                             {"peak MB", &Figures::peakAnonymous, kMegabyte}}};

struct Arguments {
  fs::path folder;
  std::uint32_t seconds = 600;
  std::uint32_t tracks = 8;
  std::uint32_t runs = 5;
  bool cold = false;
  bool sparse = false;
  std::vector<std::string> only;
};

// One way of doing a job: a bare loop, an engine with its sources, or another program.
struct Way {
  std::string name;
  std::function<MeasuredJob(bool firstRound)> job;  // the first round also checks the result
  std::uint32_t mostRuns = UINT32_MAX;
  bool onlyWarm = false;
};

struct Group {
  std::string title;
  std::vector<Way> ways;  // the other ways are compared with the first
};

// What all ways work on. A child process works on its own copy.
struct Stage {
  Arguments arguments;
  Material material;
  fs::path exports;
  ClipFacts facts{};
  std::unique_ptr<cli::ClipSession> session;
  std::vector<float> samples;
  Loudness loudness{};  // measured by the library alone

  APP_STATE_INFO& app() const { return session->app.info; }
};

// ---- Steps of a run, in the child process ----

bool Load(Stage* stage) {
  stage->session = std::make_unique<cli::ClipSession>(platform::Language::kEnglish);
  return cli::LoadClipOrSay(stage->material.clip.string(), {.noTimecodeCheck = true},
                            stage->session.get()) == cli::kDone;
}

// Prepares a rewrite of the whole clip from a mono file on each track; with `stereo`, one file of
// two channels is on tracks 1 and 2.
bool PrepareRewrite(Stage* stage, bool stereo, bool flush, bool firstRound) {
  if (!Load(stage)) return false;
  APP_STATE_INFO& app = stage->app();
  app.tracks->noFlush = flush ? 0 : 1;
  app.jobKind = kRewriteJob;
  cli::PlacementArguments placement;
  for (std::uint32_t t = 1; t <= stage->facts.tracks; ++t) {
    if (stereo && t == 2) continue;
    const fs::path& file = stereo && t == 1 ? stage->material.stereo : stage->material.mono[t - 1];
    placement.tracks.push_back(fmt::format("{}={}", t, file.string()));
  }
  if (cli::PlaceAll(placement, stage->session.get()) != cli::kDone ||
      cli::SetRange({}, kRewrapRange, stage->session.get()) != cli::kDone) {
    return false;
  }
  return !firstRound || BlankAudio(app);
}

bool PrepareExport(Stage* stage, bool flush) {
  if (!Load(stage)) return false;
  APP_STATE_INFO& app = stage->app();
  app.tracks->noFlush = flush ? 0 : 1;
  app.jobKind = kExportJob;
  fs::remove_all(stage->exports);
  fs::create_directories(stage->exports);
  std::fill_n(app.tracks->exportSwitch.begin(), stage->facts.tracks, kSwitchOn);
  platform::CopyText(app.tracks->exportFolder, std::size(app.tracks->exportFolder),
                     platform::ToUtf16(stage->exports.string()));
  platform::CopyText(app.tracks->exportName, std::size(app.tracks->exportName), u"Track-");
  return cli::SetRange({}, kExportRange, stage->session.get()) == cli::kDone;
}

bool PrepareLoudness(Stage* stage, bool bare) {
  if (!Load(stage)) return false;
  APP_STATE_INFO& app = stage->app();
  app.jobKind = kLoudnessJob;
  app.trackSelected.fill(0);
  std::fill_n(app.trackSelected.begin(), 2, std::uint8_t{1});
  if (bare) stage->samples = LoudnessSamples(app);
  return cli::SetRange({}, kLoudnessRange, stage->session.get()) == cli::kDone;
}

// Runs the worker's analysis as the programs do, but on this thread and without progress.
bool Analyse(const fs::path& clip, Method method, bool timecodeCheck, AppState* state) {
  APP_STATE_INFO& app = state->info;
  platform::CopyText(app.mxfPath, kMxfPathChars, platform::ToUtf16(clip.string()));
  app.mxfFile = platform::File::Open(app.mxfPath, platform::OpenMode::kReadAlone);
  app.jobKind = kAnalysisJob;
  app.useFileIo = method;
  app.noTimecodeCheck = timecodeCheck ? 0 : 1;
  std::int32_t result = kCancelled;
  app.ui.progressDialog = [&](const JobReport& report) {
    if (report.message != JOB_MSG_PHASE) result = report.result;
  };
  WorkerThread(&app);
  app.mxfFile.Close();
  return result == kSuccess;
}

fs::path RemuxPath(const Stage& stage) {
  return stage.material.clip.parent_path() / "remux.mxf";
}

bool Ffmpeg(std::vector<std::string> words) {
  words.insert(words.begin(), {"ffmpeg", "-nostdin", "-v", "error", "-y"});
  return RunProgram(words);
}

bool Remux(const Stage& stage) {
  std::vector<std::string> words = {"-i", stage.material.clip.string()};
  std::vector<std::string> maps = {"-map", "0:v"};
  for (std::size_t t = 0; t < stage.material.mono.size(); ++t) {
    words.insert(words.end(), {"-i", stage.material.mono[t].string()});
    maps.insert(maps.end(), {"-map", std::to_string(t + 1)});
  }
  words.insert(words.end(), maps.begin(), maps.end());
  words.insert(words.end(), {"-c", "copy", RemuxPath(stage).string()});
  return Ffmpeg(words) && FlushFile(RemuxPath(stage));
}

// ---- The ways ----

using RewriteStep = std::function<bool(APP_STATE_INFO&)>;

Way RewriteWay(std::string name, Stage* stage, bool stereo, RewriteStep step, bool flush = true) {
  return {std::move(name), [=](bool firstRound) {
            MeasuredJob job{[=] { return PrepareRewrite(stage, stereo, flush, firstRound); },
                            [=] { return step(stage->app()); },
                            {}};
            if (firstRound) job.check = [=] { return HoldsSources(stage->app()); };
            return job;
          }};
}

Group RewriteGroup(Stage* stage) {
  const RewriteStep mapped = [](APP_STATE_INFO& app) {
    return RewrapMapped(app.mxfPath, app.tracks, app.mxf) == kSuccess;
  };
  const RewriteStep fileIo = [](APP_STATE_INFO& app) {
    return RewrapFileIo(app.mxfPath, app.tracks, app.mxf) == kSuccess;
  };
  const auto bare = [](bool advised) -> RewriteStep {
    return [=](APP_STATE_INFO& app) { return BareRewrite(app, advised); };
  };
  // Runs ffmpeg once, so that the program itself is in memory.
  const auto warmUp = [] {
    return Ffmpeg({"-f", "lavfi", "-i", "anullsrc", "-t", "1", "-f", "null", "-"});
  };
  const MeasuredJob remux = {warmUp, [=] { return Remux(*stage); },
                             [=] { return fs::remove(RemuxPath(*stage)); }};
  return {"rewriting all tracks",
          {RewriteWay("bare", stage, false, bare(false)),
           RewriteWay("bare-advised", stage, false, bare(true)),
           RewriteWay("mapped", stage, false, mapped),
           RewriteWay("file-io", stage, false, fileIo),
           RewriteWay("mapped-stereo", stage, true, mapped),
           RewriteWay("file-io-stereo", stage, true, fileIo),
           {"remux", [=](bool) { return remux; }, 1, true}}};
}

// The bare loop and both engines, without waiting for the medium.
Group NoFlushGroup(Stage* stage) {
  return {"rewriting all tracks, nothing flushed",
          {RewriteWay(
               "bare-no-flush", stage, false,
               [](APP_STATE_INFO& app) { return BareRewrite(app, false); }, false),
           RewriteWay(
               "mapped-no-flush", stage, false,
               [](APP_STATE_INFO& app) {
                 return RewrapMapped(app.mxfPath, app.tracks, app.mxf) == kSuccess;
               },
               false),
           RewriteWay(
               "file-io-no-flush", stage, false,
               [](APP_STATE_INFO& app) {
                 return RewrapFileIo(app.mxfPath, app.tracks, app.mxf) == kSuccess;
               },
               false)}};
}

Way ExportWay(std::string name, Stage* stage, RewriteStep step, bool flush = true) {
  return {std::move(name), [=](bool firstRound) {
            MeasuredJob job{[=] { return PrepareExport(stage, flush); },
                            [=] { return step(stage->app()); },
                            {}};
            if (firstRound) {
              job.check = [=] { return HoldExports(stage->app(), stage->exports); };
            }
            return job;
          }};
}

Group ExportGroup(Stage* stage) {
  return {"export of all tracks",
          {ExportWay("bare-export", stage,
                     [=](APP_STATE_INFO& app) { return BareExport(app, stage->exports); }),
           ExportWay("export-mapped", stage,
                     [](APP_STATE_INFO& app) {
                       return ExportMapped(app.mxfPath, app.tracks, app.mxf) == kSuccess;
                     }),
           ExportWay("export-file-io", stage, [](APP_STATE_INFO& app) {
             return ExportFileIo(app.mxfPath, app.tracks, app.mxf) == kSuccess;
           })}};
}

Group LoudnessGroup(Stage* stage) {
  const auto measured = [=] {
    const MXF_AUDIO_INFO& audio = *stage->app().mxf->audio;
    const Loudness found = {audio.integratedLoudness, audio.truePeak, audio.loudnessRange};
    Loudness bare{};
    return BareLoudness(stage->app(), LoudnessSamples(stage->app()), &bare) && found == bare;
  };
  const auto engine = [=] {
    APP_STATE_INFO& app = stage->app();
    return MeasureLoudness(app.mxfPath, app.tracks, app.mxf, app.trackSelected.data()) == kSuccess;
  };
  return {"loudness of tracks 1 and 2",
          {{"bare-loudness",
            [=](bool) {
              return MeasuredJob{
                  [=] { return PrepareLoudness(stage, true); },
                  [=] { return BareLoudness(stage->app(), stage->samples, &stage->loudness); },
                  {}};
            }},
           {"loudness", [=](bool firstRound) {
              MeasuredJob job{[=] { return PrepareLoudness(stage, false); }, engine, {}};
              if (firstRound) job.check = measured;
              return job;
            }}}};
}

MeasuredJob LoadJob(const fs::path& clip, Method method, bool timecodeCheck) {
  const auto state = std::make_shared<std::unique_ptr<AppState>>();
  return {[=] { return (*state = std::make_unique<AppState>()) != nullptr; },
          [=] { return Analyse(clip, method, timecodeCheck, state->get()); },
          {}};
}

Group LoadGroup(Stage* stage) {
  const auto way = [=](std::string name, Method method, bool timecodeCheck) {
    return Way{std::move(name),
               [=](bool) { return LoadJob(stage->material.clip, method, timecodeCheck); }};
  };
  return {"load",
          {way("load", Method::kMemoryMapping, false),
           way("load-continuity", Method::kMemoryMapping, true),
           way("load-file-io", Method::kGenericFileIo, false),
           way("load-file-io-continuity", Method::kGenericFileIo, true)}};
}

// ---- Measuring and printing ----

double Median(const std::vector<Figures>& runs, double Figures::*field) {
  std::vector<double> values;
  for (const Figures& figures : runs)
    values.push_back(figures.*field);
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
}

double Least(const std::vector<Figures>& runs, double Figures::*field) {
  const auto less = [=](const Figures& a, const Figures& b) { return a.*field < b.*field; };
  return (*std::min_element(runs.begin(), runs.end(), less)).*field;
}

[[noreturn]] void GiveUp(const std::string& what) {
  fmt::print(stderr, "bench_jobs: {} has failed or come to a wrong result\n", what);
  std::exit(1);
}

bool IsWanted(const Arguments& arguments, const std::string& name) {
  return arguments.only.empty() ||
         std::find(arguments.only.begin(), arguments.only.end(), name) != arguments.only.end();
}

void PrintHead(const Group& group, bool cold) {
  fmt::print("\n{}, {}\n{:<24}", group.title, cold ? "cold" : "warm", "way");
  for (const Column& column : kColumns)
    fmt::print("{:>10}", column.title);
  fmt::print("{:>10}{:>8}{:>10}\n", "least ms", "ratio", "pages/fr");
}

// The median, over the rounds, of a way's time divided by the base's time in the same round: when
// the machine is slower for a while, it is slower for both.
double Ratio(const std::vector<Figures>& runs, const std::vector<Figures>& base) {
  std::vector<Figures> ratios;
  for (std::size_t round = 0; round < std::min(runs.size(), base.size()); ++round) {
    ratios.emplace_back();
    ratios.back().job = runs[round].job / base[round].job;
  }
  return Median(ratios, &Figures::job);
}

void PrintRow(const Way& way, const std::vector<Figures>& runs, const std::vector<Figures>* base,
              std::uint32_t frames) {
  fmt::print("{:<24}", way.name);
  for (const Column& column : kColumns)
    fmt::print("{:>10.1f}", Median(runs, column.field) / column.unit);
  fmt::print("{:>10.1f}{:>8}{:>10.2f}\n", Least(runs, &Figures::job),
             base != nullptr ? fmt::format("{:.2f}", Ratio(runs, *base)) : "-",
             Median(runs, &Figures::diskRead) / static_cast<double>(kPageBytes) / frames);
}

void RunGroup(const Group& group, bool cold, const Stage& stage) {
  std::vector<Way> ways;
  for (const Way& way : group.ways) {
    if (IsWanted(stage.arguments, way.name) && !(cold && way.onlyWarm)) ways.push_back(way);
  }
  if (ways.empty()) return;
  std::vector<fs::path> files = stage.material.mono;
  files.insert(files.end(), {stage.material.stereo, stage.material.clip});
  std::vector<std::vector<Figures>> runs(ways.size());
  for (std::uint32_t round = 0; round < stage.arguments.runs; ++round) {
    for (std::size_t w = 0; w < ways.size(); ++w) {
      if (round >= ways[w].mostRuns) continue;
      if (!cold) WarmUp(files);
      const auto figures = Measure(stage.arguments.folder, cold, ways[w].job(round == 0));
      if (!figures) GiveUp(ways[w].name);
      runs[w].push_back(*figures);
    }
  }
  PrintHead(group, cold);
  const bool hasBase = ways[0].name == group.ways[0].name;
  const auto* base = hasBase ? &runs[0] : nullptr;
  for (std::size_t w = 0; w < ways.size(); ++w)
    PrintRow(ways[w], runs[w], base, stage.facts.frames);
  std::fflush(stdout);
}

void CompareJobs(const Arguments& arguments) {
  Stage stage;
  stage.arguments = arguments;
  if (!MakeMaterial(arguments.folder, arguments.seconds, arguments.tracks, &stage.material)) {
    GiveUp("the material");
  }
  stage.exports = stage.material.clip.parent_path() / "export";
  if (!Load(&stage)) GiveUp("the load");
  stage.facts = FactsOf(stage.app());
  stage.session.reset();
  const ClipFacts& facts = stage.facts;
  fmt::print("{}\n", MachineText(arguments.folder));
  fmt::print(
      "clip: {:.1f} MB, {} frames, {} tracks, {} partitions, audio {:.1f} MB on {} pages "
      "({:.1f} MB)\n",
      static_cast<double>(facts.bytes) / kMegabyte, facts.frames, facts.tracks, facts.partitions,
      static_cast<double>(facts.audioBytes) / kMegabyte, facts.audioPages,
      static_cast<double>(facts.audioPages * kPageBytes) / kMegabyte);
  fmt::print(
      "median of {} runs; MB are 10^6 bytes; read and write: by the device with the sync; "
      "fetch and dirty: by the process\n",
      arguments.runs);
  for (const bool cold : {false, true}) {
    if (cold && !arguments.cold) continue;
    for (const Group& group : {RewriteGroup(&stage), NoFlushGroup(&stage), ExportGroup(&stage),
                               LoudnessGroup(&stage), LoadGroup(&stage)}) {
      RunGroup(group, cold, stage);
    }
  }
  fs::remove_all(stage.exports);
}

std::vector<Figures> WarmLoads(const Arguments& arguments, const fs::path& clip,
                               bool timecodeCheck) {
  std::vector<Figures> runs;
  for (std::uint32_t run = 0; run <= arguments.runs; ++run) {
    const auto figures =
        Measure(arguments.folder, false, LoadJob(clip, Method::kMemoryMapping, timecodeCheck));
    if (!figures) GiveUp("the load of " + clip.string());
    if (run > 0) runs.push_back(*figures);  // the first run only brings the pages into memory
  }
  return runs;
}

void LoadSparseClips(const Arguments& arguments) {
  fs::create_directories(arguments.folder);
  fmt::print("{}\n59.94 frames, {} tracks; median of {} loads behind one more\n",
             MachineText(arguments.folder), kSparseTracks, arguments.runs);
  fmt::print("{:>8}{:>9}  {:<17}{:>9}{:>10}{:>10}{:>10}\n", "minutes", "frames", "way", "s",
             "us/frame", "read MB", "peak MB");
  for (const std::uint32_t minutes : kSparseMinutes) {
    const fs::path clip = arguments.folder / fmt::format("sparse{}.mxf", minutes);
    if (!MakeSparseClip(clip, minutes)) GiveUp("making " + clip.string());
    const std::uint32_t frames = SparseFrames(minutes);
    for (const bool timecodeCheck : {false, true}) {
      const std::vector<Figures> runs = WarmLoads(arguments, clip, timecodeCheck);
      const double seconds = Median(runs, &Figures::job) / 1e3;
      fmt::print("{:>8}{:>9}  {:<17}{:>9.4f}{:>10.3f}{:>10.1f}{:>10.1f}\n", minutes, frames,
                 timecodeCheck ? "load-continuity" : "load", seconds, seconds / frames * 1e6,
                 Median(runs, &Figures::diskRead) / kMegabyte,
                 Median(runs, &Figures::peakAnonymous) / kMegabyte);
      std::fflush(stdout);
    }
  }
}

}  // namespace
}  // namespace quorvan::bench

int main(int argc, char** argv) {
  quorvan::bench::Arguments arguments;
  CLI::App app{"Compares the jobs with the least that has to be done for them"};
  app.add_option("folder", arguments.folder, "where the material is kept")->required();
  app.add_option("--seconds", arguments.seconds, "length of the clip")->capture_default_str();
  app.add_option("--tracks", arguments.tracks, "audio tracks, 2 to 24")
      ->check(CLI::Range(2, 24))
      ->capture_default_str();
  app.add_option("--runs", arguments.runs, "runs of each way")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_flag("--cold", arguments.cold, "with an empty cache too; needs root");
  app.add_option("--only", arguments.only, "names of ways")->delimiter(',');
  app.add_flag("--sparse", arguments.sparse, "load long clips that are mostly holes instead");
  CLI11_PARSE(app, argc, argv);
  arguments.folder = std::filesystem::absolute(arguments.folder);
  if (arguments.sparse) {
    quorvan::bench::LoadSparseClips(arguments);
  } else {
    quorvan::bench::CompareJobs(arguments);
  }
  return 0;
}
