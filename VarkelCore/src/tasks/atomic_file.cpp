#include "VarkelCore/src/tasks/atomic_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <filesystem>
#include <system_error>

namespace varkel {

namespace {

// File systems allow 255 bytes or characters; the time stamp, the extension and the temporary file's random
// letters need about 40.
constexpr int kMaxNameBytes = 180;

bool IsAllowed(QChar c) {
  static const QString kForbidden = QStringLiteral("/\\:*?\"<>|");
  return !kForbidden.contains(c) && c.category() != QChar::Other_Control &&
         c.category() != QChar::Other_Format && c.category() != QChar::Separator_Line &&
         c.category() != QChar::Separator_Paragraph;
}

std::filesystem::path SystemPath(const QString& path) {
  return path.toStdU16String();
}

}  // namespace

bool IsWritableTarget(const QString& path) {
  const QFileInfo target(path);
  return target.isFile() || (!target.exists() && !target.isSymLink());
}

WriteResult WriteAtomically(const QString& path, std::span<const std::uint8_t> bytes) {
  QSaveFile file(path);
  if (!IsWritableTarget(path) || !file.open(QIODevice::WriteOnly)) return WriteResult::kNotOpened;
  const auto size = static_cast<qint64>(bytes.size());
  const bool written = file.write(reinterpret_cast<const char*>(bytes.data()), size) == size;
  // Flushed first: commit() ignores a failure to write the rest of its buffer to a full disk.
  return written && file.flush() && file.commit() ? WriteResult::kWritten : WriteResult::kNotWritten;
}

bool ReplaceFile(const QString& from, const QString& to) {
  if (!IsWritableTarget(to)) return false;
  std::error_code error;
  std::filesystem::rename(SystemPath(from), SystemPath(to), error);
  return !error;
}

QString SanitizedFileName(const QString& name) {
  QString file_name = name.trimmed();
  std::replace_if(
      file_name.begin(), file_name.end(), [](QChar c) { return !IsAllowed(c); }, QLatin1Char('_'));
  if (file_name.startsWith(QLatin1Char('.'))) {
    file_name[0] = QLatin1Char('_');  // otherwise it would be a hidden file
  }
  while (QFile::encodeName(file_name).size() > kMaxNameBytes) {
    file_name.chop(file_name.size() > 1 && file_name.at(file_name.size() - 1).isLowSurrogate() ? 2 : 1);
  }
  return file_name;
}

}  // namespace varkel
