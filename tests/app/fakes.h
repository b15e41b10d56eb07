#pragma once

// Test doubles for the screen tests: nothing here touches audio, disk or the network.

#include <QAnimationDriver>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/defaults.h"
#include "platform/log.h"
#include "platform/sound.h"
#include "services/tracker.h"

namespace zellick::test {

class MemoryDefaults : public UserDefaults {
 public:
  std::optional<DefaultsValue> objectForKey(const std::string& key) const override {
    auto it = values.find(key);
    if (it == values.end()) return std::nullopt;
    return it->second;
  }
  void setObject(const std::string& key, const DefaultsValue& value) override { values[key] = value; }
  void removeObjectForKey(const std::string& key) override { values.erase(key); }
  bool synchronize() override { return true; }

  std::map<std::string, DefaultsValue> values;
};

// Remembers which files were played; never opens an audio device.
class RecordingSound : public SoundOutput {
 public:
  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override {
    struct Player : AudioPlayer {
      Player(RecordingSound& s, std::string p) : sound(s), path(std::move(p)) {}
      void play() override { sound.played.push_back(path); }
      void stop() override {}
      RecordingSound& sound;
      std::string path;
    };
    return std::make_shared<Player>(*this, path);
  }
  std::vector<std::string> played;
};

// Every resource "exists" at a made-up path, so sounds are recorded by name.
class NamedBundle : public Bundle {
 public:
  std::optional<std::string> pathForResource(const std::string& name,
                                             const std::string& type) const override {
    return "/bundle/" + name + "." + type;
  }
};

class RecordingLog : public Log {
 public:
  void line(const std::string& text) override { lines.push_back(text); }
  bool has(const std::string& text) const {
    for (const auto& l : lines)
      if (l.find(text) != std::string::npos) return true;
    return false;
  }
  std::vector<std::string> lines;
};

class RecordingTracker : public orvtracker {
 public:
  void Track(const std::string& tag) override { tags.push_back(tag); }
  std::vector<std::string> tags;
};

// Qt's animations on test time: they move only when advanced.
class SteppedAnimationDriver : public QAnimationDriver {
 public:
  void step(qint64 ms) {
    elapsed_ += ms;
    advance();
  }
  qint64 elapsed() const override { return elapsed_; }

 private:
  qint64 elapsed_ = 0;
};

}  // namespace zellick::test
