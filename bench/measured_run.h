// Runs a job in a process of its own and measures what the run costs.

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
  double job;             // wall time of the job alone
  double cpu;             // processor time of the job, user and system, all cores added up
  double synced;          // wall time of the job and of the sync after it
  double diskRead;        // by the folder's device, with the sync; 0 where the system does not tell
  double diskWritten;     // the same
  double processRead;     // fetched from storage by the process and its children
  double processDirtied;  // bytes of pages that they changed
  double peakAnonymous;   // largest RssAnon; mapped pages of files do not count
};

struct MeasuredJob {
  std::function<bool()> prepare;
  std::function<bool()> run;    // is measured
  std::function<bool()> check;  // whether the result is right; may be empty
};

// In a child process: calls `prepare`, syncs, drops the system's cache when `cold` is true (as root
// only), calls and measures `run`, then calls `check`. Nothing when a step fails or the child dies.
std::optional<Figures> Measure(const std::filesystem::path& folder, bool cold,
                               const MeasuredJob& job);

// Runs a program with nothing on standard input and waits for its end. While it runs within a
// measured `run`, its memory is sampled for peakAnonymous. False unless it ends with status 0.
bool RunProgram(const std::vector<std::string>& arguments);

// Waits until everything that was written on this machine is on its medium.
void SyncAll();

// Reads the files from front to back, so that the system caches them. As root it drops the cache
// first: how a file was read decides in which units the system caches it and writes it back.
void WarmUp(const std::vector<std::filesystem::path>& files);

// A line of text with cores, kernel and memory of the machine, and with the file system and the
// read-ahead of the folder.
std::string MachineText(const std::filesystem::path& folder);

}  // namespace quorvan::bench
