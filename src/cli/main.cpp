#include "cli/companion.h"
#include "platform/console.h"
#include "platform/process.h"

int main(int argc, char** argv) {
  quorvan::platform::PrepareProcess();
  quorvan::platform::PrepareStandardStreams();
  if (!quorvan::platform::TakeArguments(&argc, &argv)) return 1;
  return quorvan::cli::RunCompanion(argc, argv);
}
