#ifndef QBPD_SERVICE_MAIL_DELIVERY_H_
#define QBPD_SERVICE_MAIL_DELIVERY_H_

#include <filesystem>
#include <memory>
#include <string>

namespace qbpd::service {

// How one message fared.
enum class Delivery {
  kDelivered,
  // The mail system refused this recipient (a permanent answer for the
  // address): the share leaves it out.
  kRefused,
  // The mail system could not be reached or failed: the share fails.
  kFailed,
};

// Where the service's e-mail goes.
class MailDelivery {
 public:
  virtual ~MailDelivery() = default;
  // Delivers `message` (a whole RFC 5322 message, CRLF line ends) to
  // `recipient`, sent by `sender`. `error` says why when it is not
  // delivered.
  virtual Delivery Deliver(const std::string& sender,
                           const std::string& recipient,
                           const std::string& message,
                           std::string& error) = 0;
};

// A maildir (tmp/, new/, cur/, made 0700 when missing): each message is
// written in full to tmp/ (0600), flushed, and renamed into new/ under a
// name of its own, so a reader never sees half a message.
std::unique_ptr<MailDelivery> MakeMaildirDelivery(
    const std::filesystem::path& maildir);

// An SMTP relay through libcurl: `relay` is a URL such as
// "smtp://127.0.0.1:2525" (or "smtps://..."; certificates are verified).
// A 5xx answer to the recipient is kRefused; anything else that fails is
// kFailed.
std::unique_ptr<MailDelivery> MakeSmtpDelivery(const std::string& relay);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_MAIL_DELIVERY_H_
