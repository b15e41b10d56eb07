#include "platform/qt/font_setup.h"

#include <QFontDatabase>
#include <QFontMetricsF>

namespace zellick::qt {

FontSetupAhead::FontSetupAhead(std::function<QStringList()> registerFonts)
    : thread_([registerFonts = std::move(registerFonts)] {
        // The first font call sets up fontconfig (its configuration, the system font caches):
        // most of the work, and it happens here.
        const QStringList added = registerFonts ? registerFonts() : QStringList();
        // Registering empties the database: it is filled again here rather than on first use.
        // Family data and fallback lists are shared between threads; font engines are not.
        QFontDatabase::families();
        for (const QString& family : added) QFontMetricsF(QFont(family)).height();
      }) {}

FontSetupAhead::~FontSetupAhead() { wait(); }

void FontSetupAhead::wait() {
  if (thread_.joinable()) thread_.join();
}

}  // namespace zellick::qt
