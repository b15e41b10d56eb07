#pragma once

#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/sim/recorder.h"
#include "platform/views.h"

namespace zellick::sim {

// What every simulated view keeps: its name, frame, tag and interaction flag.
template <class Base>
class NamedView : public Base {
 public:
  NamedView(std::string name, Rect frame, int tag) : name_(std::move(name)), frame_(frame), tag_(tag) {}
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
class SimImageView final : public NamedView<ImageView> {
 public:
  SimImageView(std::string name, Rect frame, std::string image, EventRecorder& events)
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

class SimButton final : public NamedView<Button> {
 public:
  SimButton(std::string name, Rect frame, std::string image)
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

class SimLabel final : public NamedView<Label> {
 public:
  SimLabel(std::string name, Rect frame, int tag) : NamedView(std::move(name), frame, tag) {}

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

// The controller's own view ("view"). Also a View, so that a touch can land on it.
class SimRootView final : public RootView, public NamedView<View> {
 public:
  struct Band {
    Rect frame;
    Color color;
  };
  explicit SimRootView(Rect bounds) : NamedView("view", bounds, 0) {}

  Rect bounds() const override { return frame(); }
  void addColorView(const Rect& frame, Color color) override { bands_.push_back({frame, color}); }
  const std::vector<Band>& bands() const { return bands_; }

 private:
  std::vector<Band> bands_;
};

}  // namespace zellick::sim
