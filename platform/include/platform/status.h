#pragma once

#include <string>
#include <utility>

namespace zellick {

// The outcome of an operation that can fail: ok, or what went wrong as a code the caller
// can act on and a message for the log. Cheap to copy; the default is ok.
class Status {
 public:
  enum class Code {
    Ok,
    InvalidArgument,  // the request itself was malformed
    Unavailable,      // no connection: the network or the host could not be reached
    TimedOut,         // no answer within the time allowed
    Cancelled,        // given up by our side, e.g. at exit
    TooLarge,         // the answer went beyond what we accept
    Failed,           // anything else; the message says what
  };

  Status() = default;
  Status(Code code, std::string message) : code_(code), message_(std::move(message)) {}

  bool ok() const { return code_ == Code::Ok; }
  Code code() const { return code_; }
  const std::string& message() const { return message_; }
  // "ok", or the code's name and the message, e.g. "timed out: no reply after 60 s".
  std::string toString() const;

 private:
  Code code_ = Code::Ok;
  std::string message_;
};

}  // namespace zellick
