#include "cli/companion.h"
#include "platform/console.h"

int main(int argc, char** argv) {
  quorvan::platform::PrepareStandardStreams();
  return quorvan::cli::RunCompanion(argc, argv);
}
