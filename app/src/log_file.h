#pragma once

#include <QLockFile>
#include <QString>
#include <memory>

/// A file for the log that no other running copy of the tool writes to: "varkel.log" in the folder, or the
/// first free one of "varkel-2.log", "varkel-3.log" and so on. It is this copy's until the object goes; a
/// crash frees it too.
class LogFile {
 public:
  explicit LogFile(const QString& folder);

  /// Empty when there is none: the folder can't be written to.
  QString path() const { return path_; }

 private:
  std::unique_ptr<QLockFile> claim_;
  QString path_;
};
