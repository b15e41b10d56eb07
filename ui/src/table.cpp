#include "ui/table.h"

#include <QColor>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTimer>

namespace zellick::ui {

namespace {

enum Role { RowHeight = Qt::UserRole + 1, IsRow, First, Last };

}  // namespace

// --- tables ---

QtTableView::QtTableView(QQuickItem* item, QQuickItem* root, const FontAliases& fonts, Log& log)
    : QtItemView<TableView>(item, root, 0, true, log), fonts_(fonts) {
  // Its rows hold it, but it is ours to delete.
  QQmlEngine::setObjectOwnership(this, QQmlEngine::CppOwnership);
  if (item) item->setProperty("rows", QVariant::fromValue<QObject*>(this));
}

QtTableView::~QtTableView() {
  // The rows go while the model is still there to hear it.
  if (item_) item_->setProperty("rows", QVariant::fromValue<QObject*>(nullptr));
}

void QtTableView::setDataSource(TableViewDataSource* dataSource) {
  if (dataSource == dataSource_) return;
  dataSource_ = dataSource;
  // Rows of another source, or of none, must not stay on show; the new rows usually come with
  // the reloadData() that follows, and are made once.
  if (!entries_.empty()) reloadData();
  if (!dataSource_ || reloadDue_) return;
  reloadDue_ = true;
  QTimer::singleShot(0, this, [this] {
    if (reloadDue_) reloadData();
  });
}

void QtTableView::setTableHeaderView(const TableHeaderView& header) {
  if (!item_) return;
  QVariantList labels;
  for (const HeaderLabel& l : header.labels) {
    labels.push_back(QVariantMap{
        {"x", l.frame.x},
        {"y", l.frame.y},
        {"w", l.frame.w},
        {"h", l.frame.h},
        {"text", QString::fromStdString(l.text)},
        {"font", labelFont(l.font, fonts_, log_)},
        {"color", toQColor(l.textColor)},
        {"shadowColor", toQColor(l.shadowColor)},
        {"shadowX", l.shadowOffset.x},
        {"shadowY", l.shadowOffset.y},
        {"background", toQColor(l.backgroundColor)},
    });
  }
  item_->setProperty("headerHeight", header.frame.h);
  item_->setProperty("headerLabels", labels);
}

void QtTableView::rebuild() {
  entries_.clear();
  if (!dataSource_) return;
  const int sections = std::max(0, dataSource_->numberOfSectionsInTableView(*this));
  // A gap above each section and below it; two meet between sections.
  double gap = kTableSectionGap;
  for (int s = 0; s < sections; ++s) {
    const int rows = std::max(0, dataSource_->tableViewNumberOfRowsInSection(*this, s));
    if (rows == 0) {
      gap += 2 * kTableSectionGap;
      continue;
    }
    entries_.push_back({s, -1, gap});
    for (int r = 0; r < rows; ++r) entries_.push_back({s, r, kTableRowHeight});
    gap = 2 * kTableSectionGap;
  }
  if (sections > 0) entries_.push_back({sections, -1, gap - kTableSectionGap});
}

void QtTableView::reloadData() {
  reloadDue_ = false;
  beginResetModel();
  rebuild();
  made_.clear();
  selected_.reset();
  endResetModel();
  select(-1, false);
  if (currentIndex_ != -1) {
    currentIndex_ = -1;
    emit currentChanged();
  }
}

void QtTableView::select(int index, bool fading) {
  if (fading != fading_) {
    fading_ = fading;
    emit fadingChanged();
  }
  if (index != selectedIndex_) {
    selectedIndex_ = index;
    emit selectionChanged();
  }
}

int QtTableView::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

QHash<int, QByteArray> QtTableView::roleNames() const {
  return {{RowHeight, "rowHeight"}, {IsRow, "isRow"}, {First, "first"}, {Last, "last"}};
}

QVariant QtTableView::data(const QModelIndex& index, int role) const {
  const int i = index.row();
  if (i < 0 || i >= static_cast<int>(entries_.size())) return {};
  const Entry& e = entries_[static_cast<std::size_t>(i)];
  const auto isRowAt = [this](int at) {
    return at >= 0 && at < static_cast<int>(entries_.size()) &&
           entries_[static_cast<std::size_t>(at)].row >= 0;
  };
  switch (role) {
    case RowHeight: return e.height;
    case IsRow: return e.row >= 0;
    case First: return e.row >= 0 && !isRowAt(i - 1);
    case Last: return e.row >= 0 && !isRowAt(i + 1);
    default: return {};
  }
}

int QtTableView::listIndex(IndexPath p) const {
  // Rows are in order: find the section's first row, then step.
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const Entry& e = entries_[i];
    if (e.section == p.section && e.row == 0) {
      const std::size_t at = i + static_cast<std::size_t>(p.row);
      if (p.row >= 0 && at < entries_.size() && entries_[at].section == p.section &&
          entries_[at].row == p.row)
        return static_cast<int>(at);
      return -1;
    }
  }
  return -1;
}

QVariantMap QtTableView::cell(int index) {
  if (!dataSource_ || index < 0 || index >= static_cast<int>(entries_.size())) return {};
  const Entry e = entries_[static_cast<std::size_t>(index)];
  if (e.row < 0) return {};
  TableViewCell c = dataSource_->tableViewCellForRowAtIndexPath(*this, {e.section, e.row});
  QUrl image;
  if (!c.image.empty()) {
    image = artworkUrl(c.image);
    if (image.isEmpty() && missingArtwork_.insert(c.image).second)
      log_.line("no artwork named \"" + c.image + "\"");
  }
  const QUrl file =
      c.imageFile.empty() ? QUrl() : QUrl::fromLocalFile(QString::fromStdString(c.imageFile));
  const int token = nextToken_++;
  QVariantMap shown{{"text", QString::fromStdString(c.text)},
                    {"image", image},
                    {"imageFile", file},
                    {"background", toQColor(c.backgroundColor)},
                    {"textColor", toQColor(c.textColor)},
                    {"token", token}};
  made_[index] = Made{token, std::move(c)};
  return shown;
}

void QtTableView::released(int index, int token) {
  auto it = made_.find(index);
  if (it != made_.end() && it->second.token == token) made_.erase(it);
}

std::optional<TableViewCell> QtTableView::cellForRowAtIndexPath(IndexPath p) const {
  auto it = made_.find(listIndex(p));
  if (it == made_.end()) return std::nullopt;
  return it->second.cell;
}

void QtTableView::tapped(int index) {
  if (!interaction_ || index < 0 || index >= static_cast<int>(entries_.size())) return;
  const Entry e = entries_[static_cast<std::size_t>(index)];
  if (e.row < 0) return;
  const IndexPath p{e.section, e.row};
  selected_ = p;
  select(index, false);
  if (delegate_) delegate_->tableViewDidSelectRowAtIndexPath(*this, p);
}

bool QtTableView::moveCurrent(int step) {
  const int n = static_cast<int>(entries_.size());
  int i = currentIndex_ >= 0 && currentIndex_ < n ? currentIndex_ : (step > 0 ? -1 : n);
  for (i += step; i >= 0 && i < n; i += step) {
    if (entries_[static_cast<std::size_t>(i)].row < 0) continue;
    currentIndex_ = i;
    emit currentChanged();
    return true;
  }
  return false;
}

bool QtTableView::tapCurrent() {
  if (currentIndex_ < 0 || currentIndex_ >= static_cast<int>(entries_.size())) return false;
  tapped(currentIndex_);
  return true;
}

void QtTableView::deselectRowAtIndexPath(IndexPath p, bool animated) {
  if (selected_ != p) return;
  selected_.reset();
  select(-1, animated);
}

// --- navigation bars ---

QtNavigationBar::QtNavigationBar(QQuickItem* item, QQuickItem* root, Log& log)
    : QtItemView<NavigationBar>(item, root, 0, true, log) {
  if (item) connect(item, SIGNAL(backClicked()), this, SLOT(backTapped()));
}

void QtNavigationBar::setTintColor(Color color) {
  if (item_) item_->setProperty("tintColor", toQColor(color));
}

void QtNavigationBar::setBarStyle(BarStyle style) {
  if (item_) item_->setProperty("barStyle", static_cast<int>(style));
}

void QtNavigationBar::setTranslucent(bool translucent) {
  if (item_) item_->setProperty("translucent", translucent);
}

void QtNavigationBar::pushNavigationItem(const NavigationItem& item, bool) {
  items_.push_back(item);
  show();
}

void QtNavigationBar::setLeftBarButtonItemOfTopItem(bool present) {
  if (items_.empty()) return;
  items_.back().hasLeftBarButtonItem = present;
  show();
}

bool QtNavigationBar::hasBackButton() const {
  return items_.size() >= 2 && !items_.back().hasLeftBarButtonItem;
}

void QtNavigationBar::show() {
  if (!item_) return;
  const bool back = hasBackButton();
  item_->setProperty("title",
                     items_.empty() ? QString() : QString::fromStdString(items_.back().title));
  item_->setProperty("backTitle",
                     back ? QString::fromStdString(items_[items_.size() - 2].title) : QString());
}

void QtNavigationBar::backTapped() {
  if (!interaction_ || !hasBackButton()) return;
  const NavigationItem top = items_.back();
  if (delegate_ && !delegate_->navigationBarShouldPopItem(*this, top)) return;
  items_.pop_back();
  show();
}

}  // namespace zellick::ui
