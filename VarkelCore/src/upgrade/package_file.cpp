#include "VarkelCore/src/upgrade/package_file.h"

#include <QFile>
#include <QFileInfo>
#include <utility>

namespace varkel {

std::shared_ptr<PackageFile> PackageFile::Open(const QString& path) {
  if (!QFileInfo(path).isFile()) return nullptr;  // opening a pipe would wait for its writer
  auto file = std::make_unique<QFile>(path);
  if (!file->open(QIODevice::ReadOnly)) return nullptr;
  return std::shared_ptr<PackageFile>(new PackageFile(std::move(file)));
}

PackageFile::PackageFile(std::unique_ptr<QFile> file)
    : file_(std::move(file)), size_(static_cast<std::size_t>(file_->size())) {}

PackageFile::~PackageFile() = default;

std::optional<std::vector<std::uint8_t>> PackageFile::Read() {
  const QByteArray content = file_->readAll();
  if (static_cast<std::size_t>(content.size()) != size_) return std::nullopt;
  return std::vector<std::uint8_t>(content.begin(), content.end());
}

}  // namespace varkel
