#include "platform/qt/documents.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace zellick::qt {

Status FolderDocuments::writeAtomically(const std::string& name, const std::string& bytes) {
  if (!isPlainName(name)) return {Status::Code::InvalidArgument, "not a plain file name"};
  if (!QDir().mkpath(folder_)) {
    return {Status::Code::Failed, "cannot make folder " + folder_.toStdString()};
  }
  QSaveFile file(QDir(folder_).filePath(QString::fromStdString(name)));
  if (!file.open(QIODevice::WriteOnly))
    return {Status::Code::Failed, file.errorString().toStdString()};
  if (file.write(bytes.data(), static_cast<qint64>(bytes.size())) !=
          static_cast<qint64>(bytes.size()) ||
      !file.commit()) {
    return {Status::Code::Failed, file.errorString().toStdString()};
  }
  return {};
}

std::optional<std::string> FolderDocuments::pathForFile(const std::string& name) const {
  if (!isPlainName(name)) return std::nullopt;
  const QFileInfo info(QDir(folder_).filePath(QString::fromStdString(name)));
  if (!info.isFile()) return std::nullopt;
  return info.filePath().toStdString();
}

std::map<std::string, std::uint64_t> FolderDocuments::contents() const {
  std::map<std::string, std::uint64_t> out;
  for (const QFileInfo& f : QDir(folder_).entryInfoList(QDir::Files | QDir::NoDotAndDotDot)) {
    out[f.fileName().toStdString()] = static_cast<std::uint64_t>(f.size());
  }
  return out;
}

}  // namespace zellick::qt
