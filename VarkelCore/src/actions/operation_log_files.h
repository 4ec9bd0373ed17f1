#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace varkel {

/// A part of the operation log: one exchange and one file each.
struct OperationLogPart {
  const char* file_prefix;
  std::array<std::uint8_t, 2> selector;  ///< follows the command's own payload
};

inline constexpr std::array<OperationLogPart, 4> kOperationLogParts = {{
    {"bsw_warning_", {0x00, 0x00}},
    {"asw_warning_", {0x00, 0x01}},
    {"bsw_error_", {0x01, 0x00}},
    {"asw_error_", {0x01, 0x01}},
}};

/// The files in which a download collects the parts of the operation log, named
/// PREFIXyyyy_MM_dd_hh_mm_ss.bin, in a folder shared with other downloads and the user. Used by one thread.
class OperationLogFiles {
 public:
  /// Creates the folder and four new, empty files. Their time stamp is the current second (local time), or
  /// the next one for which no files exist yet.
  explicit OperationLogFiles(QString folder);
  /// Removes the files that are still empty; parts that were written are kept for the user.
  ~OperationLogFiles();
  OperationLogFiles(const OperationLogFiles&) = delete;
  OperationLogFiles& operator=(const OperationLogFiles&) = delete;

  /// False if the files could not be created.
  bool are_created() const { return !stamp_.isEmpty(); }
  bool Write(std::size_t part, std::span<const std::uint8_t> bytes) const;
  /// Removes the four files, and the folder if nothing else is in it.
  void Remove() const;

  const QString& folder() const { return folder_; }
  const QString& stamp() const { return stamp_; }
  QStringList names() const;

 private:
  QString Path(std::size_t part) const;
  bool Create() const;

  const QString folder_;
  QString stamp_;
};

}  // namespace varkel
