// One run of a job in a process of its own, and what it cost.

#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvan::bench {

// Times in milliseconds, sizes in bytes.
struct Figures {
  double job;       // the job alone
  double cpu;       // of the job, in program and system, on all cores together
  double synced;    // the job with the sync behind it
  double diskRead;  // of the folder's device, with the sync; 0 where it is not known
  double diskWritten;
  double processRead;  // fetched from storage by the process and those it started
  double processDirtied;
  double peakAnonymous;  // largest RssAnon; mapped pages of files do not count
};

struct MeasuredJob {
  std::function<bool()> prepare;
  std::function<bool()> run;    // the measured stretch
  std::function<bool()> check;  // may be empty
};

// Runs prepare, then a sync, `cold` also the dropping of the system's cache, then the measured
// stretch, then check, in a child process. Nothing when a step fails or the child dies.
std::optional<Figures> Measure(const std::filesystem::path& folder, bool cold,
                               const MeasuredJob& job);

// Runs a program with nothing on standard input and waits for it. Within a measured stretch its
// memory is the one that is watched. False unless it ends with status 0.
bool RunProgram(const std::vector<std::string>& arguments);

// Brings all written bytes of the system onto their media.
void SyncAll();

// Reads the files from front to back, so that the system has them in memory; root empties its cache
// first. How they came in decides how large the units are in which the system keeps and writes
// them.
void WarmUp(const std::vector<std::filesystem::path>& files);

// Cores, kernel, memory, and the file system and read-ahead of the folder.
std::string MachineText(const std::filesystem::path& folder);

}  // namespace quorvan::bench
