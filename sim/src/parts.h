#pragma once

#include <nlohmann/json.hpp>

#include <iosfwd>

#include "sim/driver.h"

namespace zellick::sim {

// What each feature adds to the driver: its part of the state dump and its commands.
nlohmann::ordered_json moreState(Process& process);
void defineMoreCommands(Driver& driver, Simulation& sim, std::ostream& out);

}  // namespace zellick::sim
