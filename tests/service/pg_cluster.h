#ifndef QBPD_TESTS_SERVICE_PG_CLUSTER_H_
#define QBPD_TESTS_SERVICE_PG_CLUSTER_H_

#include "tests/support/temp_dir.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qbpd::testing {

// A throwaway PostgreSQL cluster in a temporary folder: made with initdb,
// started with pg_ctl on a unix socket in that folder (no TCP port, no
// system service), stopped and removed with the object, also when the test
// that made it failed. initdb refuses to run as root, so a test run as root
// runs the cluster as the user nobody in a folder that user owns.
class PgCluster {
 public:
  // Starts the cluster; `why()` tells why when it could not. The server's
  // programs are looked for under /usr/lib/postgresql/*/bin and on PATH.
  PgCluster();
  PgCluster(const PgCluster&) = delete;
  PgCluster& operator=(const PgCluster&) = delete;
  ~PgCluster();

  // Whether the server programs were found at all (a test without them is
  // skipped; scripts/setup installs them).
  bool installed() const { return !bin_.empty(); }
  bool running() const { return running_; }
  const std::string& why() const { return why_; }
  // libpq's connection words for the cluster's first database.
  std::string conninfo() const;
  // Stops the server at once, as a crash would, and starts it again; false
  // when it did not come back.
  bool Restart();
  // Makes a new empty database `name` and gives its connection words, so
  // that tests on one cluster do not see each other's tables.
  std::string NewDatabase(const std::string& name) const;

 private:
  // Runs one of the server's programs as the cluster's user; its output
  // goes to the log. False when it failed.
  bool RunAsOwner(const std::vector<std::string>& args);

  TempDir dir_;
  std::filesystem::path bin_;
  std::filesystem::path home_;
  bool running_ = false;
  std::string why_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SERVICE_PG_CLUSTER_H_
