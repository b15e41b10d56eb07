#pragma once

#include <QStringList>

#include <functional>
#include <mutex>
#include <thread>

class QQuickWindow;

namespace zellick::ui {

// Qt's text stack, which only the questions use, set up off the start-up path: `registerFonts`
// (it returns the families it added; the first font call also reads the system font
// configuration, the bulk of the work), then Qt's font database and the added families'
// fallbacks, on a helper thread started once the first frame is out. Qt's font database locks
// itself, so a caller meanwhile is kept waiting, never wrong.
class FontSetupAhead {
 public:
  explicit FontSetupAhead(std::function<QStringList()> registerFonts = {});
  FontSetupAhead(const FontSetupAhead&) = delete;
  FontSetupAhead& operator=(const FontSetupAhead&) = delete;
  ~FontSetupAhead();

  // Starts the helper thread after `window`'s first frame; nothing if already started.
  void startAfterFirstFrame(QQuickWindow* window);
  // Starts the helper thread now; nothing if already started.
  void start();
  // Returns once the set-up is done, doing it here if it never started; harmless to repeat.
  void wait();

 private:
  std::function<void()> work_;
  std::once_flag started_;
  std::thread thread_;
};

}  // namespace zellick::ui
