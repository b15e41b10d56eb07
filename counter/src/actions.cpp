#include "counter/actions.h"

#include "counter/ZellickViewController.h"

namespace zellick {

std::map<std::string, ControlActions> counterActions(ZellickViewController& c) {
  return {
      {"ButtonAdd", {[&c] { c.Add(); }, [&c] { c.PlayLetUpSound(); }}},
      {"ButtonMinus", {[&c] { c.OnClickMinus(); }, [&c] { c.OnMinusReleased(); }}},
      {"ButtonReset", {nullptr, [&c] { c.Reset(); }}},
      {"ButtonA", {nullptr, [&c] { c.SelectMemoryA(); }}},
      {"ButtonB", {nullptr, [&c] { c.SelectMemoryB(); }}},
      {"ButtonC", {nullptr, [&c] { c.SelectMemoryC(); }}},
      {"ButtonInfo", {nullptr, [&c] { c.OnClickInfo(); }}},
  };
}

}  // namespace zellick
