#include "platform/status.h"

namespace zellick {

std::string Status::toString() const {
  const char* name = "failed";
  switch (code_) {
    case Code::Ok: return "ok";
    case Code::InvalidArgument: name = "invalid argument"; break;
    case Code::Unavailable: name = "unavailable"; break;
    case Code::TimedOut: name = "timed out"; break;
    case Code::Cancelled: name = "cancelled"; break;
    case Code::TooLarge: name = "too large"; break;
    case Code::Failed: break;
  }
  return message_.empty() ? name : std::string(name) + ": " + message_;
}

}  // namespace zellick
