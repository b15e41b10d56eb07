#pragma once

#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "sim/simulation.h"

namespace zellick::sim {

// The controller's fields, the question on screen, the views and the ad network client, as one
// line of JSON.
std::string stateJson(Process& process, double t);
// The ad network client's part: null before its first request.
std::string adConnectStateJson(Process& process);

// Runs scenario commands, one line at a time, against a simulation. Output lines go to
// `out`; each bad line gets one message on `err` naming its line number.
class Driver {
 public:
  using Args = std::vector<std::string>;
  // Returns an error text, or an empty string when the command went through.
  using Handler = std::function<std::string(const Args&)>;

  Driver(Simulation& sim, std::ostream& out, std::ostream& err);
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  // Adds or replaces a command; `usage` is shown when its arguments are wrong.
  void define(const std::string& name, std::string usage, std::size_t argCount, Handler handler);
  // A command whose last argument is the rest of the line after `argCount` words, as written
  // but with "\n" read as a line break (it may be empty).
  void defineWithText(const std::string& name, std::string usage, std::size_t argCount,
                      Handler handler);
  // Runs one line (comments and blank lines do nothing); false when it was refused.
  bool execute(const std::string& line, int lineNumber);
  // Runs every line of `in`; returns the number of refused lines.
  int run(std::istream& in);
  int errors() const { return errors_; }

 private:
  struct Command {
    std::string usage;
    std::size_t argCount;
    Handler handler;
    bool restOfLine = false;
  };
  void defineStandardCommands();

  Simulation& sim_;
  std::ostream& out_;
  std::ostream& err_;
  std::map<std::string, Command> commands_;
  int errors_ = 0;
};

// The whole tool: options, then the script from a file or `in`. Returns the exit status:
// 0 when every line went through, 1 when some were refused, 2 for bad options or files.
int runZellickSim(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                  std::ostream& err);

}  // namespace zellick::sim
