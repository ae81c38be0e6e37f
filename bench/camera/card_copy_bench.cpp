// The card copy as the program runs it (every file copied, flushed, read
// back and compared, three batches at a time on threads of their own),
// timed, with the longest gap between two event pumps: the longest a
// person's click waits during the copy.
//   card_copy_bench CARD-FOLDER DESTINATION [move]
#include "camera/card_files.h"
#include "platform/file_transfer.h"
#include "platform/places.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: card_copy_bench CARD DESTINATION [move]\n");
    return 2;
  }
  using Clock = std::chrono::steady_clock;
  const std::string card = argv[1];
  const std::string destination = argv[2];
  const bool move = argc > 3 && std::string(argv[3]) == "move";
  auto transfer = qbpd::MakeVerifiedFileTransfer();
  const auto start = Clock::now();
  const std::vector<std::string> files = qbpd::ListFolderFiles(card);
  qbpd::MakeFolders(destination);
  auto last_pump = Clock::now();
  double longest_ms = 0;
  auto pump = [&] {
    const auto now = Clock::now();
    longest_ms = std::max(
        longest_ms,
        std::chrono::duration<double, std::milli>(now - last_pump).count());
    last_pump = now;
  };
  // Waits as the desktop host's WaitForWork does: events every 2 ms.
  auto wait = [&](const std::function<bool()>& done) {
    while (!done()) {
      pump();
      if (!done()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      }
    }
  };
  const qbpd::CardCopyReport report =
      qbpd::CopyFilesInto(files, destination, move, *transfer, pump, wait);
  const double seconds =
      std::chrono::duration<double>(Clock::now() - start).count();
  std::printf("files %d failed %d seconds %.3f longest_event_wait_ms %.1f\n",
              report.done, report.failed, seconds, longest_ms);
  return report.failed == 0 ? 0 : 1;
}
