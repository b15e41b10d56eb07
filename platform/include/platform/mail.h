#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/status.h"

namespace zellick {

enum class MailComposeResult { Cancelled, Saved, Sent, Failed };

struct MailMessage {
  std::vector<std::string> toRecipients;
  std::string subject;
};

// A mail composer the app shows over its own screen, where the platform has one. Main thread.
class MailComposer {
 public:
  virtual ~MailComposer() = default;
  // True when a composer can be shown now (e.g. a mail account is set up).
  virtual bool canSendMail() const = 0;
  // Shows a composer for `message` over the current screen. `finished` runs once, on the main
  // thread, when the person is done with it; the composer stays shown until dismissed.
  virtual void present(const MailMessage& message, bool animated,
                       std::function<void(MailComposeResult, Status)> finished) = 0;
  virtual void dismiss(bool animated) = 0;
};

}  // namespace zellick
