#pragma once

#include <memory>
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

}  // namespace zellick
