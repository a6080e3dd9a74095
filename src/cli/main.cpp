#include "cli/commands.h"
#include "cli/companion.h"
#include "cli/console.h"
#include "platform/console.h"
#include "platform/process.h"

int main(int argc, char** argv) {
  quorvan::platform::PrepareProcess();
  quorvan::platform::PrepareStandardStreams();
  switch (quorvan::platform::TakeArguments(&argc, &argv)) {
    case quorvan::platform::ArgumentsState::kTaken:
      return quorvan::cli::RunCompanion(argc, argv);
    case quorvan::platform::ArgumentsState::kOutOfMemory:
      return quorvan::cli::kFailed;
    case quorvan::platform::ArgumentsState::kNoText:
      quorvan::cli::PrintErrorLine(
          "an argument is no Unicode text: please give such a file another name first");
      return quorvan::cli::kWrongUsage;
  }
}
