#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/application.h"
#include "platform/log.h"
#include "platform/mail.h"
#include "platform/table.h"
#include "platform/views.h"
#include "services/apps.h"
#include "services/configuration.h"
#include "services/tracker.h"

namespace zellick {

// The interface file of the More screen, and the name a mail composer is shown under.
inline constexpr const char* kMoreNibName = "moreViewController";
inline constexpr const char* kMailComposerName = "MFMailComposeViewController";

inline constexpr const char* kMailSubject = "Zellick Comments";
inline constexpr const char* kFacebookLikeTag = "facebookLike";

inline constexpr double kNavigationBarHeight = 45;
inline constexpr double kTableHeaderHeight = 40;
inline constexpr double kHeaderFontSize = 17;

// The feedback rows, by row: their text and picture. Taps are told apart by the text.
struct FeedbackRow {
  const char* text;
  const char* image;
};
inline constexpr FeedbackRow kFeedbackRows[] = {
    {"Email Comments", "EmailComments.png"},
    {"Review Zellick", "Review.png"},
    {"Like Orvanta on Facebook", "FacebookLike.png"},
};
inline constexpr int kFeedbackSection = 0;
inline constexpr int kAppsSection = 2;

// The More screen's controls: its table, below the navigation bar, the full width.
std::vector<ControlSpec> moreInterface(const Rect& bounds);

// What the More screen works with. All references outlive it.
struct MoreServices {
  Screen& screen;              // built from moreInterface()
  ScreenPresenter& presenter;  // the one that presented it
  MailComposer* mail;          // null where the platform has no composer
  Application& application;
  orvtracker& tracker;
  orvapps& apps;
  Log& log;
  const Configuration& configuration;
};

// The More screen: feedback by mail, a review, a like of the maker's page, and the maker's
// other apps. Shown over the counter; every action but mail leaves for another app. Main thread.
class moreView : public ViewController,
                 public TableViewDataSource,
                 public TableViewDelegate,
                 public NavigationBarDelegate {
 public:
  explicit moreView(MoreServices services);
  moreView(const moreView&) = delete;
  moreView& operator=(const moreView&) = delete;
  ~moreView() override;

  void viewDidLoad() override;
  void viewWillAppear(bool animated) override;
  void viewDidUnload() {}
  bool shouldAutorotateToInterfaceOrientation(InterfaceOrientation orientation) const;

  int numberOfSectionsInTableView(TableView& tableView) override;
  int tableViewNumberOfRowsInSection(TableView& tableView, int section) override;
  TableViewCell tableViewCellForRowAtIndexPath(TableView& tableView, IndexPath indexPath) override;
  void tableViewDidSelectRowAtIndexPath(TableView& tableView, IndexPath indexPath) override;
  bool navigationBarShouldPopItem(NavigationBar& bar, const NavigationItem& item) override;

  void backButtonClicked();
  void displayComposerSheet();
  void launchMailAppOnDevice();
  void mailComposeControllerDidFinishWithResult(MailComposeResult result, const Status& error);

  // Fields.
  TableView* pTblView = nullptr;
  // Exactly one element once loaded: the catalogue list as it was then.
  std::vector<DefaultsArray> moreTableDataSource;

 private:
  void sendFeedbackMail();
  void presentComposer(const MailMessage& message);
  const DefaultsArray& catalogue() const;

  MoreServices services_;
  NavigationBar* bar_ = nullptr;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

// Presents the More screen when asked for its interface file, on the host's screens, and takes
// it away again. Main thread.
class MoreScreenPresenter final : public ScreenPresenter {
 public:
  struct Services {
    ModalScreenHost& host;
    MailComposer* mail;
    Application& application;
    orvtracker& tracker;
    orvapps& apps;
    Log& log;
    const Configuration& configuration;
  };
  explicit MoreScreenPresenter(Services services) : services_(services) {}
  MoreScreenPresenter(const MoreScreenPresenter&) = delete;
  MoreScreenPresenter& operator=(const MoreScreenPresenter&) = delete;
  ~MoreScreenPresenter() override;

  void presentModalViewController(const std::string& nibName) override;
  void dismissModalViewControllerAnimated(bool animated) override;

  // The screen on show and its controller; null when none is.
  Screen* screen() const { return shown_ ? screen_.get() : nullptr; }
  moreView* controller() const { return shown_ ? controller_.get() : nullptr; }

 private:
  Services services_;
  std::unique_ptr<Screen> screen_;
  std::unique_ptr<moreView> controller_;
  bool shown_ = false;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace zellick
