// Synthesises the counter's click sounds so no recorded audio has to be
// committed. Every sound is built from the same parts a metal tally counter
// makes: a short noise transient (the pawl hitting), a few inharmonic damped
// partials (the case ringing) and a low thump (the plunger bottoming out).
// Output is deterministic: fixed seeds, no clock, no platform RNG distributions.

#include <sndfile.h>

#include "counter/sounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <numbers>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kRate = 44100;
constexpr double kPeak = 0.89;  // about -1 dBFS, leaves room for resampling

// Small, portable PRNG: std::normal_distribution differs between standard
// libraries, and the sounds must come out bit-identical everywhere.
class Rng {
 public:
  explicit Rng(std::uint64_t seed) : state_(seed ? seed : 0x9E3779B97F4A7C15ull) {}
  std::uint64_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_;
  }
  // Uniform in [-1, 1).
  double bipolar() { return static_cast<double>(next() >> 11) * (2.0 / 9007199254740992.0) - 1.0; }
  // Uniform in [lo, hi).
  double range(double lo, double hi) { return lo + (hi - lo) * (bipolar() * 0.5 + 0.5); }

 private:
  std::uint64_t state_;
};

// RBJ band-pass biquad (constant peak gain).
class BandPass {
 public:
  BandPass(double centreHz, double q) {
    const double w = 2.0 * std::numbers::pi * centreHz / kRate;
    const double alpha = std::sin(w) / (2.0 * q);
    const double a0 = 1.0 + alpha;
    b0_ = alpha / a0;
    b2_ = -alpha / a0;
    a1_ = -2.0 * std::cos(w) / a0;
    a2_ = (1.0 - alpha) / a0;
  }
  double operator()(double x) {
    const double y = b0_ * x + b2_ * x2_ - a1_ * y1_ - a2_ * y2_;
    x2_ = x1_;
    x1_ = x;
    y2_ = y1_;
    y1_ = y;
    return y;
  }

 private:
  double b0_, b2_, a1_, a2_;
  double x1_ = 0, x2_ = 0, y1_ = 0, y2_ = 0;
};

struct Partial {
  double hz;
  double gain;
  double decayMs;
};

// One mechanical impact.
struct Click {
  double gain = 1.0;
  double noiseGain = 1.0;  // transient
  double noiseDecayMs = 1.5;
  double noiseHz = 4500;  // band-pass centre of the transient
  double noiseQ = 1.2;
  double ringGain = 0.6;    // metallic partials
  double brightness = 1.0;  // scales the partial frequencies
  double thumpGain = 0.3;
  double thumpHz = 220;
  double thumpDecayMs = 6;
};

// The case's ringing modes: inharmonic, like a small stamped steel shell.
constexpr std::array<Partial, 5> kCaseModes{{
    {2130.0, 1.00, 9.0},
    {3470.0, 0.70, 7.0},
    {5290.0, 0.45, 5.0},
    {7930.0, 0.30, 3.5},
    {11200.0, 0.15, 2.0},
}};

void addClick(std::vector<double>& buf, double atMs, const Click& c, Rng& rng) {
  const auto start = static_cast<std::size_t>(atMs * kRate / 1000.0);
  if (start >= buf.size()) return;
  BandPass bp(c.noiseHz, c.noiseQ);
  // Random phases so repeated clicks in a ratchet do not sound identical.
  std::array<double, kCaseModes.size()> phase{};
  for (auto& p : phase) p = rng.range(0.0, 2.0 * std::numbers::pi);
  const double thumpPhase = rng.range(0.0, 0.5);

  for (std::size_t i = start; i < buf.size(); ++i) {
    const double tMs = static_cast<double>(i - start) * 1000.0 / kRate;
    if (tMs > 80.0) break;  // every component is far below audibility by then
    const double t = tMs / 1000.0;
    double s = c.noiseGain * bp(rng.bipolar()) * std::exp(-tMs / c.noiseDecayMs) * 3.0;
    for (std::size_t k = 0; k < kCaseModes.size(); ++k) {
      const Partial& m = kCaseModes[k];
      s += c.ringGain * m.gain * std::exp(-tMs / m.decayMs) *
           std::sin(2.0 * std::numbers::pi * m.hz * c.brightness * t + phase[k]);
    }
    s += c.thumpGain * std::exp(-tMs / c.thumpDecayMs) *
         std::sin(2.0 * std::numbers::pi * (c.thumpHz * t + thumpPhase));
    buf[i] += c.gain * s;
  }
}

// DC blocker, short fades at both ends (so the file starts and stops at
// zero rather than on a step), then peak normalisation.
void finish(std::vector<double>& buf) {
  double x1 = 0, y1 = 0;
  for (double& v : buf) {
    const double y = v - x1 + 0.995 * y1;
    x1 = v;
    y1 = y;
    v = y;
  }
  const std::size_t fadeIn = kRate / 10000;  // 0.1 ms
  const std::size_t fadeOut = std::min<std::size_t>(buf.size() / 4, kRate * 4 / 1000);
  for (std::size_t i = 0; i < fadeIn && i < buf.size(); ++i)
    buf[i] *= static_cast<double>(i) / fadeIn;
  for (std::size_t i = 0; i < fadeOut; ++i)
    buf[buf.size() - 1 - i] *= static_cast<double>(i) / fadeOut;

  double peak = 0;
  for (double v : buf) peak = std::max(peak, std::abs(v));
  if (peak > 0)
    for (double& v : buf) v *= kPeak / peak;
}

std::vector<double> makeBuffer(double ms) {
  return std::vector<double>(static_cast<std::size_t>(ms * kRate / 1000.0), 0.0);
}

// Add: the plunger hits, then the units wheel snaps one step on.
std::vector<double> counterClick2() {
  Rng rng(0xC11C2);
  auto buf = makeBuffer(52);
  Click press;
  press.thumpGain = 0.5;
  addClick(buf, 0.0, press, rng);
  Click advance;
  advance.gain = 0.75;
  advance.noiseHz = 6000;
  advance.noiseDecayMs = 0.8;
  advance.brightness = 1.12;
  advance.thumpGain = 0.1;
  addClick(buf, 13.0, advance, rng);
  finish(buf);
  return buf;
}

// Release: the spring returns the plunger; duller and quieter than the press.
std::vector<double> buttonLetUp() {
  Rng rng(0xB0771);
  auto buf = makeBuffer(42);
  Click up;
  up.noiseHz = 2600;
  up.noiseDecayMs = 2.5;
  up.noiseGain = 0.7;
  up.ringGain = 0.3;
  up.brightness = 0.8;
  up.thumpGain = 0.45;
  up.thumpHz = 160;
  up.thumpDecayMs = 9;
  addClick(buf, 0.0, up, rng);
  finish(buf);
  // Softer: released clicks sit well below the press.
  for (double& v : buf) v *= 0.55;
  return buf;
}

// Memory keys: small, light and high.
std::vector<double> counterClick3() {
  Rng rng(0xC11C3);
  auto buf = makeBuffer(32);
  Click key;
  key.noiseHz = 7000;
  key.noiseDecayMs = 0.7;
  key.ringGain = 0.35;
  key.brightness = 1.4;
  key.thumpGain = 0.08;
  addClick(buf, 0.0, key, rng);
  finish(buf);
  for (double& v : buf) v *= 0.7;
  return buf;
}

// Reset knob: a couple of detent ticks as it turns, then the wheels drop home.
std::vector<double> resetButton() {
  Rng rng(0x5E7);
  auto buf = makeBuffer(95);
  Click tick;
  tick.gain = 0.45;
  tick.noiseHz = 5200;
  tick.noiseDecayMs = 0.6;
  tick.ringGain = 0.25;
  tick.brightness = 1.25;
  tick.thumpGain = 0.05;
  addClick(buf, 0.0, tick, rng);
  addClick(buf, 11.0, tick, rng);
  Click snap;
  snap.noiseHz = 3800;
  snap.noiseDecayMs = 2.0;
  snap.ringGain = 0.8;
  snap.brightness = 0.93;
  snap.thumpGain = 0.6;
  snap.thumpHz = 190;
  snap.thumpDecayMs = 10;
  addClick(buf, 27.0, snap, rng);
  finish(buf);
  return buf;
}

// Held Add: a ratchet running at ~27 clicks/s with human-ish wobble in
// timing and strength.
std::vector<double> counterClickingFast() {
  Rng rng(0xFA57);
  auto buf = makeBuffer(1400);
  const double meanGapMs = 1000.0 / 27.0;
  double at = 0.0;
  while (at < 1400.0 - 60.0) {
    Click c;
    c.gain = rng.range(0.7, 1.0);
    c.noiseHz = rng.range(4200, 6200);
    c.noiseDecayMs = rng.range(0.6, 1.2);
    c.ringGain = rng.range(0.35, 0.55);
    c.brightness = rng.range(0.96, 1.06);
    c.thumpGain = rng.range(0.1, 0.25);
    addClick(buf, at, c, rng);
    at += meanGapMs * rng.range(0.9, 1.1);
  }
  finish(buf);
  return buf;
}

bool write(const std::filesystem::path& path, std::span<const double> samples, int format) {
  SF_INFO info{};
  info.samplerate = kRate;
  info.channels = 1;
  info.format = format;
  SNDFILE* f = sf_open(path.string().c_str(), SFM_WRITE, &info);
  if (!f) {
    std::fprintf(stderr, "zellick-gen-sounds: %s: %s\n", path.string().c_str(),
                 sf_strerror(nullptr));
    return false;
  }
  // Doubles in [-1, 1] map to full scale (libsndfile's default, made explicit).
  sf_command(f, SFC_SET_NORM_DOUBLE, nullptr, SF_TRUE);
  const auto n = static_cast<sf_count_t>(samples.size());
  const bool ok = sf_write_double(f, samples.data(), n) == n;
  sf_close(f);
  return ok;
}

struct Sound {
  std::string_view name;
  std::vector<double> (*make)();
};

constexpr std::array<Sound, std::size(zellick::kCounterSounds)> kSounds{{
    {zellick::kClickSound, counterClick2},
    {zellick::kLetUpSound, buttonLetUp},
    {zellick::kMemorySound, counterClick3},
    {zellick::kResetSound, resetButton},
    {zellick::kFastClickingSound, counterClickingFast},
}};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3 || (argc == 3 && std::string_view(argv[2]) != "--wav")) {
    std::fprintf(stderr, "usage: %s OUTPUT_DIR [--wav]\n", argv[0]);
    return 2;
  }
  const std::filesystem::path dir = argv[1];
  const bool alsoWav = argc == 3;
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
  if (ec) {
    std::fprintf(stderr, "zellick-gen-sounds: %s: %s\n", dir.string().c_str(),
                 ec.message().c_str());
    return 1;
  }
  for (const Sound& s : kSounds) {
    const auto samples = s.make();
    const std::string base(s.name);
    if (!write(dir / (base + ".caf"), samples, SF_FORMAT_CAF | SF_FORMAT_PCM_16)) return 1;
    if (alsoWav && !write(dir / (base + ".wav"), samples, SF_FORMAT_WAV | SF_FORMAT_PCM_16))
      return 1;
  }
  return 0;
}
