#include "more/moreView.h"

namespace zellick {

std::vector<ControlSpec> moreInterface(const Rect& bounds) {
  ControlSpec table;
  table.name = "pTblView";
  table.kind = ControlSpec::Kind::Table;
  table.frame = {0, kNavigationBarHeight, bounds.w, bounds.h - kNavigationBarHeight};
  return {table};
}

}  // namespace zellick
