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

// The few colours the counter screen uses.
enum class Color { White, Gray, Black };

inline const char* colorName(Color c) {
  switch (c) {
    case Color::White: return "white";
    case Color::Gray: return "gray";
    case Color::Black: return "black";
  }
  return "gray";
}

struct Font {
  std::string name;
  double size = 0;
  bool operator==(const Font&) const = default;
};

}  // namespace zellick
