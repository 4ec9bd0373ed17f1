#include "VarkelCore/src/tasks/atomic_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

namespace varkel {

namespace {

// File systems allow 255 bytes or characters; the time stamp, the extension and the temporary file's random
// letters need about 40.
constexpr int kMaxNameBytes = 180;

#ifdef Q_OS_WIN
// A file can't be replaced while another program, a virus scanner perhaps or a second copy of this one, reads
// it.
constexpr int kReplaceAttempts = 20;
#else
constexpr int kReplaceAttempts = 1;
#endif
constexpr std::chrono::milliseconds kReplacePause{10};

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
  for (int attempt = 1;; ++attempt) {
    std::error_code error;
    std::filesystem::rename(SystemPath(from), SystemPath(to), error);
    if (!error || attempt == kReplaceAttempts) return !error;
    std::this_thread::sleep_for(kReplacePause);
  }
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
