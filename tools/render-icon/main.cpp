// Renders a square SVG icon into PNG files of the given sizes, for the icon theme's fixed-size
// folders; the build runs it on the app icon.
//   zellick-render-icon SVG SIZE:OUT.png...
#include <QImage>
#include <QPainter>
#include <QStringList>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: zellick-render-icon SVG SIZE:OUT.png...\n");
    return 2;
  }
  QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
  if (!svg.isValid()) {
    std::fprintf(stderr, "zellick-render-icon: cannot read %s\n", argv[1]);
    return 1;
  }
  for (int i = 2; i < argc; ++i) {
    const QString target = QString::fromLocal8Bit(argv[i]);
    const qsizetype colon = target.indexOf(QLatin1Char(':'));
    bool ok = false;
    const int size = target.left(colon).toInt(&ok);
    if (colon < 0 || !ok || size < 1 || size > 4096) {
      std::fprintf(stderr, "zellick-render-icon: %s is not SIZE:OUT.png\n", argv[i]);
      return 2;
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.end();
    const QString out = target.mid(colon + 1);
    if (!image.save(out, "PNG")) {
      std::fprintf(stderr, "zellick-render-icon: cannot write %s\n", qPrintable(out));
      return 1;
    }
  }
  return 0;
}
