#include <sstream>

#include "platform/sim/numbers.h"
#include "zellick_sim/driver.h"

namespace zellick::sim {

namespace {

class Object {
 public:
  Object& raw(const char* key, const std::string& json) {
    out_ += first_ ? "{" : ",";
    first_ = false;
    out_ += jsonQuote(key) + ":" + json;
    return *this;
  }
  Object& num(const char* key, double v) { return raw(key, formatNumber(v)); }
  Object& integer(const char* key, long long v) { return raw(key, std::to_string(v)); }
  Object& flag(const char* key, bool v) { return raw(key, v ? "true" : "false"); }
  Object& text(const char* key, const std::string& v) { return raw(key, jsonQuote(v)); }
  std::string str() const { return first_ ? "{}" : out_ + "}"; }

 private:
  std::string out_;
  bool first_ = true;
};

bool pending(const TimerRef& timer) { return timer && timer->isValid(); }

std::string array(const std::optional<DefaultsArray>& a) {
  return a ? toJson(DefaultsValue(*a)) : "null";
}

std::string viewJson(Process& p, const std::string& name) {
  const View* v = p.view(name);
  const Rect f = v->frame();
  Object o;
  o.num("x", f.x).num("y", f.y).num("w", f.w).num("h", f.h).flag("userInteraction",
                                                                  v->userInteractionEnabled());
  std::string image = "null", text = "null", color = "null";
  if (auto* b = p.button(name)) image = jsonQuote(b->image());
  if (auto* i = p.imageView(name)) image = jsonQuote(i->image());
  if (auto* l = p.label(name)) {
    text = jsonQuote(l->text());
    color = jsonQuote(colorName(l->textColor()));
  }
  return o.raw("image", image).raw("text", text).raw("color", color).str();
}

}  // namespace

std::string stateJson(Process& p, double t) {
  ZellickViewController& c = p.controller();
  auto viewName = [&p](const View* v) {
    auto n = p.nameOf(v);
    return n ? jsonQuote(*n) : std::string("null");
  };
  Object o;
  o.num("t", t);
  o.raw("ButtonReset", viewName(c.ButtonReset))
      .raw("ButtonAdd", viewName(c.ButtonAdd))
      .raw("ButtonA", viewName(c.ButtonA))
      .raw("ButtonB", viewName(c.ButtonB))
      .raw("ButtonC", viewName(c.ButtonC))
      .raw("ButtonInfo", viewName(c.ButtonInfo))
      .raw("ButtonMinus", viewName(c.ButtonMinus))
      .raw("ImageView1", viewName(c.ImageView1))
      .raw("ImageView2", viewName(c.ImageView2))
      .raw("ImageView3", viewName(c.ImageView3))
      .raw("ImageView4", viewName(c.ImageView4))
      .raw("LabelTimer", viewName(c.LabelTimer))
      .raw("LabelAvg", viewName(c.LabelAvg))
      .flag("TimerForLabelA", pending(c.TimerForLabelA))
      .flag("TimerForLabelB", pending(c.TimerForLabelB))
      .flag("TimerForLabelC", pending(c.TimerForLabelC))
      .raw("alertView", c.alertView ? std::to_string(c.alertView->tag()) : "null")
      .integer("total", c.total)
      .integer("value", c.value)
      .integer("totalA", c.totalA)
      .integer("totalB", c.totalB)
      .integer("totalC", c.totalC)
      .integer("buttonId", c.buttonId)
      .integer("previousTotal", c.previousTotal)
      .integer("previousValue", c.previousValue)
      .integer("remainder1", c.remainder1)
      .integer("remainder2", c.remainder2)
      .integer("remainder3", c.remainder3)
      .integer("remainder4", c.remainder4)
      .flag("timer1", pending(c.timer1))
      .flag("timer2", pending(c.timer2))
      .flag("timer3", pending(c.timer3))
      .flag("timer4", pending(c.timer4))
      .flag("ResetTimer", pending(c.ResetTimer))
      .flag("player", c.player != nullptr)
      .flag("IsMinusClicked", c.IsMinusClicked)
      .flag("IsResetClicked", c.IsResetClicked)
      .integer("Ahh", c.Ahh)
      .integer("Bhh", c.Bhh)
      .integer("Chh", c.Chh)
      .integer("Amm", c.Amm)
      .integer("Bmm", c.Bmm)
      .integer("Cmm", c.Cmm)
      .integer("Ass", c.Ass)
      .integer("Bss", c.Bss)
      .integer("Css", c.Css)
      .integer("hh", c.hh)
      .integer("mm", c.mm)
      .integer("ss", c.ss)
      .integer("tap", c.tap)
      .integer("totalForAvgA", c.totalForAvgA)
      .integer("totalForAvgB", c.totalForAvgB)
      .integer("totalForAvgC", c.totalForAvgC)
      .integer("timePassed", c.timePassed)
      .integer("isStartedTimerA", c.isStartedTimerA)
      .integer("isStartedTimerB", c.isStartedTimerB)
      .integer("isStartedTimerC", c.isStartedTimerC)
      .raw("CounterArray", array(c.CounterArray))
      .raw("TimerArray", array(c.TimerArray))
      .raw("TotalForAvgArray", array(c.TotalForAvgArray))
      .raw("dateOfInactive", c.dateOfInactive ? formatNumber(c.dateOfInactive->seconds) : "null")
      .flag("prefs", c.prefs != nullptr)
      .flag("isTimerA", c.isTimerA)
      .flag("isTimerB", c.isTimerB)
      .flag("isTimerC", c.isTimerC)
      .raw("baseImageView", viewName(c.baseImageView))
      .num("backgroundTopGap", c.backgroundTopGap)
      .num("backgroundLeftGap", c.backgroundLeftGap)
      .num("backgroundWidth", c.backgroundWidth)
      .num("backgroundHeight", c.backgroundHeight)
      .num("initialPositionOfNumbers", c.initialPositionOfNumbers);

  if (const AlertView* a = p.alerts().onScreen()) {
    std::string buttons = "[";
    for (std::size_t i = 0; i < a->buttons.size(); ++i)
      buttons += (i ? "," : "") + jsonQuote(a->buttons[i]);
    buttons += "]";
    o.raw("alert", Object()
                       .text("title", a->title)
                       .text("message", a->message)
                       .raw("buttons", buttons)
                       .integer("tag", a->tag())
                       .str());
  } else {
    o.raw("alert", "null");
  }

  Object views;
  for (const auto& name : Process::viewNames()) views.raw(name.c_str(), viewJson(p, name));
  o.raw("views", views.str());

  std::string bands = "[";
  bool first = true;
  for (const auto& band : p.root().bands()) {
    bands += first ? "" : ",";
    first = false;
    bands += Object()
                 .num("x", band.frame.x)
                 .num("y", band.frame.y)
                 .num("w", band.frame.w)
                 .num("h", band.frame.h)
                 .text("color", colorName(band.color))
                 .str();
  }
  o.raw("bands", bands + "]");
  return o.str();
}

}  // namespace zellick::sim
