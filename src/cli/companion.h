// MXF Quorvan's console companion, for unattended work and for checks: reads its arguments and runs
// a command.

#pragma once

namespace quorvan::cli {

// Runs the command that the arguments name; `argc` and `argv` are those of main. Returns the exit
// status of the command: kWrongUsage for wrong arguments, kDone after --help or --version, kFailed
// when memory is out. Throws nothing.
int RunCompanion(int argc, const char* const* argv);

}  // namespace quorvan::cli
