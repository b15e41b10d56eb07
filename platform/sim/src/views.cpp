#include "platform/sim/views.h"

#include "platform/sim/numbers.h"

namespace zellick::sim {

void SimImageView::setFrame(const Rect& frame) { move(frame, 0); }

void SimImageView::animateFrame(const Rect& to, double seconds) { move(to, seconds); }

void SimImageView::move(const Rect& to, double seconds) {
  NamedView::setFrame(to);
  events_.record("move " + name() + " y=" + formatNumber(to.y) +
                 " duration=" + formatNumber(seconds));
}

}  // namespace zellick::sim
