#include "platform/qt/settings_scan.h"

#include <algorithm>
#include <cstdint>
#include <map>

// The rules below follow QSettings' INI reader in Qt 6.4 (how it splits lines and sections,
// unescapes values and decodes @Variant payloads), so that what is checked here is what it
// will parse.

namespace zellick::qt {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kQuotedChars = 80;

// Offset of the first byte that is not well-formed UTF-8, or kNone.
std::size_t firstNonUtf8(std::string_view s) {
  std::size_t i = 0;
  while (i < s.size()) {
    const unsigned char c = s[i];
    if (c < 0x80) {
      ++i;
      continue;
    }
    std::size_t more = 0;
    unsigned char lo = 0x80, hi = 0xBF;  // the range of the second byte
    if (c >= 0xC2 && c <= 0xDF) {
      more = 1;
    } else if (c >= 0xE0 && c <= 0xEF) {
      more = 2;
      if (c == 0xE0) lo = 0xA0;  // overlong
      if (c == 0xED) hi = 0x9F;  // surrogates
    } else if (c >= 0xF0 && c <= 0xF4) {
      more = 3;
      if (c == 0xF0) lo = 0x90;  // overlong
      if (c == 0xF4) hi = 0x8F;  // above U+10FFFF
    } else {
      return i;
    }
    if (s.size() - i - 1 < more) return i;
    for (std::size_t k = 1; k <= more; ++k) {
      const unsigned char t = s[i + k];
      if (t < (k == 1 ? lo : 0x80) || t > (k == 1 ? hi : 0xBF)) return i;
    }
    i += more + 1;
  }
  return kNone;
}

// `s` quoted for a log line: at most 80 characters, control characters as '?'. `s` is UTF-8.
std::string quoted(std::string_view s) {
  std::string out = "\"";
  std::size_t chars = 0;
  for (std::size_t i = 0; i < s.size(); ++chars) {
    if (chars == kQuotedChars) {
      out += "...";
      break;
    }
    const unsigned char c = s[i];
    const std::size_t n = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    if (c < 0x20 || c == 0x7F) {
      out += '?';
    } else {
      out.append(s.substr(i, n));
    }
    i += n;
  }
  return out + "\"";
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view trimmed(std::string_view s) {
  const auto blank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  while (!s.empty() && blank(s.front())) s.remove_prefix(1);
  while (!s.empty() && blank(s.back())) s.remove_suffix(1);
  return s;
}

// The next logical line from `pos`: leading blanks and ';' comments skipped, newlines inside
// quotes and escaped newlines kept, a ';' outside quotes ending it. `equals` is the offset of its
// first '=' outside quotes, or kNone. False at the end of the data.
bool readLine(std::string_view d, std::size_t& pos, std::size_t& start, std::size_t& len,
              std::size_t& equals) {
  bool inQuotes = false;
  equals = kNone;
  start = pos;
  while (start < d.size() && isSpace(d[start])) ++start;
  std::size_t i = start;
  while (i < d.size()) {
    const char c = d[i++];
    if (c == '=') {
      if (!inQuotes && equals == kNone) equals = i - 1;
    } else if (c == '\n' || c == '\r') {
      if (i == start + 1) {
        ++start;
      } else if (!inQuotes) {
        --i;
        break;
      }
    } else if (c == '\\') {
      if (i < d.size()) {
        const char e = d[i++];
        if (i < d.size() && ((e == '\n' && d[i] == '\r') || (e == '\r' && d[i] == '\n'))) ++i;
      }
    } else if (c == '"') {
      inQuotes = !inQuotes;
    } else if (c == ';') {
      if (i == start + 1) {
        while (i < d.size() && d[i] != '\n' && d[i] != '\r') ++i;
        while (i < d.size() && isSpace(d[i])) ++i;
        start = i;
      } else if (!inQuotes) {
        --i;
        break;
      }
    }
  }
  pos = i;
  len = i - start;
  return len > 0;
}

// Appends the UTF-8 text `s` as the Latin-1 bytes QSettings takes a payload from: characters
// above U+00FF become '?', those outside the BMP two of them (a surrogate pair).
void appendLatin1(std::string& out, std::string_view s) {
  for (std::size_t i = 0; i < s.size();) {
    const unsigned char c = s[i];
    if (c < 0x80) {
      out += static_cast<char>(c);
      ++i;
    } else if (c < 0xE0) {
      const unsigned cp = (c & 0x1Fu) << 6 | (static_cast<unsigned char>(s[i + 1]) & 0x3Fu);
      out += cp < 0x100 ? static_cast<char>(cp) : '?';
      i += 2;
    } else {
      out += c < 0xF0 ? "?" : "??";
      i += c < 0xF0 ? 3 : 4;
    }
  }
}

// The value of `c` as a digit of an escape, or -1.
int digit(char c, bool hex) {
  if (c >= '0' && c <= (hex ? '9' : '7')) return c - '0';
  if (hex && c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (hex && c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// A value as QSettings unescapes it: escapes resolved, quotes removed, blanks around unquoted
// text dropped, split at unquoted commas. Each piece in Latin-1 (see appendLatin1).
std::vector<std::string> unescape(std::string_view s) {
  static constexpr char kEscapes[][2] = {{'a', '\a'}, {'b', '\b'},  {'f', '\f'}, {'n', '\n'},
                                         {'r', '\r'}, {'t', '\t'},  {'v', '\v'}, {'"', '"'},
                                         {'?', '?'},  {'\'', '\''}, {'\\', '\\'}};
  std::vector<std::string> list;
  std::string cur;
  bool isList = false, inQuotes = false, quoted = false, chopAtEnd = true;
  std::size_t i = 0, chopLimit = 0;
  const auto skipBlanks = [&] {
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    chopLimit = cur.size();
  };
  const auto chop = [&] {
    while (cur.size() > chopLimit && (cur.back() == ' ' || cur.back() == '\t')) cur.pop_back();
  };
  skipBlanks();
  while (i < s.size()) {
    const char c = s[i];
    if (c == '\\') {
      if (++i >= s.size()) {
        chopAtEnd = false;
        break;
      }
      const char e = s[i++];
      const auto* code = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                      [e](const char(&x)[2]) { return x[0] == e; });
      if (code != std::end(kEscapes)) {
        cur += (*code)[1];
      } else if ((e == 'x' && i < s.size() && digit(s[i], true) >= 0) || digit(e, false) >= 0) {
        const bool hex = e == 'x';
        std::uint32_t v = hex ? 0 : static_cast<std::uint32_t>(e - '0');
        for (int d; i < s.size() && (d = digit(s[i], hex)) >= 0; ++i) {
          v = v * (hex ? 16 : 8) + static_cast<std::uint32_t>(d);
        }
        v &= 0xFFFF;  // one UTF-16 unit
        cur += v < 0x100 ? static_cast<char>(v) : '?';
        if (i >= s.size()) {
          chopAtEnd = false;
          break;
        }
      } else if (e == 'x' && i >= s.size()) {
        chopAtEnd = false;
        break;
      } else if ((e == '\n' || e == '\r') && i < s.size() && (s[i] == '\n' || s[i] == '\r') &&
                 s[i] != e) {
        ++i;  // an escaped line break of two characters
      }
      chopLimit = cur.size();
    } else if (c == '"') {
      ++i;
      quoted = true;
      inQuotes = !inQuotes;
      if (!inQuotes) skipBlanks();
    } else if (c == ',' && !inQuotes) {
      if (!quoted) chop();
      isList = true;
      list.push_back(std::move(cur));
      cur.clear();
      quoted = false;
      ++i;
      skipBlanks();
    } else {
      std::size_t j = i + 1;
      while (j < s.size() && s[j] != '\\' && s[j] != '"' && s[j] != ',') ++j;
      appendLatin1(cur, s.substr(i, j - i));
      i = j;
    }
  }
  if (chopAtEnd && !quoted) chop();
  if (!isList) return {std::move(cur)};
  list.push_back(std::move(cur));
  return list;
}

// QDataStream reads, big-endian; a read past the end fails, as it does in QDataStream.
class Reader {
 public:
  explicit Reader(std::string_view b) : b_(b) {}
  bool skip(std::size_t n) {
    if (n > b_.size() - pos_) return false;
    pos_ += n;
    return true;
  }
  bool u8(std::uint8_t& v) {
    if (pos_ >= b_.size()) return false;
    v = static_cast<std::uint8_t>(b_[pos_++]);
    return true;
  }
  bool u32(std::uint32_t& v) {
    if (b_.size() - pos_ < 4) return false;
    v = 0;
    for (int k = 0; k < 4; ++k) v = v << 8 | static_cast<std::uint8_t>(b_[pos_++]);
    return true;
  }
  bool atEnd() const { return pos_ == b_.size(); }
  // A QString or QByteArray: its length in bytes (all ones for a null one), then the bytes.
  bool blob(std::string_view* out = nullptr) {
    std::uint32_t n = 0;
    if (!u32(n)) return false;
    if (n == 0xFFFFFFFF) n = 0;
    if (n > b_.size() - pos_) return false;
    if (out) *out = b_.substr(pos_, n);
    pos_ += n;
    return true;
  }

 private:
  std::string_view b_;
  std::size_t pos_ = 0;
};

// @Variant( payloads are QDataStream version Qt 4.0 (no null flag, 32-bit dates); @DateTime(
// ones Qt 5.6, whose date-times may carry a time zone.
enum class Stream { Qt4, Qt56 };

bool skipDateTime(Reader& r, Stream v) {
  if (v == Stream::Qt4) return r.skip(9);  // date, time, time kind
  std::uint8_t timeKind = 0;
  if (!r.skip(12) || !r.u8(timeKind)) return false;
  if (timeKind == 2) return r.skip(4);  // an offset from UTC
  if (timeKind != 3) return true;
  // A time zone: its id, or a marker and the fields of a fixed offset.
  static constexpr std::string_view kOffsetMarker("\0O\0f\0f\0s\0e\0t\0F\0r\0o\0m\0U\0t\0c", 26);
  std::string_view id;
  if (!r.blob(&id)) return false;
  if (id != kOffsetMarker) return true;
  return r.blob() && r.skip(4) && r.blob() && r.blob() && r.skip(4) && r.blob();
}

// Why QSettings must not decode this QVariant payload; empty when it may. Iterative, so that no
// payload can exhaust the stack here; a payload that ends early is safe, Qt stops there too.
// Only the types settings are made of are known; any other could nest in ways not followed here.
std::string walkVariant(std::string_view payload, Stream v) {
  struct Level {
    bool map;  // entries are a key and a value, else values
    std::uint32_t left;
  };
  std::vector<Level> open;
  Reader r(payload);
  bool first = true;
  for (;;) {
    if (!open.empty()) {
      Level& l = open.back();
      if (l.left == 0) {
        open.pop_back();
        continue;
      }
      --l.left;
      if (l.map && !r.blob()) return {};
    } else if (!first) {
      return {};
    }
    first = false;
    std::uint32_t type = 0, n = 0;
    if (!r.u32(type) || (v == Stream::Qt56 && !r.skip(1))) return {};
    bool ok = true;
    switch (type) {
      case 0: ok = v == Stream::Qt56 || r.blob(); break;  // invalid; Qt 4 adds an empty string
      case 1: ok = r.skip(1); break;                      // bool
      case 2:                                             // int
      case 3:                                             // uint
      case 15: ok = r.skip(4); break;                     // QTime
      case 4:                                             // qlonglong
      case 5:                                             // qulonglong
      case 6: ok = r.skip(8); break;                      // double
      case 7: ok = r.skip(2); break;                      // QChar
      case 10:                                            // QString
      case 12: ok = r.blob(); break;                      // QByteArray
      case 11:                                            // QStringList
        ok = r.u32(n);
        while (ok && n-- > 0) ok = r.blob();
        break;
      case 14: ok = r.skip(v == Stream::Qt4 ? 4 : 8); break;  // QDate
      case 16: ok = skipDateTime(r, v); break;
      case 8:   // QVariantMap
      case 9:   // QVariantList
      case 28:  // QVariantHash
        if (!r.u32(n)) return {};
        if (open.size() >= static_cast<std::size_t>(kMaxSettingsNesting)) {
          return "nests values more than " + std::to_string(kMaxSettingsNesting) + " deep";
        }
        open.push_back({type != 9, n});
        break;
      default:
        // Nothing after it (a value cut short) leaves nothing to read, whatever the type.
        if (r.atEnd()) return {};
        return "holds a value of type " + std::to_string(type) + ", not one we can check";
    }
    if (!ok) return {};
  }
}

// Why QSettings must not decode this value; empty when it may.
std::string checkValue(std::string_view raw) {
  if (raw.find('@') == kNone && raw.find('\\') == kNone) return {};
  for (const std::string& piece : unescape(raw)) {
    if (piece.empty() || piece.back() != ')') continue;
    std::string why;
    if (piece.starts_with("@Variant("))
      why = walkVariant(std::string_view(piece).substr(9), Stream::Qt4);
    if (piece.starts_with("@DateTime(")) {
      why = walkVariant(std::string_view(piece).substr(10), Stream::Qt56);
    }
    if (!why.empty()) return why;
  }
  return {};
}

}  // namespace

SettingsScan scanSettings(std::string_view file) {
  SettingsScan out;
  if (file.size() > kMaxSettingsFileBytes) {
    out.unsafe = "is larger than " + std::to_string(kMaxSettingsFileBytes >> 20) + " MiB";
    return out;
  }
  if (const std::size_t bad = firstNonUtf8(file); bad != kNone) {
    out.unsafe = "holds bytes that are not UTF-8 (at byte " + std::to_string(bad) + ")";
    return out;
  }
  if (file.starts_with("\xef\xbb\xbf")) file.remove_prefix(3);

  // Keys by section in the order met; "" is [General], which QSettings also makes of a repeated
  // [General] and of keys before any section.
  std::vector<std::pair<std::string_view, std::map<std::string_view, int>>> sections{{{}, {}}};
  std::size_t current = 0;
  std::size_t pos = 0, start = 0, len = 0, equals = 0;
  while (readLine(file, pos, start, len, equals)) {
    const std::string_view line = file.substr(start, len);
    if (len > kMaxSettingsLineBytes) {
      out.unsafe = "has a line longer than " + std::to_string(kMaxSettingsLineBytes >> 20) +
                   " MiB (line " +
                   std::to_string(std::count(file.begin(), file.begin() + start, '\n') + 1) + ")";
      return out;
    }
    if (line.front() == '[') {
      std::string_view name = trimmed(line.substr(1, line.find(']') - 1));
      std::string lower(name);
      std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
      });
      if (lower == "general") name = {};
      const auto it = std::find_if(sections.begin(), sections.end(),
                                   [name](const auto& s) { return s.first == name; });
      current = static_cast<std::size_t>(it - sections.begin());
      if (it == sections.end()) sections.push_back({name, {}});
      continue;
    }
    if (equals == kNone) continue;  // QSettings skips it and reports a format error
    const std::string_view key = trimmed(line.substr(0, equals - start));
    ++sections[current].second[key];
    if (std::string why = checkValue(line.substr(equals - start + 1)); !why.empty()) {
      out.unsafe = "key " + quoted(key) + " " + why;
      return out;
    }
  }
  for (const auto& [name, keys] : sections) {
    const std::string where = name.empty() ? "[General]" : "section " + quoted(name);
    if (!name.empty() && !keys.empty()) {
      out.notes.push_back(where + " holds " + std::to_string(keys.size()) +
                          " key(s) the app does not read");
    }
    for (const auto& [key, times] : keys) {
      if (times > 1) {
        out.notes.push_back("key " + quoted(key) + " is given " + std::to_string(times) +
                            " times in " + where + "; the last one is used");
      }
    }
  }
  return out;
}

}  // namespace zellick::qt
