#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "platform/sim/memory_defaults.h"

namespace zellick::sim {

namespace {

// Shortest text that reads back as the same double; always with a fraction or exponent so
// that it reads back as a double, not an integer.
std::string doubleText(double d) {
  if (!std::isfinite(d)) return "null";
  char buf[64];
  // Plain digits for the everyday range (timestamps included), exponents beyond it.
  const double mag = std::fabs(d);
  const auto style = mag == 0 || (mag >= 1e-4 && mag < 1e16) ? std::chars_format::fixed
                                                               : std::chars_format::general;
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, d, style);
  std::string s(buf, ec == std::errc() ? end : buf);
  if (s.find_first_of(".eE") == std::string::npos) {
    s += ".0";
  } else if (s.find('.') == std::string::npos) {
    s.insert(s.find_first_of("eE"), ".0");
  }
  return s;
}

void append(std::string& out, const DefaultsValue& value) {
  std::visit(
      [&out](const auto& v) {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, long long>) {
          out += std::to_string(v);
        } else if constexpr (std::is_same_v<T, double>) {
          out += doubleText(v);
        } else if constexpr (std::is_same_v<T, bool>) {
          out += v ? "true" : "false";
        } else if constexpr (std::is_same_v<T, std::string>) {
          out += jsonQuote(v);
        } else if constexpr (std::is_same_v<T, Date>) {
          out += "{\"date\":" + doubleText(v.seconds) + "}";
        } else {
          out += '[';
          for (std::size_t i = 0; i < v.size(); ++i) {
            if (i) out += ',';
            append(out, v[i]);
          }
          out += ']';
        }
      },
      static_cast<const DefaultsValue::variant&>(value));
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  std::optional<std::map<std::string, DefaultsValue>> document(std::string& error) {
    std::map<std::string, DefaultsValue> out;
    skipBlanks();
    if (!expect('{', "a JSON object of defaults")) return fail(error);
    skipBlanks();
    if (peek() == '}') {
      ++pos_;
    } else {
      for (;;) {
        skipBlanks();
        std::string key;
        if (!string(key)) return fail(error);
        skipBlanks();
        if (!expect(':', "':'")) return fail(error);
        DefaultsValue v;
        if (!value(v, 0)) return fail(error);
        out.insert_or_assign(std::move(key), std::move(v));
        skipBlanks();
        if (peek() == ',') {
          ++pos_;
          continue;
        }
        if (!expect('}', "',' or '}'")) return fail(error);
        break;
      }
    }
    skipBlanks();
    if (pos_ != text_.size()) {
      problem_ = "unexpected text after the object";
      return fail(error);
    }
    return out;
  }

 private:
  static constexpr int kMaxDepth = 64;

  std::nullopt_t fail(std::string& error) const {
    std::size_t line = 1, column = 1;
    for (std::size_t i = 0; i < pos_ && i < text_.size(); ++i) {
      if (text_[i] == '\n') {
        ++line;
        column = 1;
      } else {
        ++column;
      }
    }
    error = "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + problem_;
    return std::nullopt;
  }

  char peek() const { return pos_ < text_.size() ? text_[pos_] : '\0'; }
  bool atEnd() const { return pos_ >= text_.size(); }
  void skipBlanks() {
    while (!atEnd() && (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r')) ++pos_;
  }
  bool expect(char c, const char* what) {
    if (peek() == c && !atEnd()) {
      ++pos_;
      return true;
    }
    problem_ = std::string("expected ") + what + (atEnd() ? ", found the end" : "");
    return false;
  }
  bool literal(std::string_view word) {
    if (text_.substr(pos_, word.size()) == word) {
      pos_ += word.size();
      return true;
    }
    return false;
  }

  bool value(DefaultsValue& out, int depth) {
    skipBlanks();
    if (depth > kMaxDepth) {
      problem_ = "arrays nested too deeply";
      return false;
    }
    const char c = peek();
    if (atEnd()) {
      problem_ = "expected a value, found the end";
      return false;
    }
    if (c == '"') {
      std::string s;
      if (!string(s)) return false;
      out = std::move(s);
      return true;
    }
    if (c == '[') {
      ++pos_;
      DefaultsArray items;
      skipBlanks();
      if (peek() == ']') {
        ++pos_;
        out = std::move(items);
        return true;
      }
      for (;;) {
        DefaultsValue item;
        if (!value(item, depth + 1)) return false;
        items.push_back(std::move(item));
        skipBlanks();
        if (peek() == ',') {
          ++pos_;
          continue;
        }
        if (!expect(']', "',' or ']'")) return false;
        out = std::move(items);
        return true;
      }
    }
    if (c == '{') return date(out);
    if (literal("true")) {
      out = true;
      return true;
    }
    if (literal("false")) {
      out = false;
      return true;
    }
    if (literal("null")) {
      pos_ -= 4;
      problem_ = "null is not a defaults value";
      return false;
    }
    return number(out);
  }

  // Only {"date": seconds} is an object the defaults can hold.
  bool date(DefaultsValue& out) {
    const std::size_t start = pos_;
    ++pos_;
    skipBlanks();
    std::string key;
    if (!string(key)) return false;
    skipBlanks();
    DefaultsValue seconds;
    if (key != "date" || !expect(':', "':'") || !number(seconds)) {
      pos_ = start;
      problem_ = "the only object allowed as a value is {\"date\": seconds}";
      return false;
    }
    skipBlanks();
    if (!expect('}', "'}' closing the date")) return false;
    if (auto* i = std::get_if<long long>(&seconds)) out = Date{static_cast<double>(*i)};
    else out = Date{std::get<double>(seconds)};
    return true;
  }

  bool number(DefaultsValue& out) {
    skipBlanks();
    const std::size_t start = pos_;
    if (peek() == '-') ++pos_;
    auto digits = [this] {
      std::size_t n = 0;
      while (!atEnd() && peek() >= '0' && peek() <= '9') ++pos_, ++n;
      return n;
    };
    const std::size_t intDigits = digits();
    bool fractional = false;
    bool ok = intDigits > 0 && !(intDigits > 1 && text_[start + (text_[start] == '-')] == '0');
    if (ok && peek() == '.') {
      ++pos_;
      fractional = true;
      ok = digits() > 0;
    }
    if (ok && (peek() == 'e' || peek() == 'E')) {
      ++pos_;
      fractional = true;
      if (peek() == '+' || peek() == '-') ++pos_;
      ok = digits() > 0;
    }
    if (!ok) {
      pos_ = start;
      problem_ = "expected a value (number, string, true, false, array or {\"date\": seconds})";
      return false;
    }
    const std::string token(text_.substr(start, pos_ - start));
    if (fractional) {
      out = std::strtod(token.c_str(), nullptr);
      return true;
    }
    long long v = 0;
    auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), v);
    if (ec != std::errc() || end != token.data() + token.size()) {
      pos_ = start;
      problem_ = "integer " + token + " is out of range";
      return false;
    }
    out = v;
    return true;
  }

  static void appendUtf8(std::string& out, std::uint32_t cp) {
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }

  bool hex4(std::uint32_t& cp) {
    if (pos_ + 4 > text_.size()) return false;
    cp = 0;
    for (int i = 0; i < 4; ++i) {
      const char h = text_[pos_++];
      cp <<= 4;
      if (h >= '0' && h <= '9') cp |= static_cast<std::uint32_t>(h - '0');
      else if (h >= 'a' && h <= 'f') cp |= static_cast<std::uint32_t>(h - 'a' + 10);
      else if (h >= 'A' && h <= 'F') cp |= static_cast<std::uint32_t>(h - 'A' + 10);
      else return false;
    }
    return true;
  }

  bool string(std::string& out) {
    if (!expect('"', "a string")) return false;
    for (;;) {
      if (atEnd()) {
        problem_ = "unterminated string";
        return false;
      }
      const char c = text_[pos_++];
      if (c == '"') return true;
      if (static_cast<unsigned char>(c) < 0x20) {
        --pos_;
        problem_ = "control character inside a string";
        return false;
      }
      if (c != '\\') {
        out += c;
        continue;
      }
      const char e = peek();
      ++pos_;
      switch (e) {
        case '"': out += '"'; break;
        case '\\': out += '\\'; break;
        case '/': out += '/'; break;
        case 'b': out += '\b'; break;
        case 'f': out += '\f'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'u': {
          std::uint32_t cp = 0;
          if (!hex4(cp)) {
            problem_ = "bad \\u escape";
            return false;
          }
          if (cp >= 0xD800 && cp < 0xDC00) {
            std::uint32_t low = 0;
            if (!literal("\\u") || !hex4(low) || low < 0xDC00 || low >= 0xE000) {
              problem_ = "unpaired surrogate in \\u escape";
              return false;
            }
            cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
          } else if (cp >= 0xDC00 && cp < 0xE000) {
            problem_ = "unpaired surrogate in \\u escape";
            return false;
          }
          appendUtf8(out, cp);
          break;
        }
        default:
          --pos_;
          problem_ = "bad escape in string";
          return false;
      }
    }
  }

  std::string_view text_;
  std::size_t pos_ = 0;
  std::string problem_;
};

}  // namespace

std::string jsonQuote(std::string_view text) {
  std::string out = "\"";
  for (char c : text) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned char>(c));
          out += buf;
        } else {
          out += c;
        }
    }
  }
  return out + "\"";
}

std::string toJson(const DefaultsValue& value) {
  std::string out;
  append(out, value);
  return out;
}

std::string toJson(const std::map<std::string, DefaultsValue>& values) {
  std::string out = "{";
  bool first = true;
  for (const auto& [key, value] : values) {
    if (!first) out += ',';
    first = false;
    out += jsonQuote(key) + ':';
    append(out, value);
  }
  return out + "}";
}

std::optional<std::map<std::string, DefaultsValue>> defaultsFromJson(std::string_view text,
                                                                     std::string& error) {
  return Parser(text).document(error);
}

}  // namespace zellick::sim
