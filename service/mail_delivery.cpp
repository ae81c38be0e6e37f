#include "service/mail_delivery.h"

#include "service/core_support.h"

#include <curl/curl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd::service {
namespace {

namespace fs = std::filesystem;

constexpr long kSmtpPermanent = 500;
constexpr long kConnectSeconds = 10;
constexpr long kTransferSeconds = 60;

bool MakePrivateFolder(const fs::path& folder, std::string& error) {
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
    error = "cannot make " + folder.string() + ": " + std::strerror(errno);
    return false;
  }
  struct stat info {};
  if (::lstat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
    error = folder.string() + " is not a folder";
    return false;
  }
  if ((info.st_mode & 077) != 0 && ::chmod(folder.c_str(), 0700) != 0) {
    error = "cannot make " + folder.string() + " private";
    return false;
  }
  return true;
}

class MaildirDelivery : public MailDelivery {
 public:
  explicit MaildirDelivery(fs::path maildir) : maildir_(std::move(maildir)) {}

  Delivery Deliver(const std::string& sender,
                   const std::string& recipient,
                   const std::string& message,
                   std::string& error) override {
    (void)sender;
    (void)recipient;
    for (const fs::path& folder :
         {maildir_, maildir_ / "tmp", maildir_ / "new", maildir_ / "cur"}) {
      if (!MakePrivateFolder(folder, error)) {
        return Delivery::kFailed;
      }
    }
    const std::string name =
        std::to_string(::time(nullptr)) + "." + RandomHex(12) + ".quillbay";
    const fs::path temp = maildir_ / "tmp" / name;
    const int fd =
        ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
      error = "cannot write " + temp.string() + ": " + std::strerror(errno);
      return Delivery::kFailed;
    }
    size_t written = 0;
    while (written < message.size()) {
      const ssize_t n =
          ::write(fd, message.data() + written, message.size() - written);
      if (n < 0 && errno == EINTR) {
        continue;
      }
      if (n <= 0) {
        break;
      }
      written += static_cast<size_t>(n);
    }
    const bool whole = written == message.size() && ::fsync(fd) == 0;
    ::close(fd);
    if (!whole ||
        ::rename(temp.c_str(), (maildir_ / "new" / name).c_str()) != 0) {
      error = "cannot deliver into " + maildir_.string();
      ::unlink(temp.c_str());
      return Delivery::kFailed;
    }
    return Delivery::kDelivered;
  }

 private:
  fs::path maildir_;
};

struct Upload {
  const std::string* text;
  size_t at = 0;
};

size_t ReadMessage(char* buffer, size_t size, size_t count, void* data) {
  auto* upload = static_cast<Upload*>(data);
  const size_t room = size * count;
  const size_t left = upload->text->size() - upload->at;
  const size_t n = std::min(room, left);
  std::memcpy(buffer, upload->text->data() + upload->at, n);
  upload->at += n;
  return n;
}

class SmtpDelivery : public MailDelivery {
 public:
  explicit SmtpDelivery(std::string relay) : relay_(std::move(relay)) {}

  Delivery Deliver(const std::string& sender,
                   const std::string& recipient,
                   const std::string& message,
                   std::string& error) override {
    CURL* curl = curl_easy_init();
    if (curl == nullptr) {
      error = "libcurl could not start";
      return Delivery::kFailed;
    }
    Upload upload{&message};
    const std::string from = "<" + sender + ">";
    const std::string to = "<" + recipient + ">";
    curl_slist* recipients = curl_slist_append(nullptr, to.c_str());
    curl_easy_setopt(curl, CURLOPT_URL, relay_.c_str());
    curl_easy_setopt(curl, CURLOPT_MAIL_FROM, from.c_str());
    curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients);
    curl_easy_setopt(curl, CURLOPT_READFUNCTION, ReadMessage);
    curl_easy_setopt(curl, CURLOPT_READDATA, &upload);
    curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, kTransferSeconds);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
    const CURLcode result = curl_easy_perform(curl);
    long answer = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &answer);
    curl_slist_free_all(recipients);
    curl_easy_cleanup(curl);
    if (result == CURLE_OK) {
      return Delivery::kDelivered;
    }
    error = std::string("the mail relay failed: ") +
            curl_easy_strerror(result) + " (" + std::to_string(answer) + ")";
    return answer >= kSmtpPermanent && upload.at == 0 ? Delivery::kRefused
                                                      : Delivery::kFailed;
  }

 private:
  std::string relay_;
};

}  // namespace

std::unique_ptr<MailDelivery> MakeMaildirDelivery(const fs::path& maildir) {
  return std::make_unique<MaildirDelivery>(maildir);
}

std::unique_ptr<MailDelivery> MakeSmtpDelivery(const std::string& relay) {
  return std::make_unique<SmtpDelivery>(relay);
}

}  // namespace qbpd::service
