#include "platform/qt/bundle.h"

#include <QDir>
#include <QFileInfo>

namespace zellick::qt {

DirectoryBundle::DirectoryBundle(std::vector<std::string> folders) : folders_(std::move(folders)) {}

std::optional<std::string> DirectoryBundle::pathForResource(const std::string& name,
                                                            const std::string& type) const {
  // A resource name never climbs out of the bundle.
  if (name.empty() || name.find('/') != std::string::npos || name.find("..") != std::string::npos ||
      type.find('/') != std::string::npos)
    return std::nullopt;
  const QString file = QString::fromStdString(type.empty() ? name : name + "." + type);
  for (const auto& folder : folders_) {
    if (folder.empty()) continue;
    const QFileInfo info(QDir(QString::fromStdString(folder)), file);
    if (info.isFile()) return info.absoluteFilePath().toStdString();
  }
  return std::nullopt;
}

}  // namespace zellick::qt
