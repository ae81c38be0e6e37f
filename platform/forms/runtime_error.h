#ifndef QBPD_PLATFORM_FORMS_RUNTIME_ERROR_H_
#define QBPD_PLATFORM_FORMS_RUNTIME_ERROR_H_

#include <stdexcept>
#include <string>

namespace qbpd {

// Error numbers of the program's runtime, as its handlers know them.
inline constexpr int kErrInvalidCall = 5;       // invalid procedure call
inline constexpr int kErrSubscript = 9;         // subscript out of range
inline constexpr int kErrTypeMismatch = 13;     // type mismatch
inline constexpr int kErrNoSuchControl = 340;   // control array element missing
inline constexpr int kErrElementExists = 360;   // control array element exists
inline constexpr int kErrNoSuchProperty = 438;  // no such property or method
inline constexpr int kErrKeyExists = 457;       // key already in collection
inline constexpr int kErrNoSuchForm = 424;      // object required

// An error raised by the program's own runtime: a missing key, a duplicate
// key, an unknown control or property. It is an ordinary exception: the event
// dispatch catches it and goes on, as the program's handlers resume at their
// next statement.
class RuntimeError : public std::runtime_error {
 public:
  RuntimeError(int number, const std::string& message)
      : std::runtime_error(message), number_(number) {}

  int number() const { return number_; }

 private:
  int number_;
};

// Raised by a host when the run cannot go on: a scripted run met a message box
// or form it did not expect, or an expectation failed. The event dispatch
// never swallows it.
class HostAbort {
 public:
  explicit HostAbort(std::string message) : message_(std::move(message)) {}
  const std::string& message() const { return message_; }

 private:
  std::string message_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_RUNTIME_ERROR_H_
