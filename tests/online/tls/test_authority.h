#ifndef QBPD_TESTS_ONLINE_TLS_TEST_AUTHORITY_H_
#define QBPD_TESTS_ONLINE_TLS_TEST_AUTHORITY_H_

#include <filesystem>
#include <string>

namespace qbpd::testing {

// A throwaway certificate authority made by the openssl command in a test's
// folder, and the server certificates it issues. Keys are P-256.
class TestAuthority {
 public:
  // Makes the authority's key and self-signed certificate in `folder`, named
  // after `name`. ok() tells whether that worked.
  TestAuthority(std::filesystem::path folder, std::string name);

  bool ok() const { return ok_; }
  // The authority's certificate (PEM): the file a client trusts.
  std::filesystem::path certificate() const {
    return folder_ / (name_ + ".pem");
  }

  struct Issued {
    bool ok = false;
    std::filesystem::path certificate;
    std::filesystem::path key;
  };
  // A server certificate for `alt_names` ("DNS:localhost,IP:127.0.0.1"),
  // valid for `days` from now; a negative count makes one that has expired.
  Issued Issue(const std::string& file_name,
               const std::string& alt_names,
               int days) const;

 private:
  std::filesystem::path folder_;
  std::string name_;
  bool ok_ = false;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_ONLINE_TLS_TEST_AUTHORITY_H_
