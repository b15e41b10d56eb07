#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/bundle.h"
#include "platform/fake/recorder.h"
#include "platform/log.h"
#include "platform/sound.h"
#include "platform/views.h"

namespace zellick::fake {

// Players record "sound NAME" and "stop NAME", NAME being the file's base name without its
// extension. A player on an empty path stays silent.
class RecordingSoundOutput final : public SoundOutput {
 public:
  explicit RecordingSoundOutput(EventRecorder& events) : events_(events) {}
  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override;

 private:
  EventRecorder& events_;
};

// A bundle holding exactly the resources it is given, each as "bundle/NAME.TYPE", and the
// real files it is given under their own paths.
class FakeBundle final : public Bundle {
 public:
  // Entries are "NAME.TYPE"; `files` maps such names to files on disk.
  explicit FakeBundle(std::set<std::string> resources,
                      std::map<std::string, std::string> files = {})
      : resources_(std::move(resources)), files_(std::move(files)) {}
  std::optional<std::string> pathForResource(const std::string& name,
                                             const std::string& type) const override;

 private:
  std::set<std::string> resources_;
  std::map<std::string, std::string> files_;
};

// Log lines as "log TEXT" events.
class EventLog final : public Log {
 public:
  explicit EventLog(EventRecorder& events) : events_(events) {}
  void line(const std::string& text) override { events_.record("log " + text); }

 private:
  EventRecorder& events_;
};

// Log lines kept in order, for reading back.
class RecordingLog final : public Log {
 public:
  void line(const std::string& text) override { lines.push_back(text); }
  std::vector<std::string> lines;
};

// Records "present NAME" for each screen presented and "dismiss" for each dismissal.
class RecordingScreenPresenter final : public ScreenPresenter {
 public:
  explicit RecordingScreenPresenter(EventRecorder& events) : events_(events) {}
  void presentModalViewController(const std::string& nibName) override {
    events_.record("present " + nibName);
  }
  void dismissModalViewControllerAnimated(bool) override { events_.record("dismiss"); }

 private:
  EventRecorder& events_;
};

// Keeps shown questions on screen until answered; the newest one is in front. Records
// "alert TITLE" and "answer INDEX".
class FakeAlerts final : public AlertPresenter {
 public:
  explicit FakeAlerts(EventRecorder& events) : events_(events) {}
  FakeAlerts(const FakeAlerts&) = delete;
  FakeAlerts& operator=(const FakeAlerts&) = delete;

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

}  // namespace zellick::fake
