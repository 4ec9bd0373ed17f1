#include "VarkelCore/src/tasks/whole_file.h"

#include <QFile>
#include <QSaveFile>
#include <algorithm>
#include <filesystem>
#include <system_error>

namespace varkel {

namespace {

// File systems allow 255 bytes or characters, of which the time stamp, the ending and the temporary file's
// random letters need some 40.
constexpr int kLongestPart = 180;

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

WriteResult WriteWholeFile(const QString& path, std::span<const std::uint8_t> bytes) {
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return WriteResult::kNotOpened;
  const auto size = static_cast<qint64>(bytes.size());
  const bool written = file.write(reinterpret_cast<const char*>(bytes.data()), size) == size;
  // Flushed first: the commit overlooks that the rest of its buffer did not fit the disk.
  return written && file.flush() && file.commit() ? WriteResult::kWritten : WriteResult::kNotWritten;
}

bool MoveOver(const QString& from, const QString& to) {
  std::error_code error;
  std::filesystem::rename(SystemPath(from), SystemPath(to), error);
  return !error;
}

QString FileNamePart(const QString& name) {
  QString part = name.trimmed();
  std::replace_if(
      part.begin(), part.end(), [](QChar c) { return !IsAllowed(c); }, QLatin1Char('_'));
  while (part.startsWith(QLatin1Char('.'))) part[0] = QLatin1Char('_');  // a hidden file would be missed
  while (QFile::encodeName(part).size() > kLongestPart) {
    part.chop(part.size() > 1 && part.at(part.size() - 1).isLowSurrogate() ? 2 : 1);
  }
  return part;
}

}  // namespace varkel
