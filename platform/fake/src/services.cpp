#include "platform/fake/services.h"

namespace zellick::fake {

namespace {

class RecordingPlayer final : public AudioPlayer {
 public:
  RecordingPlayer(std::string name, EventRecorder& events)
      : name_(std::move(name)), events_(events) {}
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
  const auto dot = base.find_last_of('.');
  if (dot != std::string::npos && dot > 0) base.resize(dot);
  return base;
}

}  // namespace

std::shared_ptr<AudioPlayer> RecordingSoundOutput::playerWithContentsOfFile(
    const std::string& path) {
  return std::make_shared<RecordingPlayer>(resourceName(path), events_);
}

std::optional<std::string> FakeBundle::pathForResource(const std::string& name,
                                                       const std::string& type) const {
  const std::string file = type.empty() ? name : name + "." + type;
  if (auto it = files_.find(file); it != files_.end()) return it->second;
  if (!resources_.count(file)) return std::nullopt;
  return "bundle/" + file;
}

void FakeAlerts::show(std::shared_ptr<AlertView> alert, AlertAnswer answer) {
  if (!alert) return;
  events_.record("alert " + alert->title);
  shown_.push_back({std::move(alert), std::move(answer)});
}

const AlertView* FakeAlerts::onScreen() const {
  return shown_.empty() ? nullptr : shown_.back().alert.get();
}

std::optional<std::string> FakeAlerts::answer(int index) {
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

}  // namespace zellick::fake
