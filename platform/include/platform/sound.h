#pragma once

#include <memory>
#include <optional>
#include <string>

namespace zellick {

// One playback of one sound file. Plays on to its end unless stopped, whoever holds it.
class AudioPlayer {
 public:
  virtual ~AudioPlayer() = default;
  virtual void play() = 0;
  virtual void stop() = 0;
};

class SoundOutput {
 public:
  virtual ~SoundOutput() = default;
  // A new player for the file at `path`; never null. An unreadable file or a machine
  // without audio gives a player that stays silent.
  virtual std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) = 0;
};

// Read-only resources shipped with the app.
class Bundle {
 public:
  virtual ~Bundle() = default;
  // The path of resource `name`.`type`, or nothing when the bundle has no such resource.
  virtual std::optional<std::string> pathForResource(const std::string& name,
                                                     const std::string& type) const = 0;
};

}  // namespace zellick
