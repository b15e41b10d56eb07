#pragma once

#include <functional>

class QObject;
class QQuickWindow;

namespace zellick::qt {

// Runs `run` once `window` has shown its first frame: on `context`'s thread, queued so the
// frame's own signal returns at once, and not at all if `context` is gone by then. For work
// the first frame can do without.
void afterFirstFrame(QQuickWindow* window, QObject* context, std::function<void()> run);

}  // namespace zellick::qt
