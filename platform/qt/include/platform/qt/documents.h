#pragma once

#include <QString>

#include "platform/documents.h"

namespace zellick::qt {

// Documents in a folder on disk, made when the first file is written. A file is written to a
// scratch file beside it and renamed over it, so a symbolic link of that name is replaced,
// never followed.
class FolderDocuments final : public Documents {
 public:
  explicit FolderDocuments(QString folder) : folder_(std::move(folder)) {}
  Status writeAtomically(const std::string& name, const std::string& bytes) override;
  std::optional<std::string> pathForFile(const std::string& name) const override;
  std::map<std::string, std::uint64_t> contents() const override;

  const QString& folder() const { return folder_; }

 private:
  const QString folder_;
};

}  // namespace zellick::qt
