// The ad network client's part of the scenario driver's state dump.
#include <nlohmann/json.hpp>

#include "sim/driver.h"

namespace zellick::sim {

std::string adConnectStateJson(Process& process) {
  const AdConnect* shared = process.adConnect().sharedAdConnect();
  if (!shared) return "null";
  const nlohmann::ordered_json o = {
      {"appId", shared->appId()},
      {"connectAttempts", shared->connectAttempts()},
      {"isInitialConnect", shared->isInitialConnect()},
      {"baseURL", shared->currentBaseURL()},
      {"buffer", shared->data() ? nlohmann::ordered_json(*shared->data()) : nullptr},
  };
  return o.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace zellick::sim
