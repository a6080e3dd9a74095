#include "bench/measured_run.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <new>
#include <sstream>
#include <thread>

namespace quorvan::bench {
namespace {

constexpr auto kSampleInterval = std::chrono::milliseconds(2);
constexpr double kSectorBytes = 512;
constexpr std::size_t kReadBytes = std::size_t{1} << 20;

// The memory that parent and child share.
struct Board {
  std::atomic<pid_t> watched{0};  // process whose memory is sampled, 0 for none
  Figures figures{};
};
Board* board = nullptr;

// The number of the line "name: number" of a file; 0 without such a line.
double NumberBehind(const std::string& path, const std::string& name) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name + ":")) return std::stod(line.substr(name.size() + 1));
  }
  return 0;
}

double AnonymousBytes(pid_t process) {
  return NumberBehind(fmt::format("/proc/{}/status", process), "RssAnon") * 1024;
}

dev_t DeviceOf(const std::filesystem::path& folder) {
  struct stat info {};
  return stat(folder.c_str(), &info) == 0 ? info.st_dev : 0;
}

struct Traffic {
  double read = 0;
  double written = 0;
};

Traffic DeviceTraffic(dev_t device) {
  std::ifstream file("/proc/diskstats");
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    unsigned major = 0, minor = 0;
    std::string name;
    double reads = 0, readMerges = 0, sectorsRead = 0, readMs = 0;
    double writes = 0, writeMerges = 0, sectorsWritten = 0;
    words >> major >> minor >> name >> reads >> readMerges >> sectorsRead >> readMs >> writes >>
        writeMerges >> sectorsWritten;
    if (words && makedev(major, minor) == device) {
      return {sectorsRead * kSectorBytes, sectorsWritten * kSectorBytes};
    }
  }
  return {};
}

Traffic ProcessTraffic() {
  return {NumberBehind("/proc/self/io", "read_bytes"),
          NumberBehind("/proc/self/io", "write_bytes")};
}

double Since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

double CpuMs() {
  double ms = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(who, &usage);
    for (const timeval& time : {usage.ru_utime, usage.ru_stime})
      ms += static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  }
  return ms;
}

bool DropCaches() {
  std::ofstream file("/proc/sys/vm/drop_caches");
  file << "3" << std::flush;
  if (!file) fmt::print(stderr, "the system's cache can be dropped by root only\n");
  return static_cast<bool>(file);
}

bool RunChild(dev_t device, bool cold, const MeasuredJob& job) {
  if (!job.prepare()) return false;
  SyncAll();
  if (cold && !DropCaches()) return false;
  Figures& figures = board->figures;
  const Traffic disk = DeviceTraffic(device);
  const Traffic process = ProcessTraffic();
  board->watched = getpid();
  const double cpu = CpuMs();
  const auto start = std::chrono::steady_clock::now();
  const bool done = job.run();
  figures.job = Since(start);
  figures.cpu = CpuMs() - cpu;
  figures.peakAnonymous = AnonymousBytes(getpid());
  board->watched = 0;
  const Traffic processAfter = ProcessTraffic();
  const auto syncStart = std::chrono::steady_clock::now();
  SyncAll();
  figures.synced = figures.job + Since(syncStart);
  const Traffic diskAfter = DeviceTraffic(device);
  figures.diskRead = diskAfter.read - disk.read;
  figures.diskWritten = diskAfter.written - disk.written;
  figures.processRead = processAfter.read - process.read;
  figures.processDirtied = processAfter.written - process.written;
  return done && (!job.check || job.check());
}

void ReadOnce(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  std::vector<char> buffer(kReadBytes);
  while (read(file, buffer.data(), buffer.size()) > 0) {
  }
  close(file);
}

// Samples the memory of the watched process until the child ends, and raises `*peak` (bytes). True
// when the child ended with status 0.
bool WatchToItsEnd(pid_t child, double* peak) {
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (const pid_t watched = board->watched) *peak = std::max(*peak, AnonymousBytes(watched));
    std::this_thread::sleep_for(kSampleInterval);
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string FirstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  return std::getline(file, line) ? line : "?";
}

std::string FileSystemOf(dev_t device) {
  std::ifstream file("/proc/self/mountinfo");
  const std::string wanted = fmt::format(" {}:{} ", major(device), minor(device));
  for (std::string line; std::getline(file, line);) {
    if (line.find(wanted) == std::string::npos) continue;
    const auto type = line.find(" - ") + 3;
    return line.substr(type, line.find(' ', type) - type);
  }
  return "?";
}

}  // namespace

std::optional<Figures> Measure(const std::filesystem::path& folder, bool cold,
                               const MeasuredJob& job) {
  if (board == nullptr) {
    void* shared =
        mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) return std::nullopt;
    board = new (shared) Board;
  }
  board->watched = 0;
  board->figures = {};
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) return std::nullopt;
  if (child == 0) _exit(RunChild(DeviceOf(folder), cold, job) ? 0 : 1);
  double peak = 0;
  if (!WatchToItsEnd(child, &peak)) return std::nullopt;
  Figures figures = board->figures;
  figures.peakAnonymous = std::max(figures.peakAnonymous, peak);
  return figures;
}

bool RunProgram(const std::vector<std::string>& arguments) {
  std::vector<char*> words;
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  pid_t program = 0;
  const int refused = posix_spawnp(&program, words[0], &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (refused != 0) return false;
  if (board != nullptr && board->watched != 0) board->watched = program;
  int status = 0;
  waitpid(program, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void SyncAll() {
  sync();
}

void WarmUp(const std::vector<std::filesystem::path>& files) {
  SyncAll();
  if (geteuid() == 0) DropCaches();
  for (const auto& path : files)
    ReadOnce(path);
}

std::string MachineText(const std::filesystem::path& folder) {
  utsname system{};
  uname(&system);
  const dev_t device = DeviceOf(folder);
  const std::string readAhead = FirstLine(
      fmt::format("/sys/dev/block/{}:{}/queue/read_ahead_kb", major(device), minor(device)));
  return fmt::format("{} cores, {} {}, {} (read-ahead {} kB), {:.1f} GB of memory",
                     std::thread::hardware_concurrency(), system.sysname, system.release,
                     FileSystemOf(device), readAhead,
                     NumberBehind("/proc/meminfo", "MemTotal") * 1024 / 1e9);
}

}  // namespace quorvan::bench
