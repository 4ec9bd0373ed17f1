#include "app/src/log_file.h"

#include <QDir>

namespace {

constexpr int kMostCopies = 16;

}  // namespace

LogFile::LogFile(const QString& folder) {
  if (!QDir().mkpath(folder)) return;
  for (int copy = 1; copy <= kMostCopies; ++copy) {
    const QString name = copy == 1 ? QString("varkel.log") : QString("varkel-%1.log").arg(copy);
    const QString path = QDir(folder).filePath(name);
    auto claim = std::make_unique<QLockFile>(path + ".lock");
    claim->setStaleLockTime(0);  // however long this copy runs
    if (claim->tryLock()) {
      claim_ = std::move(claim);
      path_ = path;
      return;
    }
    if (claim->error() != QLockFile::LockFailedError) return;
  }
}
