// Saving the three memories to the user defaults and reading them back.
#include <cmath>
#include <variant>

#include "counter/ZellickViewController.h"

namespace zellick {

namespace {

constexpr const char* kCounters = "Counters";
constexpr const char* kTimers = "Timers";
constexpr const char* kTotalForAvg = "TotalForAvg";
constexpr const char* kButtonId = "ButtonId";
constexpr const char* kTapValue = "TapValue";
constexpr const char* kDateOfInactive = "DateOfInactive";

std::string describe(const DefaultsValue& v);

std::string describe(const DefaultsArray& a) {
  std::string out = "(";
  for (size_t i = 0; i < a.size(); ++i) {
    if (i) out += ", ";
    out += describe(a[i]);
  }
  return out + ")";
}

std::string describe(const DefaultsValue& v) {
  if (auto* i = std::get_if<long long>(&v)) return format("%lld", *i);
  if (auto* d = std::get_if<double>(&v)) return format("%g", *d);
  if (auto* b = std::get_if<bool>(&v)) return *b ? "1" : "0";
  if (auto* s = std::get_if<std::string>(&v)) return format("\"%s\"", s->c_str());
  if (auto* t = std::get_if<Date>(&v)) return format("date %.3f", t->seconds);
  return describe(std::get<DefaultsArray>(v));
}

std::string describe(const std::optional<DefaultsArray>& a) { return a ? describe(*a) : "(null)"; }

DefaultsArray zeros(size_t n) { return DefaultsArray(n, DefaultsValue(0LL)); }

}  // namespace

// The numbers saved under `key`, exactly `count` of them. A damaged entry (not an array, too
// short, too long, or holding something that is not a number) is logged once; the values that
// can be read are kept and the others read as 0, so one bad element never costs the rest.
std::vector<int32_t> ZellickViewController::readNumbers(const char* key, size_t count,
                                                        DefaultsArray& saved) {
  const std::optional<DefaultsValue> raw = services_.defaults.objectForKey(key);
  const DefaultsArray* elements = raw ? std::get_if<DefaultsArray>(&*raw) : nullptr;
  std::vector<int32_t> numbers(count, 0);
  std::string damaged;
  if (!elements) {
    damaged = "it is not a list";
  } else {
    for (size_t i = 0; i < count; ++i) {
      std::optional<int> n = i < elements->size() ? intValue((*elements)[i]) : std::nullopt;
      if (n) {
        numbers[i] = *n;
      } else {
        damaged += format("%s%zu", damaged.empty() ? "elements " : ", ", i);
      }
    }
    if (!damaged.empty()) damaged += " missing or unreadable";
    if (elements->size() > count) {
      damaged += format("%s%zu extra elements ignored", damaged.empty() ? "" : "; ",
                        elements->size() - count);
    }
  }
  if (!damaged.empty()) {
    log(format("Saved \"%s\" is damaged (%s); the unreadable values read as 0", key,
               damaged.c_str()));
  }
  saved.clear();
  for (int32_t n : numbers) saved.emplace_back(static_cast<long long>(n));
  return numbers;
}

void ZellickViewController::RetrieveValues() {
  const UserDefaults& d = services_.defaults;
  const bool hasCounters = d.objectForKey(kCounters).has_value();
  const bool hasTimers = d.objectForKey(kTimers).has_value();
  const bool hasTotalForAvg = d.objectForKey(kTotalForAvg).has_value();
  const bool hasButtonId = d.objectForKey(kButtonId).has_value();
  const bool hasTapValue = d.objectForKey(kTapValue).has_value();
  const bool hasDateOfInactive = d.objectForKey(kDateOfInactive).has_value();

  if (hasCounters) {
    CounterArray.emplace();
    std::vector<int32_t> n = readNumbers(kCounters, 3, *CounterArray);
    totalA = n[0];
    totalB = n[1];
    totalC = n[2];
    log("Counters User value");
  } else {
    CounterArray = zeros(3);
    log("Counters Default");
  }

  if (hasTimers) {
    TimerArray.emplace();
    std::vector<int32_t> n = readNumbers(kTimers, 12, *TimerArray);
    log("TimerArray:" + describe(TimerArray));
    int32_t* fields[] = {&Ahh,
                         &Amm,
                         &Ass,
                         &Bhh,
                         &Bmm,
                         &Bss,
                         &Chh,
                         &Cmm,
                         &Css,
                         &isStartedTimerA,
                         &isStartedTimerB,
                         &isStartedTimerC};
    for (size_t i = 0; i < 12; ++i) *fields[i] = n[i];
    log(format("Timer User Value %d %d %d", Ahh, Amm, Ass));
  } else {
    TimerArray = zeros(12);
    log(describe(CounterArray) + ", " + describe(TimerArray));
  }

  if (hasTotalForAvg) {
    TotalForAvgArray.emplace();
    std::vector<int32_t> n = readNumbers(kTotalForAvg, 3, *TotalForAvgArray);
    log("TotalForAvgArray:" + describe(TotalForAvgArray));
    totalForAvgA = n[0];
    totalForAvgB = n[1];
    totalForAvgC = n[2];
    log("TotalForAvgArray User Value");
  } else {
    TotalForAvgArray = zeros(3);
    log(describe(CounterArray) + ", " + describe(TimerArray));
  }

  // Taken as stored: a number outside 1..3 selects no memory, which every action allows for.
  buttonId = hasButtonId ? static_cast<int32_t>(d.integerForKey(kButtonId)) : 1;

  if (hasDateOfInactive) {
    std::optional<DefaultsValue> when = d.objectForKey(kDateOfInactive);
    if (const Date* date = std::get_if<Date>(&*when)) {
      dateOfInactive = *date;
    } else {
      log("Saved \"DateOfInactive\" is not a date; no time is caught up");
    }
  }

  // Taken as stored too: a unit outside 1..3 shows no rate until a tap brings it back to 1.
  if (hasTapValue) tap = static_cast<int32_t>(d.integerForKey(kTapValue));
}

void ZellickViewController::SaveUserSettings() {
  // Normally made by RetrieveValues; a save that comes first still writes whole arrays.
  if (!CounterArray) CounterArray = zeros(3);
  if (!TimerArray) TimerArray = zeros(12);
  if (!TotalForAvgArray) TotalForAvgArray = zeros(3);

  const int32_t counts[] = {totalA, totalB, totalC};
  for (size_t i = 0; i < 3; ++i) (*CounterArray)[i] = static_cast<long long>(counts[i]);
  const int32_t clocks[] = {Ahh,
                            Amm,
                            Ass,
                            Bhh,
                            Bmm,
                            Bss,
                            Chh,
                            Cmm,
                            Css,
                            isStartedTimerA,
                            isStartedTimerB,
                            isStartedTimerC};
  for (size_t i = 0; i < 12; ++i) (*TimerArray)[i] = static_cast<long long>(clocks[i]);
  const int32_t numerators[] = {totalForAvgA, totalForAvgB, totalForAvgC};
  for (size_t i = 0; i < 3; ++i) (*TotalForAvgArray)[i] = static_cast<long long>(numerators[i]);

  dateOfInactive = Date{services_.clock.now()};
  prefs = &services_.defaults;
  prefs->setObject(kCounters, *CounterArray);
  prefs->setObject(kTimers, *TimerArray);
  prefs->setObject(kTotalForAvg, *TotalForAvgArray);
  prefs->setInteger(kButtonId, buttonId);
  prefs->setObject(kDateOfInactive, *dateOfInactive);
  prefs->setInteger(kTapValue, tap);
  saveFailed_ = !prefs->synchronize();
  if (saveFailed_) log("SaveUserSettings: the counter state could not be written to disk");
}

}  // namespace zellick
