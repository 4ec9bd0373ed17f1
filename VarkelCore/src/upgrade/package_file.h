#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class QFile;

namespace varkel {

/// A firmware package on disk, opened. Large ones on slow disks are read on a worker.
class PackageFile {
 public:
  /// Null when `path` is no regular file or can't be opened.
  static std::shared_ptr<PackageFile> Open(const QString& path);
  ~PackageFile();

  /// The size when it was opened, in bytes.
  std::size_t size() const { return size_; }
  /// All of it; nullopt if it can't be read whole, or is no longer as long as it was.
  std::optional<std::vector<std::uint8_t>> Read();

 private:
  explicit PackageFile(std::unique_ptr<QFile> file);

  const std::unique_ptr<QFile> file_;
  const std::size_t size_;
};

}  // namespace varkel
