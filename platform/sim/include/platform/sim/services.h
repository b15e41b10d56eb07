#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/log.h"
#include "platform/sim/recorder.h"
#include "platform/sound.h"
#include "platform/views.h"
#include "services/tracker.h"

namespace zellick::sim {

// Players record "sound NAME" and "stop NAME", NAME being the file's base name without
// ".caf". A player on an empty path stays silent.
class SimSoundOutput final : public SoundOutput {
 public:
  explicit SimSoundOutput(EventRecorder& events) : events_(events) {}
  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override;

 private:
  EventRecorder& events_;
};

// The five click sounds, as "sounds/NAME.caf".
class SimBundle final : public Bundle {
 public:
  std::optional<std::string> pathForResource(const std::string& name,
                                             const std::string& type) const override;
};

class SimLog final : public Log {
 public:
  explicit SimLog(EventRecorder& events) : events_(events) {}
  void line(const std::string& text) override { events_.record("log " + text); }

 private:
  EventRecorder& events_;
};

class SimTracker final : public orvtracker {
 public:
  explicit SimTracker(EventRecorder& events) : events_(events) {}
  void Track(const std::string& tag) override { events_.record("track " + tag); }

 private:
  EventRecorder& events_;
};

class SimScreens final : public ScreenPresenter {
 public:
  explicit SimScreens(EventRecorder& events) : events_(events) {}
  void presentModalViewController(const std::string& nibName) override {
    events_.record("present " + nibName);
  }

 private:
  EventRecorder& events_;
};

// Keeps shown questions on screen until answered; the newest one is in front.
class SimAlerts final : public AlertPresenter {
 public:
  explicit SimAlerts(EventRecorder& events) : events_(events) {}
  SimAlerts(const SimAlerts&) = delete;
  SimAlerts& operator=(const SimAlerts&) = delete;

  void show(std::shared_ptr<AlertView> alert, AlertAnswer answer) override;
  // The question in front, or null.
  const AlertView* onScreen() const;
  std::size_t count() const { return shown_.size(); }
  // Presses button `index` of the question in front: records "answer INDEX", takes the
  // question off the screen, then calls its answer. Returns an error text (and does
  // nothing) when no question is shown or it has no such button.
  std::optional<std::string> answer(int index);

 private:
  struct Shown {
    std::shared_ptr<AlertView> alert;
    AlertAnswer answer;
  };
  EventRecorder& events_;
  std::vector<Shown> shown_;
};

}  // namespace zellick::sim
