// qbpd-script: runs the program headless on a script of user actions.
#include "app/driver/script_runner.h"
#include "app/program/program.h"

int main(int argc, char** argv) {
  return qbpd::ScriptMain(argc, argv, qbpd::RegisterProgram, [] {
    // A script's settings live in memory; it says what it needs.
    return qbpd::MakePlatformServices(qbpd::MakeMemorySettingsStore());
  });
}
