#include "platform/sim/services.h"

#include <array>

namespace zellick::sim {

namespace {

class SimPlayer final : public AudioPlayer {
 public:
  SimPlayer(std::string name, EventRecorder& events) : name_(std::move(name)), events_(events) {}
  void play() override {
    if (!name_.empty()) events_.record("sound " + name_);
  }
  void stop() override {
    if (!name_.empty()) events_.record("stop " + name_);
  }

 private:
  std::string name_;
  EventRecorder& events_;
};

std::string resourceName(const std::string& path) {
  const auto slash = path.find_last_of('/');
  std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
  const std::string ext = ".caf";
  if (base.size() >= ext.size() && base.compare(base.size() - ext.size(), ext.size(), ext) == 0)
    base.resize(base.size() - ext.size());
  return base;
}

constexpr std::array<const char*, 5> kSounds = {
    "Counter Click2", "ButtonLetUp", "Counter Click3", "ResetButton", "Counter Clicking Fast"};

}  // namespace

std::shared_ptr<AudioPlayer> SimSoundOutput::playerWithContentsOfFile(const std::string& path) {
  return std::make_shared<SimPlayer>(resourceName(path), events_);
}

std::optional<std::string> SimBundle::pathForResource(const std::string& name,
                                                      const std::string& type) const {
  if (type != "caf") return std::nullopt;
  for (const char* sound : kSounds)
    if (name == sound) return "sounds/" + name + ".caf";
  return std::nullopt;
}

void SimAlerts::show(std::shared_ptr<AlertView> alert, AlertAnswer answer) {
  if (!alert) return;
  events_.record("alert " + alert->title);
  shown_.push_back({std::move(alert), std::move(answer)});
}

const AlertView* SimAlerts::onScreen() const {
  return shown_.empty() ? nullptr : shown_.back().alert.get();
}

std::optional<std::string> SimAlerts::answer(int index) {
  if (shown_.empty()) return "no question on screen";
  const auto buttons = shown_.back().alert->buttons.size();
  if (index < 0 || static_cast<std::size_t>(index) >= buttons)
    return "the question \"" + shown_.back().alert->title + "\" has no button " +
           std::to_string(index) + " (it has " + std::to_string(buttons) + ")";
  Shown front = std::move(shown_.back());
  shown_.pop_back();
  events_.record("answer " + std::to_string(index));
  if (front.answer) front.answer(*front.alert, index);
  return std::nullopt;
}

}  // namespace zellick::sim
