// The counter's part of the scenario driver's state dump.
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <type_traits>

#include "../src/parts.h"
#include "sim/driver.h"
#include "sim/json.h"

namespace zellick::sim {

namespace {

using ordered_json = nlohmann::ordered_json;

// As the events print numbers (at most three decimals, -0 as 0), but as a JSON number.
ordered_json number(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.3f", v);
  const double rounded = std::strtod(buf, nullptr);
  if (rounded == static_cast<double>(static_cast<long long>(rounded)))
    return static_cast<long long>(rounded);
  return rounded;
}

ordered_json frame(const Rect& f) {
  return {{"x", number(f.x)}, {"y", number(f.y)}, {"w", number(f.w)}, {"h", number(f.h)}};
}

ordered_json parsed(const std::string& json) { return ordered_json::parse(json); }

template <class>
inline constexpr bool kUnhandled = false;

// One entry per controller field, in the form the README gives for its type.
struct FieldWriter {
  fake::FakeScreen& screen;
  ordered_json& out;

  template <class T>
  void operator()(const char* name, const T& field) {
    if constexpr (std::is_pointer_v<T> && std::is_base_of_v<View, std::remove_pointer_t<T>>) {
      auto n = screen.nameOf(field);
      out[name] = n ? ordered_json(*n) : ordered_json(nullptr);
    } else if constexpr (std::is_same_v<T, TimerRef>) {
      out[name] = field && field->isValid();
    } else if constexpr (std::is_same_v<T, std::shared_ptr<AlertView>>) {
      out[name] = field ? ordered_json(field->tag()) : ordered_json(nullptr);
    } else if constexpr (std::is_same_v<T, std::shared_ptr<AudioPlayer>> ||
                         std::is_same_v<T, UserDefaults*>) {
      out[name] = field != nullptr;
    } else if constexpr (std::is_same_v<T, bool>) {
      out[name] = field;
    } else if constexpr (std::is_same_v<T, int32_t>) {
      out[name] = field;
    } else if constexpr (std::is_same_v<T, double>) {
      out[name] = number(field);
    } else if constexpr (std::is_same_v<T, std::optional<DefaultsArray>>) {
      out[name] = field ? parsed(toJson(DefaultsValue(*field))) : ordered_json(nullptr);
    } else if constexpr (std::is_same_v<T, std::optional<Date>>) {
      out[name] = field ? number(field->seconds) : ordered_json(nullptr);
    } else {
      static_assert(kUnhandled<T>, "a controller field of a type the state dump does not know");
    }
  }
};

ordered_json viewJson(fake::FakeScreen& screen, const std::string& name) {
  const View* v = screen.view(name);
  ordered_json o = frame(v->frame());
  o["userInteraction"] = v->userInteractionEnabled();
  o["image"] = nullptr;
  o["text"] = nullptr;
  o["color"] = nullptr;
  if (auto* b = screen.button(name)) o["image"] = b->image();
  if (auto* i = screen.imageView(name)) o["image"] = i->image();
  if (auto* l = screen.label(name)) {
    o["text"] = l->text();
    o["color"] = colorName(l->textColor());
  }
  return o;
}

}  // namespace

std::string stateJson(Process& p, double t) {
  ZellickViewController& c = p.controller();
  fake::FakeScreen& screen = p.screen();
  ordered_json o;
  o["t"] = number(t);
  c.visitFields(FieldWriter{screen, o});

  if (const AlertView* a = p.alerts().onScreen()) {
    o["alert"] = {
        {"title", a->title}, {"message", a->message}, {"buttons", a->buttons}, {"tag", a->tag()}};
  } else {
    o["alert"] = nullptr;
  }

  // The controller's views, in its field order.
  ordered_json views = ordered_json::object();
  c.visitFields([&](const char* name, const auto& field) {
    using T = std::decay_t<decltype(field)>;
    if constexpr (std::is_pointer_v<T> && std::is_base_of_v<View, std::remove_pointer_t<T>>)
      views[name] = viewJson(screen, name);
  });
  o["views"] = views;

  ordered_json bands = ordered_json::array();
  for (const auto& band : screen.rootView()->bands()) {
    ordered_json b = frame(band.frame);
    b["color"] = colorName(band.color);
    bands.push_back(b);
  }
  o["bands"] = bands;
  o["accessible"] = {{"text", screen.accessibleText()}, {"checked", screen.accessibleChecked()}};
  o["more"] = moreState(p);
  o["adconnect"] = parsed(adConnectStateJson(p));
  return o.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace zellick::sim
