#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace zellick {

// A view on screen. Frames are in the root view's coordinates.
class View {
 public:
  View() = default;
  View(const View&) = delete;
  View& operator=(const View&) = delete;
  virtual ~View() = default;

  virtual Rect frame() const = 0;
  // Immediate move; ends any animated move of this view.
  virtual void setFrame(const Rect& frame) = 0;
  void setCenter(Point c) {
    Rect f = frame();
    f.x = c.x - f.w / 2;
    f.y = c.y - f.h / 2;
    setFrame(f);
  }
  // Touches are routed by tag; 0 means untagged.
  virtual int tag() const = 0;
  virtual bool userInteractionEnabled() const = 0;
  virtual void setUserInteractionEnabled(bool enabled) = 0;
};

class ImageView : public View {
 public:
  virtual std::string image() const = 0;
  virtual void setImage(const std::string& name) = 0;
  // Moves the frame to `to` over `seconds` (default ease-in-out curve). frame() reports the
  // target at once; a new move, animated or not, retargets one that is still running.
  virtual void animateFrame(const Rect& to, double seconds) = 0;
};

class Button : public View {
 public:
  // The picture for the normal control state.
  virtual std::string image() const = 0;
  virtual void setImage(const std::string& name) = 0;
  // True while a finger is down on the button.
  virtual bool isHighlighted() const = 0;
};

class Label : public View {
 public:
  virtual std::string text() const = 0;
  virtual void setText(const std::string& text) = 0;
  virtual Color textColor() const = 0;
  virtual void setTextColor(Color color) = 0;
  virtual Font font() const = 0;
  virtual void setFont(const Font& font) = 0;
  virtual bool multipleTouchEnabled() const = 0;
  virtual void setMultipleTouchEnabled(bool enabled) = 0;
};

class NavigationBar;
class TableView;

// The controller's own view: its bounds, its colour and the views added to it.
class RootView {
 public:
  virtual ~RootView() = default;
  virtual Rect bounds() const = 0;
  virtual void setBackgroundColor(Color color) = 0;
  virtual void addColorView(const Rect& frame, Color color) = 0;
  // Adds a navigation bar over the rest, owned by the view; null where the screen has none.
  virtual NavigationBar* addNavigationBar(const Rect& frame) = 0;
};

// A modal question. The presenter shows it; the answer comes back with the button's index.
class AlertView {
 public:
  AlertView(std::string title, std::string message, std::vector<std::string> buttons)
      : title(std::move(title)), message(std::move(message)), buttons(std::move(buttons)) {}
  AlertView(const AlertView&) = delete;
  AlertView& operator=(const AlertView&) = delete;

  int tag() const { return tag_; }
  void setTag(int tag) { tag_ = tag; }

  const std::string title;
  const std::string message;
  const std::vector<std::string> buttons;  // index 0 is the cancel button

 private:
  int tag_ = 0;
};

using AlertAnswer = std::function<void(AlertView&, int buttonIndex)>;

// The button of `alert` that key `key` answers with: a letter the first button whose title
// begins with it, Return the first button, Escape the last; nothing for any other key.
std::optional<int> questionButtonForKey(const AlertView& alert, const std::string& key);

class AlertPresenter {
 public:
  virtual ~AlertPresenter() = default;
  // Shows `alert` modally. `answer` (may be empty: no delegate) is called once with the
  // index of the button pressed; the presenter keeps the alert alive while it is on screen.
  virtual void show(std::shared_ptr<AlertView> alert, AlertAnswer answer) = 0;
};

// Presents another screen modally over the current one, and takes it away. Main thread.
class ScreenPresenter {
 public:
  virtual ~ScreenPresenter() = default;
  // Builds the screen of interface file `nibName` with its controller and shows it over the
  // current one.
  virtual void presentModalViewController(const std::string& nibName) = 0;
  // Takes the screen presented last away; its controller goes once it is off screen (never
  // inside this call).
  virtual void dismissModalViewControllerAnimated(bool animated) = 0;
};

enum class InterfaceOrientation { Portrait, PortraitUpsideDown, LandscapeLeft, LandscapeRight };

// A screen's controller as its window drives it. Main thread.
class ViewController {
 public:
  virtual ~ViewController() = default;
  // Once, after the screen's views are built and before it is first shown.
  virtual void viewDidLoad() = 0;
  // Each time the screen is about to be shown.
  virtual void viewWillAppear(bool animated) = 0;
};

// The app's window. Main thread.
class Window {
 public:
  virtual ~Window() = default;
  // The controller whose screen the window shows; it must outlive the window's use of it.
  virtual void setRootViewController(ViewController* controller) = 0;
  // Loads the root controller's view if it is not yet loaded, and shows the window in front.
  virtual void makeKeyAndVisible() = 0;
};

// One control of a screen's interface file: the name it is found by (the controller's field),
// what kind of view it is, where it stands at first, its first pictures and its touch tag.
struct ControlSpec {
  enum class Kind {
    Button,
    Image,
    Label,
    Clip,   // a plain frame whose children show only inside it; no view of its own
    Table,  // a scrolling list of rows
  };
  std::string name;
  Kind kind = Kind::Image;
  Rect frame;
  std::string image;             // buttons and images: the picture for the normal state
  std::string highlightedImage;  // buttons: the picture while a finger is down, if any
  int tag = 0;                   // touches are routed by it; 0 is untagged
  // What a screen reader calls it; empty: it is not announced. Buttons are read as buttons,
  // labels and clips as text (a clip's text comes from Screen::setAccessibleText).
  std::string accessibleName;
};

// Key names a screen knows: these, the letters "A".."Z", and each of them with "Shift+" before
// it for the key with Shift held.
inline constexpr const char* kNamedKeys[] = {"Space", "Return",   "Escape",    "Backspace",
                                             "Up",    "Down",     "Plus",      "Minus",
                                             "F1",    "VolumeUp", "VolumeDown"};
bool isKeyName(const std::string& key);

struct KeyBinding {
  std::string key;
  std::string control;  // a button, pressed while the key is down; or a view, touched
  int tapCount = 0;     // for a view: the tap count of the touch its key-down makes
};

// A screen built from an interface file and a table of its controls. Views are owned by the
// screen and found by name; each lookup of a missing one is null. Main thread only.
class Screen {
 public:
  virtual ~Screen() = default;

  virtual RootView* rootView() = 0;
  virtual Button* button(const std::string& name) = 0;
  virtual ImageView* imageView(const std::string& name) = 0;
  virtual Label* label(const std::string& name) = 0;
  virtual TableView* tableView(const std::string& name) = 0;
  virtual AlertPresenter& alerts() = 0;

  // What a button's touches run. A button with a press action runs `release` for every press
  // that ends, inside or outside, since its press may have locked other controls; one without
  // runs `release` on a release inside only.
  virtual void bindButton(const std::string& name, std::function<void()> press,
                          std::function<void()> release) = 0;
  // Touches that begin on no button go here, with the view they lie on and their tap count.
  using TouchHandler = std::function<void(const View& view, int tapCount)>;
  virtual void setTouchHandlers(TouchHandler began, TouchHandler ended) = 0;

  // Keys that act as touches: a key-down presses its button as a finger would (and is refused
  // where a finger would be), its key-up releases it; a key held down is one press. A key on a
  // view makes one touch on key-down. While a question is shown, keys answer it instead
  // (questionButtonForKey).
  virtual void setKeyBindings(std::vector<KeyBinding> keys) = 0;
  // What a screen reader reads for control `name`, and whether it reads as selected.
  virtual void setAccessibleText(const std::string& name, const std::string& text) = 0;
  virtual void setAccessibleChecked(const std::string& name, bool checked) = 0;
};

// Where screens shown over the window's own screen come from, and how they come and go. Main
// thread.
class ModalScreenHost {
 public:
  virtual ~ModalScreenHost() = default;
  // Builds the screen of interface file `nibName` with `controls`, not yet shown; null, logged,
  // when it cannot be built.
  virtual std::unique_ptr<Screen> loadScreen(const std::string& nibName,
                                             const std::vector<ControlSpec>& controls) = 0;
  // The logical screen a loaded screen covers.
  virtual Rect screenBounds() const = 0;
  virtual void show(Screen& screen, bool animated) = 0;
  // Takes `screen` away; `gone` runs once it is off screen, later, on the main thread (never
  // inside this call). The screen must live until then.
  virtual void hide(Screen& screen, bool animated, std::function<void()> gone) = 0;
};

}  // namespace zellick
