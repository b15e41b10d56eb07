#include "platform/fake/views.h"

#include "platform/fake/numbers.h"

#include <algorithm>

namespace zellick::fake {

bool FakeTableView::exists(IndexPath p) const {
  auto& self = const_cast<FakeTableView&>(*this);
  return dataSource_ && p.section >= 0 && p.row >= 0 &&
         p.section < dataSource_->numberOfSectionsInTableView(self) &&
         p.row < dataSource_->tableViewNumberOfRowsInSection(self, p.section);
}

std::optional<TableViewCell> FakeTableView::cellForRowAtIndexPath(IndexPath p) const {
  if (!exists(p)) return std::nullopt;
  return dataSource_->tableViewCellForRowAtIndexPath(const_cast<FakeTableView&>(*this), p);
}

void FakeTableView::deselectRowAtIndexPath(IndexPath p, bool) {
  if (selected_ == p) selected_.reset();
}

std::vector<std::vector<TableViewCell>> FakeTableView::cells() const {
  std::vector<std::vector<TableViewCell>> out;
  if (!dataSource_) return out;
  auto& self = const_cast<FakeTableView&>(*this);
  const int sections = dataSource_->numberOfSectionsInTableView(self);
  for (int s = 0; s < sections; ++s) {
    out.emplace_back();
    const int rows = dataSource_->tableViewNumberOfRowsInSection(self, s);
    for (int r = 0; r < rows; ++r)
      out.back().push_back(dataSource_->tableViewCellForRowAtIndexPath(self, {s, r}));
  }
  return out;
}

bool FakeTableView::select(IndexPath p) {
  if (!exists(p)) return false;
  selected_ = p;
  if (delegate_) delegate_->tableViewDidSelectRowAtIndexPath(*this, p);
  return true;
}

std::optional<std::string> FakeNavigationBar::backTitle() const {
  if (items_.size() < 2 || items_.back().hasLeftBarButtonItem) return std::nullopt;
  return items_[items_.size() - 2].title;
}

bool FakeNavigationBar::tapBack() {
  if (!backTitle()) return false;
  if (!delegate_ || delegate_->navigationBarShouldPopItem(*this, items_.back())) items_.pop_back();
  return true;
}

void FakeImageView::setFrame(const Rect& frame) { move(frame, 0); }

void FakeImageView::animateFrame(const Rect& to, double seconds) { move(to, seconds); }

void FakeImageView::move(const Rect& to, double seconds) {
  NamedView::setFrame(to);
  events_.record("move " + name() + " y=" + formatNumber(to.y) +
                 " duration=" + formatNumber(seconds));
}

FakeScreen::FakeScreen(Rect bounds, const std::vector<ControlSpec>& controls, EventRecorder& events)
    : root_(bounds), alerts_(events) {
  for (const ControlSpec& c : controls) {
    switch (c.kind) {
      case ControlSpec::Kind::Button:
        buttons_[c.name] = std::make_unique<FakeButton>(c.name, c.frame, c.image);
        break;
      case ControlSpec::Kind::Image:
        images_[c.name] = std::make_unique<FakeImageView>(c.name, c.frame, c.image, events);
        break;
      case ControlSpec::Kind::Label:
        labels_[c.name] = std::make_unique<FakeLabel>(c.name, c.frame, c.tag);
        break;
      case ControlSpec::Kind::Table:
        tables_[c.name] = std::make_unique<FakeTableView>(c.name, c.frame);
        break;
      case ControlSpec::Kind::Clip: break;  // only clips what the real screen draws
    }
  }
}

template <class Map>
static auto* find(const Map& map, const std::string& name) {
  auto it = map.find(name);
  return it == map.end() ? nullptr : it->second.get();
}

FakeButton* FakeScreen::button(const std::string& name) { return find(buttons_, name); }
FakeImageView* FakeScreen::imageView(const std::string& name) { return find(images_, name); }
FakeLabel* FakeScreen::label(const std::string& name) { return find(labels_, name); }
FakeTableView* FakeScreen::tableView(const std::string& name) { return find(tables_, name); }

void FakeScreen::bindButton(const std::string& name, std::function<void()> press,
                            std::function<void()> release) {
  bindings_[name] = Binding{std::move(press), std::move(release)};
}

void FakeScreen::setTouchHandlers(TouchHandler began, TouchHandler ended) {
  began_ = std::move(began);
  ended_ = std::move(ended);
}

View* FakeScreen::view(const std::string& name) {
  if (name == root_.name()) return &root_;
  if (View* b = button(name)) return b;
  if (View* l = label(name)) return l;
  if (View* t = tableView(name)) return t;
  return imageView(name);
}

std::optional<std::string> FakeScreen::nameOf(const View* v) const {
  if (!v) return std::nullopt;
  if (v == static_cast<const View*>(&root_)) return root_.name();
  for (const auto& [name, b] : buttons_)
    if (b.get() == v) return name;
  for (const auto& [name, l] : labels_)
    if (l.get() == v) return name;
  for (const auto& [name, i] : images_)
    if (i.get() == v) return name;
  return std::nullopt;
}

InputResult FakeScreen::press(const std::string& name) {
  FakeButton* b = button(name);
  if (!b) return InputResult::Unknown;
  if (!b->userInteractionEnabled() || alerts_.onScreen()) return InputResult::Ignored;
  pressed_.insert(name);
  b->setHighlighted(true);
  auto it = bindings_.find(name);
  if (it != bindings_.end() && it->second.press) it->second.press();
  return InputResult::Done;
}

InputResult FakeScreen::release(const std::string& name) {
  FakeButton* b = button(name);
  if (!b) return InputResult::Unknown;
  if (pressed_.erase(name) == 0) return InputResult::Ignored;
  b->setHighlighted(false);
  auto it = bindings_.find(name);
  if (it != bindings_.end() && it->second.release) it->second.release();
  return InputResult::Done;
}

InputResult FakeScreen::tap(const std::string& name) {
  const InputResult down = press(name);
  if (down != InputResult::Done) return down;
  return release(name);
}

InputResult FakeScreen::touch(const std::string& name, int tapCount) {
  const View* v = view(name);
  if (!v) return InputResult::Unknown;
  if (alerts_.onScreen()) return InputResult::Ignored;
  if (began_) began_(*v, tapCount);
  if (ended_) ended_(*v, tapCount);
  return InputResult::Done;
}

InputResult FakeScreen::keyDown(const std::string& key) {
  if (!isKeyName(key)) return InputResult::Unknown;
  if (const AlertView* question = alerts_.onScreen()) {
    auto index = questionButtonForKey(*question, key);
    if (!index) return InputResult::Ignored;
    alerts_.answer(*index);
    return InputResult::Done;
  }
  if (held_.count(key)) return InputResult::Ignored;  // the key repeats while held
  if (!tables_.empty()) return tableKey(*tables_.begin()->second, key);
  for (const KeyBinding& k : keys_) {
    if (k.key != key) continue;
    if (k.tapCount > 0) return touch(k.control, k.tapCount);
    const InputResult r = press(k.control);
    if (r == InputResult::Done) held_[key] = k.control;
    return r;
  }
  return InputResult::Ignored;
}

InputResult FakeScreen::tableKey(FakeTableView& table, const std::string& key) {
  if (key == "Escape") {
    FakeNavigationBar* bar = root_.navigationBar();
    return bar && bar->tapBack() ? InputResult::Done : InputResult::Ignored;
  }
  if (key == "Return") {
    return current_ && table.select(*current_) ? InputResult::Done : InputResult::Ignored;
  }
  if (key != "Up" && key != "Down") return InputResult::Ignored;
  std::vector<IndexPath> rows;
  const auto cells = table.cells();
  for (std::size_t s = 0; s < cells.size(); ++s)
    for (std::size_t r = 0; r < cells[s].size(); ++r)
      rows.push_back({static_cast<int>(s), static_cast<int>(r)});
  if (rows.empty()) return InputResult::Ignored;
  auto at = current_ ? std::find(rows.begin(), rows.end(), *current_) : rows.end();
  if (at == rows.end()) {
    current_ = key == "Down" ? rows.front() : rows.back();
  } else if (key == "Down" && at + 1 != rows.end()) {
    current_ = *(at + 1);
  } else if (key == "Up" && at != rows.begin()) {
    current_ = *(at - 1);
  }
  return InputResult::Done;
}

InputResult FakeScreen::keyUp(const std::string& key) {
  if (!isKeyName(key)) return InputResult::Unknown;
  auto it = held_.find(key);
  if (it == held_.end()) return InputResult::Ignored;
  const std::string control = it->second;
  held_.erase(it);
  return release(control);
}

}  // namespace zellick::fake
