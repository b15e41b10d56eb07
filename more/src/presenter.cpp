#include "more/moreView.h"

namespace zellick {

MoreScreenPresenter::~MoreScreenPresenter() {
  *alive_ = false;
  controller_.reset();  // holds views of the screen
  screen_.reset();
}

void MoreScreenPresenter::presentModalViewController(const std::string& nibName) {
  if (nibName != kMoreNibName) {
    services_.log.line("No screen \"" + nibName + "\" to present");
    return;
  }
  if (screen_) return;  // on show, or still going: its button cannot have been reached
  screen_ = services_.host.loadScreen(nibName, moreInterface(services_.host.screenBounds()));
  if (!screen_) return;
  controller_ = std::make_unique<moreView>(
      MoreServices{*screen_, *this, services_.mail, services_.application, services_.tracker,
                   services_.apps, services_.log, services_.configuration});
  controller_->viewDidLoad();
  controller_->viewWillAppear(false);
  shown_ = true;
  services_.host.show(*screen_, false);
}

void MoreScreenPresenter::dismissModalViewControllerAnimated(bool animated) {
  if (!shown_) return;
  shown_ = false;
  std::weak_ptr<bool> alive = alive_;
  services_.host.hide(*screen_, animated, [this, alive] {
    if (!alive.lock()) return;
    controller_.reset();
    screen_.reset();
  });
}

}  // namespace zellick
