#pragma once

#include <QPointer>
#include <QQuickItem>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/log.h"
#include "platform/views.h"
#include "ui/table.h"
#include "ui/views.h"

namespace zellick::ui {

// The views of a screen's controls, each bound to the item named after it under the screen's
// root. Lookups of a missing view are null and logged. Main thread.
class BoundControls {
 public:
  // `fonts` must outlive the views.
  BoundControls(const FontAliases& fonts, Log& log) : fonts_(fonts), log_(log) {}

  // Binds `controls` in order: places each item named after a control, shows its first
  // pictures and makes its view. False, logged, when an item is missing.
  bool bind(QQuickItem* root, const std::vector<ControlSpec>& controls);
  // Lets go of every view (before the items go).
  void clear();

  QtButton* button(const std::string& name) const;
  QtImageView* imageView(const std::string& name) const;
  QtLabel* label(const std::string& name) const;
  QtTableView* tableView(const std::string& name) const;
  // The item of control `name`, whatever its kind (clips included); null when there is none.
  QQuickItem* item(const std::string& name) const;

  const std::map<std::string, std::unique_ptr<QtButton>>& buttons() const { return buttons_; }
  const std::map<std::string, std::unique_ptr<QtImageView>>& images() const { return images_; }
  const std::map<std::string, std::unique_ptr<QtLabel>>& labels() const { return labels_; }
  const std::map<std::string, std::unique_ptr<QtTableView>>& tables() const { return tables_; }
  std::vector<QQuickItem*> clipItems() const;

 private:
  const FontAliases& fonts_;
  Log& log_;
  std::map<std::string, std::unique_ptr<QtButton>> buttons_;
  std::map<std::string, std::unique_ptr<QtImageView>> images_;
  std::map<std::string, std::unique_ptr<QtLabel>> labels_;
  std::map<std::string, std::unique_ptr<QtTableView>> tables_;
  std::map<std::string, QPointer<QQuickItem>> clips_;
};

// The item named `name` in `from`'s visual tree, `from` included; null when there is none.
QQuickItem* findItem(QQuickItem* from, const QString& name);

}  // namespace zellick::ui
