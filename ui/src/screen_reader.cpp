#include "ui/screen_reader.h"

#include <QQmlComponent>
#include <QQmlEngine>

#include <algorithm>

namespace zellick::ui {

namespace {

// One control's node: it covers the control and reads what the control says of itself.
constexpr char kNode[] = R"(import QtQuick
Item {
    required property Item control
    readonly property bool pressable: control.accessiblePressed !== undefined
    width: control.width
    height: control.height
    focus: control.accessibleFocus === true
    Accessible.role: pressable ? (control.accessibleCheckable === true ? Accessible.RadioButton
                                                                       : Accessible.Button)
                               : Accessible.StaticText
    Accessible.name: pressable ? control.accessibleName
                               : control.accessibleName + " "
                                 + (control.text !== undefined ? control.text : control.accessibleText)
    Accessible.checkable: pressable && control.accessibleCheckable === true
    Accessible.checked: control.accessibleChecked === true
    Accessible.focusable: focus
    Accessible.onPressAction: if (pressable) control.accessiblePressed()
}
)";

}  // namespace

ScreenReaderNodes::ScreenReaderNodes(QQmlEngine& engine,
                                     std::function<std::vector<QQuickItem*>()> controls)
    : QObject(&engine), engine_(engine), controls_(std::move(controls)) {
  QAccessible::installActivationObserver(this);
}

ScreenReaderNodes::~ScreenReaderNodes() { QAccessible::removeActivationObserver(this); }

void ScreenReaderNodes::accessibilityActiveChanged(bool active) {
  if (active) refresh();
}

void ScreenReaderNodes::refresh() {
  if (!QAccessible::isActive()) return;
  if (!node_) {
    node_ = std::make_unique<QQmlComponent>(&engine_);
    node_->setData(kNode, QUrl(QStringLiteral("qrc:/ui/AccessibleNode.qml")));
  }
  for (QQuickItem* control : controls_()) {
    if (!control || control->property("accessibleName").toString().isEmpty()) continue;
    if (std::find(owners_.begin(), owners_.end(), control) != owners_.end()) continue;
    auto* node = qobject_cast<QQuickItem*>(node_->createWithInitialProperties(
        {{QStringLiteral("control"), QVariant::fromValue(control)}}));
    if (!node) continue;
    node->setParent(control);
    node->setParentItem(control);
    if (node->hasFocus()) node->forceActiveFocus();
    owners_.push_back(control);
    made_.push_back(node);
  }
}

}  // namespace zellick::ui
