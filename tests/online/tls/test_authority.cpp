#include "tests/online/tls/test_authority.h"

#include "platform/program_runner.h"

#include <fstream>
#include <vector>

namespace qbpd::testing {
namespace {

bool Openssl(const std::vector<std::string>& arguments) {
  std::vector<std::string> argv = {"openssl"};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  return MakeSpawnRunner({}, /*timeout_ms=*/30000)->Run(argv).ok();
}

}  // namespace

TestAuthority::TestAuthority(std::filesystem::path folder, std::string name)
    : folder_(std::move(folder)), name_(std::move(name)) {
  const std::string key = (folder_ / (name_ + ".key")).string();
  ok_ =
      Openssl({"req", "-x509", "-newkey", "ec", "-pkeyopt",
               "ec_paramgen_curve:P-256", "-nodes", "-keyout", key, "-out",
               certificate().string(), "-days", "2", "-subj", "/CN=" + name_});
}

TestAuthority::Issued TestAuthority::Issue(const std::string& file_name,
                                           const std::string& alt_names,
                                           int days) const {
  Issued issued;
  issued.certificate = folder_ / (file_name + ".pem");
  issued.key = folder_ / (file_name + ".key");
  const std::string request = (folder_ / (file_name + ".csr")).string();
  const std::string extensions = (folder_ / (file_name + ".ext")).string();
  {
    std::ofstream out(extensions);
    out << "subjectAltName=" << alt_names << "\n"
        << "extendedKeyUsage=serverAuth\n";
  }
  issued.ok =
      Openssl({"req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
               "-nodes", "-keyout", issued.key.string(), "-out", request,
               "-subj", "/CN=" + file_name}) &&
      Openssl({"x509", "-req", "-in", request, "-CA", certificate().string(),
               "-CAkey", (folder_ / (name_ + ".key")).string(),
               "-CAcreateserial", "-out", issued.certificate.string(), "-days",
               std::to_string(days), "-extfile", extensions});
  return issued;
}

}  // namespace qbpd::testing
