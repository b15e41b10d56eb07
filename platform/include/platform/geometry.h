#pragma once

#include <string>

namespace zellick {

// Screen points, origin top-left, y grows downwards.
struct Point {
  double x = 0;
  double y = 0;
};

struct Rect {
  double x = 0;
  double y = 0;
  double w = 0;
  double h = 0;

  Point center() const { return {x + w / 2, y + h / 2}; }
  bool operator==(const Rect&) const = default;
};

// The few colours the screens use.
enum class Color { White, Gray, Black, Clear };

inline const char* colorName(Color c) {
  switch (c) {
    case Color::White: return "white";
    case Color::Gray: return "gray";
    case Color::Black: return "black";
    case Color::Clear: return "clear";
  }
  return "gray";
}

struct Font {
  std::string name;
  double size = 0;
  bool operator==(const Font&) const = default;
};

// The name that asks for the platform's own bold face.
inline constexpr const char* kBoldSystemFontName = "BoldSystemFont";

}  // namespace zellick
