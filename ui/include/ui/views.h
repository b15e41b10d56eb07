#pragma once

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QQuickItem>
#include <QUrl>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/log.h"
#include "platform/views.h"

class QVariantAnimation;

namespace zellick::ui {

class QtNavigationBar;

// The face bundled for labels and questions, and where it is.
inline constexpr const char* kBundledFamily = "Roboto Condensed";
inline constexpr const char* kBundledFontResource = ":/fonts/RobotoCondensed-Bold.ttf";

// Font names a screen asks for, mapped to the families that stand in for them.
using FontAliases = std::map<std::string, std::string>;

// The bundled artwork for an image name as the controller writes it ("a-up.png" is
// qrc:/images/a-up.svg, served as image://art/a-up); an empty URL when there is none.
QUrl artworkUrl(const std::string& name);

// `item`'s geometry in `root`'s coordinates, and the reverse: the frame is set in the root's
// coordinates whatever containers lie between the two (translation only).
Rect frameInRoot(const QQuickItem* item, const QQuickItem* root);
void placeInRoot(QQuickItem* item, const QQuickItem* root, const Rect& frame);

QColor toQColor(Color color);

// A controller view bound to a QML item. The frame is the model value: what was last set
// (animated moves report their target at once). Calls on an item that is gone do nothing.
template <class Base>
class QtItemView : public Base {
 public:
  QtItemView(QQuickItem* item, QQuickItem* root, int tag, bool interaction, Log& log)
      : item_(item), root_(root), log_(log), tag_(tag), interaction_(interaction) {
    if (item && root) frame_ = frameInRoot(item, root);
  }

  Rect frame() const override { return frame_; }
  void setFrame(const Rect& frame) override {
    frame_ = sanitized(frame);
    if (item_ && root_) placeInRoot(item_, root_, frame_);
  }
  int tag() const override { return tag_; }
  bool userInteractionEnabled() const override { return interaction_; }
  void setUserInteractionEnabled(bool enabled) override { interaction_ = enabled; }

  QQuickItem* item() const { return item_; }
  const std::string& name() const { return name_; }
  void setName(std::string name) { name_ = std::move(name); }

 protected:
  // A frame with NaN or infinite parts would poison the scene graph: keep the old value.
  Rect sanitized(const Rect& f) {
    auto ok = [](double v) { return v == v && v - v == 0; };
    if (ok(f.x) && ok(f.y) && ok(f.w) && ok(f.h) && f.w >= 0 && f.h >= 0) return f;
    log_.line("ignored an invalid frame for " + (name_.empty() ? std::string("a view") : name_));
    return frame_;
  }

  QPointer<QQuickItem> item_;
  QPointer<QQuickItem> root_;
  Log& log_;
  Rect frame_;
  std::string name_;
  int tag_ = 0;
  bool interaction_ = true;
};

class QtImageView : public QtItemView<ImageView> {
 public:
  QtImageView(QQuickItem* item, QQuickItem* root, int tag, Log& log);
  ~QtImageView() override;

  void setFrame(const Rect& frame) override;
  std::string image() const override { return image_; }
  void setImage(const std::string& name) override;
  void animateFrame(const Rect& to, double seconds) override;

  bool isAnimating() const;

 private:
  std::string image_;
  std::unique_ptr<QVariantAnimation> animation_;
};

class QtButton : public QtItemView<Button> {
 public:
  QtButton(QQuickItem* item, QQuickItem* root, int tag, Log& log);

  std::string image() const override { return image_; }
  void setImage(const std::string& name) override;
  bool isHighlighted() const override { return highlighted_; }
  // The picture while a finger is down; none dims the normal one instead.
  void setHighlightedImage(const std::string& name);
  // Set by the screen's touch routing while a finger is down on the button.
  void setHighlighted(bool highlighted);

 private:
  std::string image_;
  bool highlighted_ = false;
};

class QtLabel : public QtItemView<Label> {
 public:
  // `fonts` must outlive the label.
  QtLabel(QQuickItem* item, QQuickItem* root, int tag, const FontAliases& fonts, Log& log);

  std::string text() const override { return text_; }
  void setText(const std::string& text) override;
  Color textColor() const override { return color_; }
  void setTextColor(Color color) override;
  Font font() const override { return font_; }
  void setFont(const Font& font) override;
  bool multipleTouchEnabled() const override { return multipleTouch_; }
  void setMultipleTouchEnabled(bool enabled) override { multipleTouch_ = enabled; }

 private:
  const FontAliases& fonts_;
  std::string text_;
  Color color_ = Color::Gray;
  Font font_;
  bool multipleTouch_ = false;
};

// The logical screen. It is also a view (untagged) so touches on the background have one.
// Navigation bars come from the root item's addNavigationBar(x, y, w, h), where it has one.
class QtRootView : public RootView, public View {
 public:
  QtRootView(QQuickItem* root, Log& log);
  ~QtRootView() override;

  Rect bounds() const override;
  void setBackgroundColor(Color color) override;
  void addColorView(const Rect& frame, Color color) override;
  NavigationBar* addNavigationBar(const Rect& frame) override;
  // The bar added last, or null.
  QtNavigationBar* navigationBar() const { return bars_.empty() ? nullptr : bars_.back().get(); }

  Rect frame() const override { return bounds(); }
  void setFrame(const Rect&) override;
  int tag() const override { return 0; }
  bool userInteractionEnabled() const override { return true; }
  void setUserInteractionEnabled(bool) override {}

 private:
  QPointer<QQuickItem> root_;
  Log& log_;
  std::vector<std::unique_ptr<QtNavigationBar>> bars_;
};

// The font a label asks for: an alias's family, the application's own face in bold for the
// platform's bold face, a family the system has, or else the bundled face with a log line.
QFont labelFont(const Font& font, const FontAliases& aliases, Log& log);

}  // namespace zellick::ui
