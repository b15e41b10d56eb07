#include "ui/controls.h"

namespace zellick::ui {

QQuickItem* findItem(QQuickItem* from, const QString& name) {
  if (!from) return nullptr;
  if (from->objectName() == name) return from;
  for (QQuickItem* child : from->childItems())
    if (QQuickItem* found = findItem(child, name)) return found;
  return nullptr;
}

bool BoundControls::bind(QQuickItem* root, const std::vector<ControlSpec>& controls) {
  if (!root) return false;
  bool complete = true;
  for (const ControlSpec& c : controls) {
    QQuickItem* item = findItem(root, QString::fromStdString(c.name));
    if (!item) {
      log_.line("the screen has no item " + c.name);
      complete = false;
      continue;
    }
    // Sized before any picture is asked for, so artwork is rendered once, at its size.
    placeInRoot(item, root, c.frame);
    if (!c.accessibleName.empty())
      item->setProperty("accessibleName", QString::fromStdString(c.accessibleName));
    switch (c.kind) {
      case ControlSpec::Kind::Button: {
        auto& b = buttons_[c.name] = std::make_unique<QtButton>(item, root, c.tag, log_);
        b->setName(c.name);
        b->setHighlightedImage(c.highlightedImage);
        b->setImage(c.image);
        break;
      }
      case ControlSpec::Kind::Image: {
        auto& i = images_[c.name] = std::make_unique<QtImageView>(item, root, c.tag, log_);
        i->setName(c.name);
        i->setImage(c.image);
        break;
      }
      case ControlSpec::Kind::Label: {
        auto& l = labels_[c.name] = std::make_unique<QtLabel>(item, root, c.tag, fonts_, log_);
        l->setName(c.name);
        break;
      }
      case ControlSpec::Kind::Table: {
        auto& t = tables_[c.name] = std::make_unique<QtTableView>(item, root, fonts_, log_);
        t->setName(c.name);
        break;
      }
      case ControlSpec::Kind::Clip: clips_[c.name] = item; break;
    }
  }
  return complete;
}

void BoundControls::clear() {
  clips_.clear();
  tables_.clear();
  labels_.clear();
  images_.clear();
  buttons_.clear();
}

template <class Map>
static auto* find(const Map& map, const std::string& name, Log& log, const char* what) {
  auto it = map.find(name);
  if (it != map.end()) return it->second.get();
  log.line(std::string("the screen has no ") + what + " " + name);
  return static_cast<decltype(it->second.get())>(nullptr);
}

QtButton* BoundControls::button(const std::string& name) const {
  return find(buttons_, name, log_, "button");
}
QtImageView* BoundControls::imageView(const std::string& name) const {
  return find(images_, name, log_, "image view");
}
QtLabel* BoundControls::label(const std::string& name) const {
  return find(labels_, name, log_, "label");
}
QtTableView* BoundControls::tableView(const std::string& name) const {
  return find(tables_, name, log_, "table");
}

std::vector<QQuickItem*> BoundControls::clipItems() const {
  std::vector<QQuickItem*> out;
  for (const auto& [name, item] : clips_)
    if (item) out.push_back(item);
  return out;
}

QQuickItem* BoundControls::item(const std::string& name) const {
  if (auto it = buttons_.find(name); it != buttons_.end()) return it->second->item();
  if (auto it = labels_.find(name); it != labels_.end()) return it->second->item();
  if (auto it = images_.find(name); it != images_.end()) return it->second->item();
  if (auto it = clips_.find(name); it != clips_.end()) return it->second;
  return nullptr;
}

}  // namespace zellick::ui
