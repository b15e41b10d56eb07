#include "ui/font_setup.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QQuickWindow>

#include "ui/first_frame.h"

namespace zellick::ui {

FontSetupAhead::FontSetupAhead(std::function<QStringList()> registerFonts)
    : work_([registerFonts = std::move(registerFonts)] {
        const QStringList added = registerFonts ? registerFonts() : QStringList();
        // Registering empties the database: it is filled again here rather than on first use.
        // Family data and fallback lists are shared between threads; font engines are not.
        QFontDatabase::families();
        for (const QString& family : added) QFontMetricsF(QFont(family)).height();
      }) {}

FontSetupAhead::~FontSetupAhead() {
  if (thread_.joinable()) thread_.join();
}

void FontSetupAhead::startAfterFirstFrame(QQuickWindow* window) {
  afterFirstFrame(window, window, [this] { start(); });
}

void FontSetupAhead::start() {
  std::call_once(started_, [this] { thread_ = std::thread(work_); });
}

void FontSetupAhead::wait() {
  bool ranHere = false;
  std::call_once(started_, [this, &ranHere] {
    work_();
    ranHere = true;
  });
  if (!ranHere && thread_.joinable()) thread_.join();
}

}  // namespace zellick::ui
