#pragma once

#include <QAbstractListModel>
#include <QObject>
#include <QVariantMap>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/log.h"
#include "platform/table.h"
#include "ui/views.h"

namespace zellick::ui {

// How a grouped table lays its rows out, in points.
inline constexpr double kTableRowHeight = 44;
inline constexpr double kTableSectionGap = 10;  // above and below every section, empty or not

// A table on a QML list (GroupedTable.qml): it is the list's model, one entry per row and one
// per gap between sections, so the list makes rows only as they come into view. Each row asks
// the data source for its cell once, when it is made (cell()), and says when it goes
// (released()); the cells of the rows made are what cellForRowAtIndexPath returns. Main thread.
class QtTableView : public QAbstractListModel, public QtItemView<TableView> {
  Q_OBJECT
  Q_PROPERTY(int selectedIndex READ selectedIndex NOTIFY selectionChanged)
  Q_PROPERTY(bool fading READ fading NOTIFY fadingChanged)
  Q_PROPERTY(int currentIndex READ currentIndex NOTIFY currentChanged)

 public:
  // `item` is the table's QML item; `fonts` must outlive the table.
  QtTableView(QQuickItem* item, QQuickItem* root, const FontAliases& fonts, Log& log);
  ~QtTableView() override;

  // A new source's rows are asked for at the next reloadData(), or else on the next turn of the
  // event loop; rows of the old one go at once.
  void setDataSource(TableViewDataSource* dataSource) override;
  void setDelegate(TableViewDelegate* delegate) override { delegate_ = delegate; }
  void setTableHeaderView(const TableHeaderView& header) override;
  void reloadData() override;
  std::optional<TableViewCell> cellForRowAtIndexPath(IndexPath indexPath) const override;
  std::optional<IndexPath> indexPathForSelectedRow() const override { return selected_; }
  void deselectRowAtIndexPath(IndexPath indexPath, bool animated) override;

  // The model.
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  // What a row shows: text, image (artwork URL), imageFile (file URL), background, textColor,
  // and a token to give back to released(). Empty for an index that is no row.
  Q_INVOKABLE QVariantMap cell(int index);
  // The row made with `token` is gone from the list.
  Q_INVOKABLE void released(int index, int token);
  // A tap on the row at `index`: it is selected and the delegate told.
  Q_INVOKABLE void tapped(int index);

  // The row the keys are on: moved `step` rows (gaps skipped; from nowhere, Down goes to the
  // first row and Up to the last), and tapped. False when there is no row to go to or tap.
  bool moveCurrent(int step);
  bool tapCurrent();
  // The list index of the keys' row, or -1.
  int currentIndex() const { return currentIndex_; }

  // The list index of the selected row, or -1; whether its highlight fades as it goes.
  int selectedIndex() const { return selectedIndex_; }
  bool fading() const { return fading_; }
  // The list index of a row, or -1 when there is no such row.
  int listIndex(IndexPath indexPath) const;

 signals:
  // Whether a highlight fades is told before the selection changes.
  void fadingChanged();
  void selectionChanged();
  void currentChanged();

 private:
  struct Entry {
    int section;
    int row;  // -1: a gap
    double height;
  };
  struct Made {
    int token;
    TableViewCell cell;
  };
  void rebuild();
  void select(int index, bool fading);

  const FontAliases& fonts_;
  TableViewDataSource* dataSource_ = nullptr;
  TableViewDelegate* delegate_ = nullptr;
  std::vector<Entry> entries_;
  std::map<int, Made> made_;  // by list index
  int nextToken_ = 1;
  std::optional<IndexPath> selected_;
  int selectedIndex_ = -1;
  int currentIndex_ = -1;
  bool fading_ = false;
  std::set<std::string> missingArtwork_;  // logged once each
  bool reloadDue_ = false;
};

// A navigation bar on a QML item (NavigationBar.qml: title, backTitle, barStyle, translucent,
// tintColor, and a signal backClicked()). Main thread.
class QtNavigationBar : public QObject, public QtItemView<NavigationBar> {
  Q_OBJECT
 public:
  QtNavigationBar(QQuickItem* item, QQuickItem* root, Log& log);

  void setDelegate(NavigationBarDelegate* delegate) override { delegate_ = delegate; }
  void setTintColor(Color color) override;
  void setBarStyle(BarStyle style) override;
  void setTranslucent(bool translucent) override;
  void pushNavigationItem(const NavigationItem& item, bool animated) override;
  void setLeftBarButtonItemOfTopItem(bool present) override;
  const std::vector<NavigationItem>& items() const override { return items_; }
  // Whether the bar shows a back button.
  bool hasBackButton() const;

 public slots:
  // The back button was tapped: the top item goes if the delegate lets it.
  void backTapped();

 private:
  void show();
  NavigationBarDelegate* delegate_ = nullptr;
  std::vector<NavigationItem> items_;
};

}  // namespace zellick::ui
