#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class QFile;

namespace varkel {

/// An open firmware package on disk. Reading may take long, so it is done on a worker.
class PackageFile {
 public:
  /// Null if `path` is not a regular file or can't be opened.
  static std::shared_ptr<PackageFile> Open(const QString& path);
  ~PackageFile();

  /// Size in bytes when it was opened.
  std::size_t size() const { return size_; }
  /// The whole package; nullopt if it can't be read completely or its size has changed.
  std::optional<std::vector<std::uint8_t>> Read();

 private:
  explicit PackageFile(std::unique_ptr<QFile> file);

  const std::unique_ptr<QFile> file_;
  const std::size_t size_;
};

}  // namespace varkel
