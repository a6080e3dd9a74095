// MXF Quorvan's console companion, for unattended work and for checks: from its arguments to the
// command.

#pragma once

namespace quorvan::cli {

// Runs the command that the arguments name, as main gets them. Returns the exit status. Throws
// nothing.
int RunCompanion(int argc, const char* const* argv);

}  // namespace quorvan::cli
