#pragma once

#include <QStringList>

#include <functional>
#include <thread>

namespace zellick::qt {

// Runs the font set-up on a helper thread so that it overlaps the QML compilation instead of
// stalling the first text the screen lays out: `registerFonts` (which returns the families it
// added; the first font call also sets up fontconfig, the bulk of the work), then filling Qt's
// font database and the added families' fallbacks so the main thread finds them
// ready. Qt's font database locks itself, so the main thread is never wrong meanwhile, only
// kept waiting if it gets there first. Construct after the QGuiApplication; wait() before the
// screen creates any text.
class FontSetupAhead {
 public:
  explicit FontSetupAhead(std::function<QStringList()> registerFonts = {});
  FontSetupAhead(const FontSetupAhead&) = delete;
  FontSetupAhead& operator=(const FontSetupAhead&) = delete;
  ~FontSetupAhead();

  // Blocks until the set-up is done; harmless to call again.
  void wait();

 private:
  std::thread thread_;
};

}  // namespace zellick::qt
