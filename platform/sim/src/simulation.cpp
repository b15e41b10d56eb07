#include "platform/sim/simulation.h"

#include <algorithm>

namespace zellick::sim {

namespace {

Rect sizedFrame(const char* name) {
  for (const auto& size : kControlSizes)
    if (std::string(name) == size.name) return {0, 0, size.w, size.h};
  return {};
}

// The pictures the interface file gives the controls before the controller touches them.
struct Initial {
  const char* name;
  const char* image;
};
constexpr Initial kButtons[] = {
    {"ButtonReset", "reset-up.png"}, {"ButtonAdd", "add-up.png"}, {"ButtonA", "a-down.png"},
    {"ButtonB", "b-up.png"},      {"ButtonC", "c-up.png"},  {"ButtonInfo", "info-up.png"},
    {"ButtonMinus", "minus-up.png"},
};
constexpr const char* kWheels[] = {"ImageView1", "ImageView2", "ImageView3", "ImageView4"};
constexpr const char* kWheelImage = "wheel-strip.png";
constexpr const char* kBodyImage = "counter-body.png";

}  // namespace

World::World(SimOptions options)
    : options_(options), clock_(time_, options.epoch), events_(time_) {}

Process::Process(World& world)
    : world_(world),
      runLoop_(world.time()),
      sound_(world.events()),
      log_(world.events()),
      alerts_(world.events()),
      screens_(world.events()),
      tracker_(world.events()),
      root_({0, 0, kScreenWidth, std::max(world.options().screenHeight, kMinScreenHeight)}) {
  const double height = root_.bounds().h;
  for (const auto& b : kButtons) buttons_[b.name] = std::make_unique<SimButton>(b.name, sizedFrame(b.name), b.image);
  labels_["LabelTimer"] = std::make_unique<SimLabel>("LabelTimer", sizedFrame("LabelTimer"), kLabelTimerTag);
  labels_["LabelAvg"] = std::make_unique<SimLabel>("LabelAvg", sizedFrame("LabelAvg"), kLabelAvgTag);
  for (const char* w : kWheels)
    images_[w] = std::make_unique<SimImageView>(w, sizedFrame(w), kWheelImage, world.events());
  Rect body = sizedFrame("baseImageView");
  body.y = (height - body.h) / 2;
  images_["baseImageView"] = std::make_unique<SimImageView>("baseImageView", body, kBodyImage, world.events());

  CounterServices services{runLoop_, world.clock(), notifications_, world.defaults(), sound_,
                           bundle_,  log_,          alerts_,        screens_,         tracker_};
  CounterViews views;
  views.view = &root_;
  views.ButtonReset = button("ButtonReset");
  views.ButtonAdd = button("ButtonAdd");
  views.ButtonA = button("ButtonA");
  views.ButtonB = button("ButtonB");
  views.ButtonC = button("ButtonC");
  views.ButtonInfo = button("ButtonInfo");
  views.ButtonMinus = button("ButtonMinus");
  views.ImageView1 = imageView("ImageView1");
  views.ImageView2 = imageView("ImageView2");
  views.ImageView3 = imageView("ImageView3");
  views.ImageView4 = imageView("ImageView4");
  views.LabelTimer = label("LabelTimer");
  views.LabelAvg = label("LabelAvg");
  views.baseImageView = imageView("baseImageView");

  controller_ = std::make_unique<ZellickViewController>(services, views);
  actions_ = counterActions(*controller_);
  controller_->viewDidLoad();
  controller_->viewWillAppear(false);
  notifications_.post(kDidBecomeActive);
}

Process::~Process() {
  controller_.reset();
}

View* Process::view(const std::string& name) const {
  if (name == "view") return const_cast<SimRootView*>(&root_);
  if (auto* b = button(name)) return b;
  if (auto* l = label(name)) return l;
  return imageView(name);
}

SimButton* Process::button(const std::string& name) const {
  auto it = buttons_.find(name);
  return it == buttons_.end() ? nullptr : it->second.get();
}

SimLabel* Process::label(const std::string& name) const {
  auto it = labels_.find(name);
  return it == labels_.end() ? nullptr : it->second.get();
}

SimImageView* Process::imageView(const std::string& name) const {
  auto it = images_.find(name);
  return it == images_.end() ? nullptr : it->second.get();
}

std::optional<std::string> Process::nameOf(const View* v) const {
  if (!v) return std::nullopt;
  if (v == static_cast<const View*>(&root_)) return root_.name();
  for (const auto& name : viewNames())
    if (view(name) == v) return name;
  return std::nullopt;
}

const std::vector<std::string>& Process::viewNames() {
  static const std::vector<std::string> names = {
      "ButtonReset", "ButtonAdd",  "ButtonA",    "ButtonB",    "ButtonC",
      "ButtonInfo",  "ButtonMinus", "ImageView1", "ImageView2", "ImageView3",
      "ImageView4",  "LabelTimer", "LabelAvg",   "baseImageView"};
  return names;
}

InputResult Process::press(const std::string& name) {
  SimButton* b = button(name);
  if (!b) return InputResult::Unknown;
  // A question on screen is modal: nothing beneath it takes touches.
  if (!b->userInteractionEnabled() || alerts_.onScreen()) return InputResult::Ignored;
  pressed_.insert(name);
  b->setHighlighted(true);
  auto it = actions_.find(name);
  if (it != actions_.end() && it->second.press) it->second.press();
  return InputResult::Done;
}

InputResult Process::release(const std::string& name) {
  SimButton* b = button(name);
  if (!b) return InputResult::Unknown;
  if (pressed_.erase(name) == 0) return InputResult::Ignored;
  b->setHighlighted(false);
  auto it = actions_.find(name);
  if (it != actions_.end() && it->second.release) it->second.release();
  return InputResult::Done;
}

InputResult Process::tap(const std::string& name) {
  const InputResult down = press(name);
  if (down != InputResult::Done) return down;
  return release(name);
}

InputResult Process::touch(const std::string& name, int tapCount) {
  const View* v = view(name);
  if (!v) return InputResult::Unknown;
  if (alerts_.onScreen()) return InputResult::Ignored;
  const std::vector<Touch> touches{Touch{v, tapCount}};
  controller_->touchesBegan(touches);
  controller_->touchesEnded(touches);
  return InputResult::Done;
}

Process& Simulation::start() {
  if (!process_) process_ = std::make_unique<Process>(world_);
  return *process_;
}

Process& Simulation::restart() {
  process_.reset();
  return start();
}

}  // namespace zellick::sim
