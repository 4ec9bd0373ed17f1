#include "VarkelCore/src/actions/operation_log_files.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QThread>
#include <utility>

#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel {

namespace {

constexpr int kRemovalAttempts = 20;
constexpr unsigned long kRemovalPauseMs = 25;

/// More downloads than this would have to begin in the same second before one finds no free time stamp.
constexpr int kMaxStamps = 60;

}  // namespace

OperationLogFiles::OperationLogFiles(QString folder) : folder_(std::move(folder)) {
  QDateTime time = QDateTime::currentDateTime();
  for (int i = 0; i < kMaxStamps; ++i, time = time.addSecs(1)) {
    stamp_ = QLocale::c().toString(time, QStringLiteral("yyyy_MM_dd_hh_mm_ss"));
    if (Create()) return;
  }
  stamp_.clear();
}

OperationLogFiles::~OperationLogFiles() {
  for (std::size_t part = 0; are_created() && part < kOperationLogParts.size(); ++part) {
    if (QFileInfo(Path(part)).size() == 0) QFile::remove(Path(part));
  }
}

// All or nothing: a file that can't be created exclusively belongs to another download.
bool OperationLogFiles::Create() const {
  QDir().mkpath(folder_);  // every time: a download that ends removes the folder
  for (std::size_t part = 0; part < kOperationLogParts.size(); ++part) {
    QFile file(Path(part));
    if (file.open(QIODevice::NewOnly)) continue;
    while (part > 0) QFile::remove(Path(--part));
    return false;
  }
  return true;
}

bool OperationLogFiles::Write(std::size_t part, std::span<const std::uint8_t> bytes) const {
  return WriteAtomically(Path(part), bytes) == WriteResult::kWritten;
}

void OperationLogFiles::Remove() const {
  for (std::size_t part = 0; part < kOperationLogParts.size(); ++part) QFile::remove(Path(part));
  // Windows keeps a folder in use for a moment after the program that worked in it has ended. A folder that
  // is not empty stays.
  for (int attempt = 0; attempt < kRemovalAttempts && QDir(folder_).isEmpty(); ++attempt) {
    if (QDir().rmdir(folder_)) return;
    QThread::msleep(kRemovalPauseMs);
  }
}

QStringList OperationLogFiles::names() const {
  QStringList names;
  for (const OperationLogPart& part : kOperationLogParts) {
    names.append(QLatin1String(part.file_prefix) + stamp_ + QStringLiteral(".bin"));
  }
  return names;
}

QString OperationLogFiles::Path(std::size_t part) const {
  return folder_ + QLatin1Char('/') + names().at(static_cast<int>(part));
}

}  // namespace varkel
