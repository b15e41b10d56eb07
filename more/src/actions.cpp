// What a tap on a row does, the back button, and the feedback mail.
#include "more/moreView.h"

#include "internal.h"
#include "platform/url.h"

namespace zellick {

void moreView::tableViewDidSelectRowAtIndexPath(TableView& tableView, IndexPath indexPath) {
  std::weak_ptr<bool> alive = alive_;
  if (indexPath.section == kAppsSection) {
    if (indexPath.row >= 0 && static_cast<std::size_t>(indexPath.row) < catalogue().size()) {
      const std::string appleid =
          entryText(catalogue()[static_cast<std::size_t>(indexPath.row)], kAppleIdKey);
      services_.tracker.Track(appleid);
      services_.application.openURL(services_.apps.getAppURL(appleid));
    }
  } else {
    // By the row's text, not its number.
    const std::string text =
        tableView.cellForRowAtIndexPath(indexPath).value_or(TableViewCell{}).text;
    if (text == kFeedbackRows[0].text) {
      sendFeedbackMail();
    } else if (text == kFeedbackRows[1].text) {
      services_.application.openURL(services_.configuration.storePageUrl);
    } else if (text == kFeedbackRows[2].text) {
      services_.tracker.Track(kFacebookLikeTag);
      services_.application.openURL(services_.configuration.facebookPageUrl);
    }
  }
  if (alive.lock()) tableView.deselectRowAtIndexPath(indexPath, true);
}

bool moreView::navigationBarShouldPopItem(NavigationBar&, const NavigationItem&) {
  backButtonClicked();
  return false;  // the bar keeps its items
}

void moreView::backButtonClicked() { services_.presenter.dismissModalViewControllerAnimated(true); }

void moreView::sendFeedbackMail() {
  MailComposer* mail = services_.mail;
  if (mail && mail->canSendMail()) {
    presentComposer({{services_.configuration.supportEmail}, kMailSubject});
  } else if (mail && mail->canSendMail()) {
    // Asks again, and would open a composer without a recipient; kept as it always was.
    displayComposerSheet();
  } else {
    launchMailAppOnDevice();
  }
}

void moreView::displayComposerSheet() { presentComposer({{}, kMailSubject}); }

void moreView::presentComposer(const MailMessage& message) {
  if (!services_.mail) return;
  std::weak_ptr<bool> alive = alive_;
  services_.mail->present(message, false, [this, alive](MailComposeResult result, Status error) {
    if (alive.lock()) mailComposeControllerDidFinishWithResult(result, error);
  });
}

void moreView::launchMailAppOnDevice() {
  services_.application.openURL(
      percentEscaped("mailto:" + services_.configuration.supportEmail + "?subject=" + kMailSubject,
                     kUrlPunctuation));
}

void moreView::mailComposeControllerDidFinishWithResult(MailComposeResult, const Status&) {
  if (services_.mail) services_.mail->dismiss(true);
}

}  // namespace zellick
