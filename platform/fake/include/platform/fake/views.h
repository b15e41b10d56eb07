#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/fake/recorder.h"
#include "platform/fake/services.h"
#include "platform/geometry.h"
#include "platform/table.h"
#include "platform/views.h"

namespace zellick::fake {

// What every simulated view keeps: its name, frame, tag and interaction flag.
template <class Base>
class NamedView : public Base {
 public:
  NamedView(std::string name, Rect frame, int tag)
      : name_(std::move(name)), frame_(frame), tag_(tag) {}
  const std::string& name() const { return name_; }

  Rect frame() const override { return frame_; }
  void setFrame(const Rect& frame) override { frame_ = frame; }
  int tag() const override { return tag_; }
  bool userInteractionEnabled() const override { return interaction_; }
  void setUserInteractionEnabled(bool enabled) override { interaction_ = enabled; }

 private:
  std::string name_;
  Rect frame_;
  int tag_;
  bool interaction_ = true;
};

// Moves jump to their target at once and are recorded as "move NAME y=Y duration=D".
class FakeImageView final : public NamedView<ImageView> {
 public:
  FakeImageView(std::string name, Rect frame, std::string image, EventRecorder& events)
      : NamedView(std::move(name), frame, 0), image_(std::move(image)), events_(events) {}

  void setFrame(const Rect& frame) override;
  std::string image() const override { return image_; }
  void setImage(const std::string& name) override { image_ = name; }
  void animateFrame(const Rect& to, double seconds) override;

 private:
  void move(const Rect& to, double seconds);
  std::string image_;
  EventRecorder& events_;
};

class FakeButton final : public NamedView<Button> {
 public:
  FakeButton(std::string name, Rect frame, std::string image)
      : NamedView(std::move(name), frame, 0), image_(std::move(image)) {}

  std::string image() const override { return image_; }
  void setImage(const std::string& name) override { image_ = name; }
  bool isHighlighted() const override { return highlighted_; }
  // Set by the input helpers between a press and its release.
  void setHighlighted(bool on) { highlighted_ = on; }

 private:
  std::string image_;
  bool highlighted_ = false;
};

class FakeLabel final : public NamedView<Label> {
 public:
  FakeLabel(std::string name, Rect frame, int tag) : NamedView(std::move(name), frame, tag) {}

  std::string text() const override { return text_; }
  void setText(const std::string& text) override { text_ = text; }
  Color textColor() const override { return color_; }
  void setTextColor(Color color) override { color_ = color; }
  Font font() const override { return font_; }
  void setFont(const Font& font) override { font_ = font; }
  bool multipleTouchEnabled() const override { return multipleTouch_; }
  void setMultipleTouchEnabled(bool enabled) override { multipleTouch_ = enabled; }

 private:
  std::string text_;
  Color color_ = Color::Black;
  Font font_;
  bool multipleTouch_ = false;
};

// Every row is on screen: a cell is asked of the data source each time one is wanted.
class FakeTableView final : public NamedView<TableView> {
 public:
  FakeTableView(std::string name, Rect frame) : NamedView(std::move(name), frame, 0) {}

  void setDataSource(TableViewDataSource* dataSource) override { dataSource_ = dataSource; }
  void setDelegate(TableViewDelegate* delegate) override { delegate_ = delegate; }
  void setTableHeaderView(const TableHeaderView& header) override { header_ = header; }
  void reloadData() override {}
  std::optional<TableViewCell> cellForRowAtIndexPath(IndexPath indexPath) const override;
  std::optional<IndexPath> indexPathForSelectedRow() const override { return selected_; }
  void deselectRowAtIndexPath(IndexPath indexPath, bool animated) override;

  const TableHeaderView& header() const { return header_; }
  // Every section's cells, as drawn now; empty without a data source.
  std::vector<std::vector<TableViewCell>> cells() const;
  // A tap on a row: false when there is no such row; otherwise it is selected and the delegate
  // told.
  bool select(IndexPath indexPath);

 private:
  bool exists(IndexPath indexPath) const;
  TableViewDataSource* dataSource_ = nullptr;
  TableViewDelegate* delegate_ = nullptr;
  TableHeaderView header_;
  std::optional<IndexPath> selected_;
};

class FakeNavigationBar final : public NamedView<NavigationBar> {
 public:
  explicit FakeNavigationBar(Rect frame) : NamedView("navigationBar", frame, 0) {}

  void setDelegate(NavigationBarDelegate* delegate) override { delegate_ = delegate; }
  void setTintColor(Color color) override { tint_ = color; }
  void setBarStyle(BarStyle style) override { style_ = style; }
  void setTranslucent(bool translucent) override { translucent_ = translucent; }
  void pushNavigationItem(const NavigationItem& item, bool) override { items_.push_back(item); }
  void setLeftBarButtonItemOfTopItem(bool present) override {
    if (!items_.empty()) items_.back().hasLeftBarButtonItem = present;
  }
  const std::vector<NavigationItem>& items() const override { return items_; }

  // The back button's title, when the bar shows one.
  std::optional<std::string> backTitle() const;
  // A tap on the back button: false when there is none; the top item is popped only if the
  // delegate lets it.
  bool tapBack();

 private:
  NavigationBarDelegate* delegate_ = nullptr;
  Color tint_ = Color::Clear;
  BarStyle style_ = BarStyle::Default;
  bool translucent_ = false;
  std::vector<NavigationItem> items_;
};

// The controller's own view ("view"). Also a View, so that a touch can land on it.
class FakeRootView final : public RootView, public NamedView<View> {
 public:
  struct Band {
    Rect frame;
    Color color;
  };
  explicit FakeRootView(Rect bounds) : NamedView("view", bounds, 0) {}

  Rect bounds() const override { return frame(); }
  void setBackgroundColor(Color color) override { background_ = color; }
  void addColorView(const Rect& frame, Color color) override { bands_.push_back({frame, color}); }
  FakeNavigationBar* addNavigationBar(const Rect& frame) override {
    bars_.push_back(std::make_unique<FakeNavigationBar>(frame));
    return bars_.back().get();
  }
  const std::vector<Band>& bands() const { return bands_; }
  // The bar added last, or null.
  FakeNavigationBar* navigationBar() const { return bars_.empty() ? nullptr : bars_.back().get(); }

 private:
  Color background_ = Color::Clear;
  std::vector<Band> bands_;
  std::vector<std::unique_ptr<FakeNavigationBar>> bars_;
};

enum class InputResult {
  Done,     // the input reached the screen
  Ignored,  // the control refused it (interaction off, a question in front, or a release
            // without a press)
  Unknown,  // no view of that name
};

// A screen built from a table of controls, with input that goes where a finger would send it.
// Image moves are recorded; questions are kept by its FakeAlerts.
class FakeScreen final : public Screen {
 public:
  FakeScreen(Rect bounds, const std::vector<ControlSpec>& controls, EventRecorder& events);
  FakeScreen(const FakeScreen&) = delete;
  FakeScreen& operator=(const FakeScreen&) = delete;

  FakeRootView* rootView() override { return &root_; }
  FakeButton* button(const std::string& name) override;
  FakeImageView* imageView(const std::string& name) override;
  FakeLabel* label(const std::string& name) override;
  FakeTableView* tableView(const std::string& name) override;
  FakeAlerts& alerts() override { return alerts_; }
  void bindButton(const std::string& name, std::function<void()> press,
                  std::function<void()> release) override;
  void setTouchHandlers(TouchHandler began, TouchHandler ended) override;
  void setKeyBindings(std::vector<KeyBinding> keys) override { keys_ = std::move(keys); }
  void setAccessibleText(const std::string& name, const std::string& text) override {
    accessibleText_[name] = text;
  }
  void setAccessibleChecked(const std::string& name, bool checked) override {
    accessibleChecked_[name] = checked;
  }
  const std::map<std::string, std::string>& accessibleText() const { return accessibleText_; }
  const std::map<std::string, bool>& accessibleChecked() const { return accessibleChecked_; }
  // The table row the keys are on, if any.
  const std::optional<IndexPath>& currentRow() const { return current_; }

  // Any view by name ("view" for the root); null when there is none.
  View* view(const std::string& name);
  // The name of a view of this screen, or nothing.
  std::optional<std::string> nameOf(const View* view) const;

  // A finger down on a button: refused while its interaction is off or a question is in
  // front (questions are modal); otherwise the button is highlighted and its press runs.
  InputResult press(const std::string& name);
  // The finger lifted: only after an accepted press of that button.
  InputResult release(const std::string& name);
  InputResult tap(const std::string& name);
  // A touch that begins and ends on any view, with the platform's tap count; refused while a
  // question is in front.
  InputResult touch(const std::string& name, int tapCount);
  // A key goes down or comes up, as Screen::setKeyBindings() describes; Unknown for a name that
  // is no key, Ignored for a key that does nothing now (no binding, a repeat of a key held
  // down, refused input). On a screen with a table, Up and Down move the current row through
  // every row, Return taps it, and Escape taps the navigation bar's back button.
  InputResult keyDown(const std::string& key);
  InputResult keyUp(const std::string& key);

 private:
  struct Binding {
    std::function<void()> press;
    std::function<void()> release;
  };
  InputResult tableKey(FakeTableView& table, const std::string& key);
  FakeRootView root_;
  FakeAlerts alerts_;
  std::map<std::string, std::unique_ptr<FakeButton>> buttons_;
  std::map<std::string, std::unique_ptr<FakeLabel>> labels_;
  std::map<std::string, std::unique_ptr<FakeImageView>> images_;
  std::map<std::string, std::unique_ptr<FakeTableView>> tables_;
  std::map<std::string, Binding> bindings_;
  std::set<std::string> pressed_;
  TouchHandler began_;
  TouchHandler ended_;
  std::vector<KeyBinding> keys_;
  std::map<std::string, std::string> held_;  // key down -> the button it pressed
  std::optional<IndexPath> current_;         // the table's row the keys are on
  std::map<std::string, std::string> accessibleText_;
  std::map<std::string, bool> accessibleChecked_;
};

}  // namespace zellick::fake
