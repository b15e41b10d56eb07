#pragma once

#include <functional>

class QObject;
class QQuickWindow;

namespace zellick::ui {

// Runs `run` a moment (0.1 s) after `window` has shown its first frame, on `context`'s thread,
// and not at all if `context` is gone by then. For work the first frame can do without: it
// then does not compete with the frame's way to the screen.
void afterFirstFrame(QQuickWindow* window, QObject* context, std::function<void()> run);

}  // namespace zellick::ui
