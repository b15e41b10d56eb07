#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/views.h"

namespace zellick {

struct IndexPath {
  int section = 0;
  int row = 0;
  bool operator==(const IndexPath&) const = default;
};

// One row as the table draws it.
struct TableViewCell {
  std::string text;
  std::string image;      // a picture of the app's artwork by name, or empty
  std::string imageFile;  // a picture file (a downloaded icon), or empty; drawn when it decodes
  Color backgroundColor = Color::White;
  Color textColor = Color::Black;
};

// A label of a table's header view.
struct HeaderLabel {
  Rect frame;  // in the header's coordinates; it may lie outside the header and is drawn all
               // the same, over the rows
  std::string text;
  Font font;
  Color textColor = Color::Black;
  Color shadowColor = Color::Clear;
  Point shadowOffset;
  Color backgroundColor = Color::Clear;
};

struct TableHeaderView {
  Rect frame;
  std::vector<HeaderLabel> labels;
};

class TableView;

// Where a table's rows come from. Asked on the main thread whenever a row is drawn, which is
// when it comes into view; a table never holds more rows than it shows.
class TableViewDataSource {
 public:
  virtual ~TableViewDataSource() = default;
  virtual int numberOfSectionsInTableView(TableView& tableView) = 0;
  virtual int tableViewNumberOfRowsInSection(TableView& tableView, int section) = 0;
  virtual TableViewCell tableViewCellForRowAtIndexPath(TableView& tableView,
                                                       IndexPath indexPath) = 0;
};

class TableViewDelegate {
 public:
  virtual ~TableViewDelegate() = default;
  // A row was tapped; the table shows it selected until it is deselected.
  virtual void tableViewDidSelectRowAtIndexPath(TableView& tableView, IndexPath indexPath) = 0;
};

// A scrolling list of rows in sections. Main thread only.
class TableView : public View {
 public:
  // Neither is owned; both must outlive the table's use of them (null: none).
  virtual void setDataSource(TableViewDataSource* dataSource) = 0;
  virtual void setDelegate(TableViewDelegate* delegate) = 0;
  virtual void setTableHeaderView(const TableHeaderView& header) = 0;
  // Asks the data source again for the number of rows and for every row shown.
  virtual void reloadData() = 0;
  // The cell drawn at `indexPath`, when it is on screen; nothing otherwise.
  virtual std::optional<TableViewCell> cellForRowAtIndexPath(IndexPath indexPath) const = 0;
  virtual std::optional<IndexPath> indexPathForSelectedRow() const = 0;
  virtual void deselectRowAtIndexPath(IndexPath indexPath, bool animated) = 0;
};

struct NavigationItem {
  std::string title;
  bool hasLeftBarButtonItem = false;  // without one, an item below it gives the back button
};

class NavigationBar;

class NavigationBarDelegate {
 public:
  virtual ~NavigationBarDelegate() = default;
  // The back button was tapped: true lets the bar pop its top item.
  virtual bool navigationBarShouldPopItem(NavigationBar& bar, const NavigationItem& item) = 0;
};

enum class BarStyle { Default = 0, Black = 1, BlackTranslucent = 2 };

// A bar across the top of a screen: the top item's title in the middle and, when an item lies
// below it and the top one has no left button of its own, a back button titled after that
// item. Main thread only.
class NavigationBar : public View {
 public:
  virtual void setDelegate(NavigationBarDelegate* delegate) = 0;
  virtual void setTintColor(Color color) = 0;
  virtual void setBarStyle(BarStyle style) = 0;
  virtual void setTranslucent(bool translucent) = 0;
  virtual void pushNavigationItem(const NavigationItem& item, bool animated) = 0;
  virtual void setLeftBarButtonItemOfTopItem(bool present) = 0;
  virtual const std::vector<NavigationItem>& items() const = 0;
};

}  // namespace zellick
