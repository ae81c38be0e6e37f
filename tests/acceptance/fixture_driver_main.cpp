// The headless driver over the form runtime's fixture program, so that the
// runtime and the driver are tested by scripts of their own.
#include "app/driver/script_runner.h"
#include "tests/support/fixture_program.h"

int main(int argc, char** argv) {
  return qbpd::ScriptMain(argc, argv, qbpd::testing::RegisterFixtureProgram);
}
