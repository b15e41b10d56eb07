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
    return it == values.end() ? std::nullopt : std::optional<DefaultsValue>(it->second);
  }
  void setObject(const std::string& key, const DefaultsValue& value) override { values[key] = value; }
  void removeObjectForKey(const std::string& key) override { values.erase(key); }
  bool synchronize() override { return true; }
  std::map<std::string, DefaultsValue> values;
};

// Remembers which files were played, by path; every resource "exists" under /bundle/.
class RecordingSound : public SoundOutput, public Bundle {
 public:
  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override {
    struct Player : AudioPlayer {
      Player(std::vector<std::string>& p, std::string f) : played(p), file(std::move(f)) {}
      void play() override { played.push_back(file); }
      void stop() override {}
      std::vector<std::string>& played;
      std::string file;
    };
    return std::make_shared<Player>(played, path);
  }
  std::optional<std::string> pathForResource(const std::string& name, const std::string& type) const override {
    return "/bundle/" + name + "." + type;
  }
  std::vector<std::string> played;
};

struct RecordingLog : Log {
  void line(const std::string& text) override { lines.push_back(text); }
  std::vector<std::string> lines;
};

struct NullTracker : orvtracker {
  void Track(const std::string&) override {}
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
