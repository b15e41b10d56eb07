// Saving the three memories to the user defaults and reading them back.
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <variant>

#include "counter/ZellickViewController.h"

namespace zellick {

namespace {

// The range a saved number is meant to lie in. A number outside it is logged and kept as it is.
struct Field {
  int32_t lo, hi;
};

constexpr const char* kCounters = "Counters";
constexpr const char* kTimers = "Timers";
constexpr const char* kTotalForAvg = "TotalForAvg";
constexpr const char* kButtonId = "ButtonId";
constexpr const char* kTapValue = "TapValue";
constexpr const char* kDateOfInactive = "DateOfInactive";

constexpr Field kCount{0, 9999};
constexpr Field kHours{0, INT32_MAX};
constexpr Field kSixty{0, 59};
constexpr Field kFlag{0, 1};
constexpr Field kNumerator{-9999, 9999};
constexpr Field kOneToThree{1, 3};
constexpr Field kCountFields[] = {kCount, kCount, kCount};
constexpr Field kTimerFields[] = {kHours, kSixty, kSixty, kHours, kSixty, kSixty,
                                  kHours, kSixty, kSixty, kFlag,  kFlag,  kFlag};
constexpr Field kNumeratorFields[] = {kNumerator, kNumerator, kNumerator};

// Within this long after a change the whole state is written, so a crash, a kill or a power cut
// loses at most the last moment of counting; a burst of presses costs one write.
constexpr double kAutosaveDelay = 1.0;

// At most this much of a damaged value goes into its log line.
constexpr size_t kQuoteLimit = 80;

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
  if (auto* a = std::get_if<DefaultsArray>(&v)) return describe(*a);
  std::string out = "{";
  for (const auto& [key, e] : std::get<DefaultsDictionary>(v))
    out += (out.size() > 1 ? ", " : "") + key + " = " + describe(e);
  return out + "}";
}

std::string describe(const std::optional<DefaultsArray>& a) { return a ? describe(*a) : "(null)"; }

std::string quoted(const DefaultsValue& v) {
  std::string text = describe(v);
  if (text.size() > kQuoteLimit) text = text.substr(0, kQuoteLimit - 3) + "...";
  return text;
}

DefaultsArray zeros(size_t n) { return DefaultsArray(n, DefaultsValue(0LL)); }

// Text that is a whole number and nothing else, as a store without types hands numbers back.
bool isWholeText(const std::string& s) {
  size_t i = 0;
  while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
  const size_t digits = i;
  while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i;
  if (i == digits) return false;
  while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
  return i == s.size();
}

bool beyond32Bits(const DefaultsValue& v) {
  long long n = 0;
  if (const auto* i = std::get_if<long long>(&v)) {
    n = *i;
  } else if (const auto* s = std::get_if<std::string>(&v)) {
    errno = 0;
    n = std::strtoll(s->c_str(), nullptr, 10);
    if (errno == ERANGE) return true;
  }
  return n < INT32_MIN || n > INT32_MAX;
}

// The number `v` reads as, and what is wrong with it as a saved whole number (empty if nothing).
int32_t readWhole(const DefaultsValue& v, const Field& field, std::string& why) {
  const std::optional<int> n = intValue(v);
  const auto* i = std::get_if<long long>(&v);
  const auto* s = std::get_if<std::string>(&v);
  if (!n) {
    why = "not a number; read as 0";
    return 0;
  }
  if (!i && !(s && isWholeText(*s))) {
    why = format("not a whole number; read as %d", *n);
  } else if (beyond32Bits(v)) {
    why = format("beyond 32 bits; read as %d", *n);
  } else if (*n < field.lo || *n > field.hi) {
    why = field.hi == INT32_MAX ? std::string("below 0; kept")
                                : format("outside %d..%d; kept", field.lo, field.hi);
  }
  return *n;
}

// The numbers saved under `key`, as many as `fields`. Each damaged value gets a log line: an
// entry that is not a list, elements missing, beyond the end, not whole numbers or out of range.
// What can be read is kept; what cannot reads as 0; nothing ever throws.
std::vector<int32_t> readNumbers(const UserDefaults& defaults, Log& log, const char* key,
                                 const Field* fields, size_t count, DefaultsArray& saved) {
  const std::optional<DefaultsValue> raw = defaults.objectForKey(key);
  const DefaultsArray* elements = raw ? std::get_if<DefaultsArray>(&*raw) : nullptr;
  std::vector<int32_t> numbers(count, 0);
  if (!elements) {
    log.line(format("Saved \"%s\" is %s: not a list; read as zeros", key, quoted(*raw).c_str()));
  } else {
    for (size_t i = 0; i < count && i < elements->size(); ++i) {
      std::string why;
      numbers[i] = readWhole((*elements)[i], fields[i], why);
      if (!why.empty()) {
        log.line(format("Saved \"%s\" element %zu is %s: %s", key, i,
                        quoted((*elements)[i]).c_str(), why.c_str()));
      }
    }
    if (elements->size() < count) {
      log.line(format("Saved \"%s\" has %zu elements, not %zu; the missing ones read as 0", key,
                      elements->size(), count));
    } else if (elements->size() > count) {
      log.line(format("Saved \"%s\" has %zu elements, not %zu; the rest are ignored", key,
                      elements->size(), count));
    }
  }
  saved.clear();
  for (int32_t n : numbers) saved.emplace_back(static_cast<long long>(n));
  return numbers;
}

int32_t readScalar(const UserDefaults& defaults, Log& log, const char* key, const Field& field) {
  const DefaultsValue raw = defaults.objectForKey(key).value_or(DefaultsValue(0LL));
  std::string why;
  const int32_t n = readWhole(raw, field, why);
  if (!why.empty())
    log.line(format("Saved \"%s\" is %s: %s", key, quoted(raw).c_str(), why.c_str()));
  return n;
}

}  // namespace

void ZellickViewController::RetrieveValues() {
  const UserDefaults& d = services_.defaults;
  const bool hasCounters = d.objectForKey(kCounters).has_value();
  const bool hasTimers = d.objectForKey(kTimers).has_value();
  const bool hasTotalForAvg = d.objectForKey(kTotalForAvg).has_value();
  const bool hasButtonId = d.objectForKey(kButtonId).has_value();
  const bool hasTapValue = d.objectForKey(kTapValue).has_value();
  const bool hasDateOfInactive = d.objectForKey(kDateOfInactive).has_value();
  // Some keys but not all: the others were lost, which a first start does not explain.
  const bool anySaved =
      hasCounters || hasTimers || hasTotalForAvg || hasButtonId || hasTapValue || hasDateOfInactive;
  const auto missing = [&](bool has, const char* key, const char* instead) {
    if (anySaved && !has) log(format("Saved \"%s\" is missing; %s", key, instead));
  };
  missing(hasCounters, kCounters, "the counts read as 0");
  missing(hasTimers, kTimers, "the clocks read as 0:00:00, stopped");
  missing(hasTotalForAvg, kTotalForAvg, "the rates read as 0");
  missing(hasButtonId, kButtonId, "memory A is shown");
  missing(hasTapValue, kTapValue, "the rate unit stays as it is");
  missing(hasDateOfInactive, kDateOfInactive, "no time is caught up");

  if (hasCounters) {
    CounterArray.emplace();
    std::vector<int32_t> n =
        readNumbers(d, services_.log, kCounters, kCountFields, 3, *CounterArray);
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
    std::vector<int32_t> n = readNumbers(d, services_.log, kTimers, kTimerFields, 12, *TimerArray);
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
    std::vector<int32_t> n =
        readNumbers(d, services_.log, kTotalForAvg, kNumeratorFields, 3, *TotalForAvgArray);
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
  buttonId = hasButtonId ? readScalar(d, services_.log, kButtonId, kOneToThree) : 1;

  if (hasDateOfInactive) {
    std::optional<DefaultsValue> when = d.objectForKey(kDateOfInactive);
    if (const Date* date = std::get_if<Date>(&*when)) {
      dateOfInactive = *date;
    } else {
      log(format("Saved \"%s\" is %s: not a date; no time is caught up", kDateOfInactive,
                 quoted(*when).c_str()));
    }
  }

  // Taken as stored too: a unit outside 1..3 shows no rate until a tap brings it back to 1.
  if (hasTapValue) tap = readScalar(d, services_.log, kTapValue, kOneToThree);
}

void ZellickViewController::storeState() {
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
}

void ZellickViewController::SaveUserSettings() {
  // This save covers any write still due.
  if (autosave_) autosave_->invalidate();
  autosave_ = nullptr;
  storeState();
  saveFailed_ = !prefs->synchronize();
  if (saveFailed_) log("SaveUserSettings: the counter state could not be written to disk");
}

void ZellickViewController::stateChanged() {
  if (autosave_) return;  // the write already due takes this change too
  autosave_ = schedule(kAutosaveDelay, &ZellickViewController::autosave);
}

// The whole state, stamped with the moment, as a save on leaving writes it; the store writes
// the file on a thread of its own, so the run loop never waits for the disk. After a crash the
// next start restores this and catches up running clocks from its moment.
void ZellickViewController::autosave(Timer&) {
  autosave_ = nullptr;
  storeState();
  services_.defaults.synchronizeInBackground();
}

}  // namespace zellick
