#include "sim/driver.h"
#include "sim/json.h"

#include "parts.h"

#include "counter/interface.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <tuple>

namespace zellick::sim {

namespace {

constexpr int kMaxWait = 1'000'000;

std::string withoutComment(const std::string& line) { return line.substr(0, line.find('#')); }

// What follows the first `skip` words of `line`, blanks before it dropped, "\n" read as a break.
std::string textAfter(const std::string& line, std::size_t skip) {
  std::size_t at = 0;
  for (std::size_t w = 0; w < skip; ++w) {
    at = line.find_first_not_of(" \t", at);
    at = line.find_first_of(" \t", at);
    if (at == std::string::npos) return {};
  }
  at = line.find_first_not_of(" \t", at);
  std::string text = at == std::string::npos ? std::string() : line.substr(at);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
  for (std::size_t i = text.find("\\n"); i != std::string::npos; i = text.find("\\n", i + 1))
    text.replace(i, 2, "\n");
  return text;
}

std::vector<std::string> words(const std::string& line) {
  std::istringstream in(withoutComment(line));
  std::vector<std::string> out;
  for (std::string w; in >> w;) out.push_back(w);
  return out;
}

std::optional<double> parseSeconds(const std::string& text) {
  if (text.empty()) return std::nullopt;
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !std::isfinite(v) || v < 0) return std::nullopt;
  return v;
}

std::optional<int> parseInt(const std::string& text) {
  int v = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return v;
}

std::string inputError(InputResult r, const std::string& name, const char* what) {
  if (r == InputResult::Unknown) return std::string("no ") + what + " named '" + name + "'";
  return {};  // a refused press is what the screen does, not a script error
}

}  // namespace

Driver::Driver(Simulation& sim, std::ostream& out, std::ostream& err)
    : sim_(sim), out_(out), err_(err) {
  defineStandardCommands();
  defineMoreCommands(*this, sim_, out_);
}

void Driver::define(const std::string& name, std::string usage, std::size_t argCount,
                    Handler handler) {
  commands_[name] = Command{std::move(usage), argCount, std::move(handler)};
}

void Driver::defineWithText(const std::string& name, std::string usage, std::size_t argCount,
                            Handler handler) {
  commands_[name] = Command{std::move(usage), argCount, std::move(handler), true};
}

void Driver::defineStandardCommands() {
  auto seconds = [](const std::string& text, double& v) -> std::string {
    auto s = parseSeconds(text);
    if (!s) return "'" + text + "' is not a number of seconds (0 or more)";
    v = *s;
    return {};
  };

  define("press", "press NAME", 1,
         [this](const Args& a) { return inputError(sim_.process().press(a[0]), a[0], "button"); });
  define("release", "release NAME", 1, [this](const Args& a) {
    return inputError(sim_.process().release(a[0]), a[0], "button");
  });
  define("tap", "tap NAME", 1,
         [this](const Args& a) { return inputError(sim_.process().tap(a[0]), a[0], "button"); });
  define("touch", "touch NAME COUNT", 2, [this](const Args& a) -> std::string {
    auto count = parseInt(a[1]);
    if (!count || *count < 0) return "'" + a[1] + "' is not a tap count (0 or more)";
    return inputError(sim_.process().touch(a[0], *count), a[0], "view");
  });
  const auto keyError = [](InputResult r, const std::string& key) -> std::string {
    if (r == InputResult::Unknown) return "no key named '" + key + "'";
    return {};
  };
  define("keydown", "keydown KEY", 1,
         [this, keyError](const Args& a) { return keyError(sim_.process().keyDown(a[0]), a[0]); });
  define("keyup", "keyup KEY", 1,
         [this, keyError](const Args& a) { return keyError(sim_.process().keyUp(a[0]), a[0]); });
  define("key", "key KEY", 1, [this, keyError](const Args& a) {
    std::string e = keyError(sim_.process().keyDown(a[0]), a[0]);
    if (e.empty()) sim_.process().keyUp(a[0]);
    return e;
  });
  define("answer", "answer INDEX", 1, [this](const Args& a) -> std::string {
    auto index = parseInt(a[0]);
    if (!index) return "'" + a[0] + "' is not a button index";
    return sim_.process().answer(*index).value_or("");
  });
  define("wait", "wait SECONDS", 1, [this, seconds](const Args& a) {
    double s = 0;
    std::string e = seconds(a[0], s);
    // Every running clock ticks once a second, so a typo'd huge wait would never return.
    if (e.empty() && s > kMaxWait) e = "wait at most " + std::to_string(kMaxWait) + " s at a time";
    if (e.empty()) sim_.wait(s);
    return e;
  });
  define("sleep", "sleep SECONDS", 1, [this, seconds](const Args& a) {
    double s = 0;
    std::string e = seconds(a[0], s);
    if (e.empty()) sim_.sleep(s);
    return e;
  });
  define("suspend", "suspend SECONDS", 1, [this, seconds](const Args& a) {
    double s = 0;
    std::string e = seconds(a[0], s);
    if (e.empty()) sim_.suspend(s);
    return e;
  });
  define("background", "background", 0, [this](const Args&) {
    sim_.process().background();
    return std::string();
  });
  define("foreground", "foreground", 0, [this](const Args&) {
    sim_.process().foreground();
    return std::string();
  });
  defineWithText("respond", "respond PATTERN STATUS BODY...", 2,
                 [this](const Args& a) -> std::string {
                   auto code = parseInt(a[1]);
                   if (!code || *code < 100 || *code > 999)
                     return "'" + a[1] + "' is not an HTTP status";
                   sim_.world().network().set(a[0], {fake::HttpRules::Kind::Respond, *code, a[2]});
                   return {};
                 });
  define("fail", "fail PATTERN", 1, [this](const Args& a) {
    sim_.world().network().set(a[0], {fake::HttpRules::Kind::Fail, 0, {}});
    return std::string();
  });
  define("hang", "hang PATTERN", 1, [this](const Args& a) {
    sim_.world().network().set(a[0], {fake::HttpRules::Kind::Hang, 0, {}});
    return std::string();
  });
  define("resign", "resign", 0, [this](const Args&) {
    sim_.process().resign();
    return std::string();
  });
  define("activate", "activate", 0, [this](const Args&) {
    sim_.process().activate();
    return std::string();
  });
  define("restart", "restart", 0, [this](const Args&) {
    sim_.restart();
    return std::string();
  });
  define("defaults", "defaults", 0, [this](const Args&) {
    out_ << toJson(sim_.world().store().values()) << '\n';
    return std::string();
  });
  define("state", "state", 0, [this](const Args&) {
    out_ << stateJson(sim_.process(), sim_.world().time().now()) << '\n';
    return std::string();
  });
  define("events", "events", 0, [this](const Args&) {
    for (const auto& line : sim_.world().events().takeNew()) out_ << line << '\n';
    return std::string();
  });
}

bool Driver::execute(const std::string& line, int lineNumber) {
  const auto w = words(line);
  if (w.empty()) return true;
  std::string error;
  auto it = commands_.find(w[0]);
  if (it == commands_.end()) {
    error = "unknown command '" + w[0] + "'";
  } else if (it->second.restOfLine ? w.size() - 1 < it->second.argCount
                                   : w.size() - 1 != it->second.argCount) {
    error = "expected '" + it->second.usage + "'";
  } else {
    Args args(w.begin() + 1, w.end());
    if (it->second.restOfLine) {
      args.resize(it->second.argCount);
      args.push_back(textAfter(withoutComment(line), it->second.argCount + 1));
    }
    try {
      error = it->second.handler(args);
    } catch (const std::exception& e) {
      error = std::string("failed: ") + e.what();
    }
  }
  if (error.empty()) return true;
  ++errors_;
  err_ << "zellick-sim: line " << lineNumber << ": " << error << '\n';
  return false;
}

int Driver::run(std::istream& in) {
  const int before = errors_;
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    execute(line, ++number);
  }
  return errors_ - before;
}

namespace {

constexpr const char* kUsage =
    "usage: zellick-sim [--defaults FILE] [--screen-height H] [--device \"NAME|MODEL|SYSTEM|"
    "VERSION|UUID\"] [--locale LOCALE] [SCRIPT | -]\n"
    "Runs the counter screen on virtual time; commands come from SCRIPT or stdin.\n";

// "en_CA" (an encoding or modifier after it is dropped) gives a language and a country, "de" a
// language alone, C and POSIX neither.
std::optional<std::pair<std::optional<std::string>, std::optional<std::string>>> parseLocale(
    std::string text) {
  text = text.substr(0, text.find_first_of(".@"));
  if (text == "C" || text == "POSIX") return std::make_pair(std::nullopt, std::nullopt);
  const auto letters = [](const std::string& s, bool upper) {
    return s.size() >= 2 && s.size() <= 3 && std::all_of(s.begin(), s.end(), [upper](char c) {
             return upper ? (c >= 'A' && c <= 'Z') : (c >= 'a' && c <= 'z');
           });
  };
  const auto bar = text.find('_');
  const std::string language = text.substr(0, bar);
  if (!letters(language, false)) return std::nullopt;
  if (bar == std::string::npos) return std::make_pair(language, std::nullopt);
  const std::string country = text.substr(bar + 1);
  if (!letters(country, true)) return std::nullopt;
  return std::make_pair(language, country);
}

bool readFile(const std::string& path, std::string& text) {
  std::ifstream f(path, std::ios::binary);
  if (!f) return false;
  std::ostringstream s;
  s << f.rdbuf();
  text = s.str();
  return !f.bad();
}

}  // namespace

int runZellickSim(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                  std::ostream& err) {
  SimOptions options;
  std::optional<std::string> defaultsFile;
  std::optional<std::string> script;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&](const char* option) -> std::optional<std::string> {
      const std::string prefix = std::string(option) + "=";
      if (a.rfind(prefix, 0) == 0) return a.substr(prefix.size());
      if (a == option && i + 1 < args.size()) return args[++i];
      return std::nullopt;
    };
    if (a == "--help" || a == "-h") {
      out << kUsage;
      return 0;
    }
    if (a == "--defaults" || a.rfind("--defaults=", 0) == 0) {
      defaultsFile = value("--defaults");
      if (!defaultsFile) {
        err << "zellick-sim: --defaults needs a file\n" << kUsage;
        return 2;
      }
    } else if (a == "--screen-height" || a.rfind("--screen-height=", 0) == 0) {
      auto v = value("--screen-height");
      auto h = v ? parseSeconds(*v) : std::nullopt;
      if (!h || *h < kMinScreenHeight || *h > 100000) {
        err << "zellick-sim: --screen-height needs a height of at least " << kMinScreenHeight
            << " points\n";
        return 2;
      }
      options.screenHeight = *h;
    } else if (a == "--device" || a.rfind("--device=", 0) == 0) {
      auto v = value("--device");
      std::vector<std::string> parts;
      for (std::size_t from = 0; v;) {
        const auto bar = v->find('|', from);
        parts.push_back(v->substr(from, bar == std::string::npos ? std::string::npos : bar - from));
        if (bar == std::string::npos) break;
        from = bar + 1;
      }
      if (parts.size() != 5) {
        err << "zellick-sim: --device needs \"NAME|MODEL|SYSTEM|VERSION|UUID\"\n";
        return 2;
      }
      options.device.name = parts[0];
      options.device.model = parts[1];
      options.device.systemName = parts[2];
      options.device.systemVersion = parts[3];
      options.device.vendorId = parts[4];
    } else if (a == "--locale" || a.rfind("--locale=", 0) == 0) {
      auto v = value("--locale");
      auto locale = v ? parseLocale(*v) : std::nullopt;
      if (!locale) {
        err << "zellick-sim: --locale needs LANGUAGE_COUNTRY (en_CA), LANGUAGE, C or POSIX\n";
        return 2;
      }
      std::tie(options.device.languageCode, options.device.countryCode) = *locale;
    } else if (a.size() > 1 && a[0] == '-') {
      err << "zellick-sim: unknown option '" << a << "'\n" << kUsage;
      return 2;
    } else if (script) {
      err << "zellick-sim: only one script may be given\n" << kUsage;
      return 2;
    } else {
      script = a;
    }
  }

  // The servers' addresses, overridden from the environment as the app's are.
  struct : Log {
    std::ostream* out;
    void line(const std::string& text) override { *out << "zellick-sim: " << text << '\n'; }
  } log;
  log.out = &err;
  options.configuration = Configuration::withOverrides(std::getenv(kMakerUrlVariable),
                                                       std::getenv(kAdPrimaryUrlVariable),
                                                       std::getenv(kAdFallbackUrlVariable), log);
  Simulation sim(options);
  if (defaultsFile) {
    std::string text, error;
    if (!readFile(*defaultsFile, text)) {
      err << "zellick-sim: cannot read defaults file '" << *defaultsFile << "'\n";
      return 2;
    }
    auto values = defaultsFromJson(text, error);
    if (!values) {
      err << "zellick-sim: " << *defaultsFile << ": malformed defaults JSON: " << error << '\n';
      return 2;
    }
    sim.world().store().replaceAll(std::move(*values));
  }

  std::ifstream file;
  std::istream* source = &in;
  if (script && *script != "-") {
    file.open(*script);
    if (!file) {
      err << "zellick-sim: cannot read script '" << *script << "'\n";
      return 2;
    }
    source = &file;
  }

  try {
    sim.start();
  } catch (const std::exception& e) {
    err << "zellick-sim: the app failed to start: " << e.what() << '\n';
    return 2;
  }
  Driver driver(sim, out, err);
  return driver.run(*source) > 0 ? 1 : 0;
}

}  // namespace zellick::sim
