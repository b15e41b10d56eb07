// Building the More screen and drawing its rows.
#include "more/moreView.h"

#include "internal.h"

namespace zellick {

namespace {

const DefaultsValue* field(const DefaultsValue& entry, const char* key) {
  const auto* d = std::get_if<DefaultsDictionary>(&entry);
  if (!d) return nullptr;
  auto it = d->find(key);
  return it == d->end() ? nullptr : &it->second;
}

}  // namespace

std::string entryText(const DefaultsValue& entry, const char* key) {
  const DefaultsValue* v = field(entry, key);
  if (!v) return {};
  if (const auto* s = std::get_if<std::string>(v)) return *s;
  if (const auto* i = std::get_if<long long>(v)) return std::to_string(*i);
  return {};
}

moreView::moreView(MoreServices services) : services_(services) {}

moreView::~moreView() {
  *alive_ = false;
  if (pTblView) {
    pTblView->setDataSource(nullptr);
    pTblView->setDelegate(nullptr);
  }
  if (bar_) bar_->setDelegate(nullptr);
  moreTableDataSource.clear();
}

void moreView::viewDidLoad() {
  Screen& screen = services_.screen;
  RootView& root = *screen.rootView();
  const double w = root.bounds().w;
  pTblView = screen.tableView("pTblView");

  bar_ = root.addNavigationBar({0, 0, w, kNavigationBarHeight});
  root.setBackgroundColor(Color::White);
  if (bar_) {
    bar_->setDelegate(this);
    bar_->setTintColor(Color::White);
    bar_->setBarStyle(BarStyle::BlackTranslucent);
    bar_->setTranslucent(true);
    // "More" over "Back": the bar shows the title and a back button named after the item below.
    bar_->pushNavigationItem({"Back"}, false);
    bar_->pushNavigationItem({"More"}, false);
    bar_->setLeftBarButtonItemOfTopItem(false);
  }

  // The second label lies below the 40-point header on purpose: it is drawn over the rows, in
  // the gap the empty section 1 leaves before the list of apps.
  const auto headerLabel = [w](double x, double y, const char* text) {
    HeaderLabel l;
    l.frame = {x, y, w, kTableHeaderHeight};
    l.text = text;
    l.font = {kBoldSystemFontName, kHeaderFontSize};
    l.textColor = Color::White;
    l.shadowColor = Color::Black;
    l.shadowOffset = {0, 1};
    l.backgroundColor = Color::Clear;
    return l;
  };
  if (pTblView) {
    pTblView->setTableHeaderView(
        {{0, 0, w, kTableHeaderHeight},
         {headerLabel(18, 10, "Send Feedback"), headerLabel(18, 185, "Other Orvanta Apps")}});
  }

  moreTableDataSource.clear();
  if (auto apps = services_.apps.getApps()) {
    moreTableDataSource.push_back(std::move(*apps));
  } else {
    // Neither a cache nor the seed list: the feedback rows still work.
    services_.log.line("No list of other apps: the cache is empty and the seed list missing");
    moreTableDataSource.emplace_back();
  }
  services_.log.line(format("%d", static_cast<int>(moreTableDataSource.size())));

  if (pTblView) {
    pTblView->setDataSource(this);
    pTblView->setDelegate(this);
    pTblView->reloadData();
  }
}

// Shown modally, the screen has no navigation controller whose bar it could hide.
void moreView::viewWillAppear(bool) {}

bool moreView::shouldAutorotateToInterfaceOrientation(InterfaceOrientation orientation) const {
  return orientation == InterfaceOrientation::Portrait;
}

const DefaultsArray& moreView::catalogue() const {
  static const DefaultsArray none;
  return moreTableDataSource.empty() ? none : moreTableDataSource.front();
}

int moreView::numberOfSectionsInTableView(TableView&) { return 3; }

int moreView::tableViewNumberOfRowsInSection(TableView&, int section) {
  if (section == kFeedbackSection) return static_cast<int>(std::size(kFeedbackRows));
  if (section == kAppsSection) return static_cast<int>(catalogue().size());
  return 0;
}

TableViewCell moreView::tableViewCellForRowAtIndexPath(TableView&, IndexPath indexPath) {
  TableViewCell cell;
  if (indexPath.section == kAppsSection && indexPath.row >= 0 &&
      static_cast<std::size_t>(indexPath.row) < catalogue().size()) {
    const DefaultsValue& entry = catalogue()[static_cast<std::size_t>(indexPath.row)];
    // Asked each time the row is drawn, so an icon that arrived since shows.
    cell.imageFile = services_.apps.getAppIcon(entryText(entry, kAppleIdKey)).value_or("");
    cell.text = entryText(entry, kAppNameKey);
  } else if (indexPath.section == kFeedbackSection && indexPath.row >= 0 &&
             static_cast<std::size_t>(indexPath.row) < std::size(kFeedbackRows)) {
    const FeedbackRow& row = kFeedbackRows[indexPath.row];
    cell.image = row.image;
    cell.text = row.text;
  }
  cell.backgroundColor = Color::Black;
  cell.textColor = Color::White;
  return cell;
}

}  // namespace zellick
