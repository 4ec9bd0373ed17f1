#include "VarkelCore/src/session/connection_settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QMap>
#include <QSettings>
#include <QStandardPaths>
#include <QThread>
#include <QVariant>
#include <utility>
#include <vector>

#include "VarkelCore/src/tasks/atomic_file.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

constexpr int kLockTimeMs = 500;   // the window waits
constexpr int kSaveAttempts = 10;  // a second: waiting is better than losing a setting
constexpr int kSaveAttemptMs = 100;
constexpr int kProtectedPauseMs = 10;
constexpr qint64 kLargestFile = qint64{1} << 20;  // the six keys take a few hundred bytes

/// The lock that QSettings takes when it writes, in the host viewer too.
QString LockPath(const QString& path) {
  return path + QStringLiteral(".lock");
}

bool AcquireForSaving(QLockFile& lock) {
  for (int attempt = 0; attempt < kSaveAttempts; ++attempt) {
    if (lock.tryLock(kSaveAttemptMs)) return true;
    // On Windows the lock also seems protected for a moment after another program has removed it. A folder
    // that really is protected must not hold up the window, so these pauses are short.
    if (lock.error() != QLockFile::LockFailedError) QThread::msleep(kProtectedPauseMs);
  }
  return false;
}

/// Why the settings can't be read from or written to `path`; empty if they can.
QString Obstacle(const QString& path) {
  const QFileInfo info(path);
  if (!IsWritableTarget(path)) return QStringLiteral("it is not a regular file");
  if (!info.exists()) return {};
  if (info.size() > kLargestFile) return QStringLiteral("it has %1 bytes").arg(info.size());
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString() : file.errorString();
}

std::string Sentence(const char* beginning, const QString& path, const QString& why) {
  return beginning + path.toStdString() + ": " + why.toStdString() + '.';
}

void ReadText(const QSettings& file, const QString& key, std::string& text) {
  if (file.contains(key)) text = file.value(key).toString().toStdString();
}

template <typename Number>
void ReadNumber(const QSettings& file, const QString& key, Number& number) {
  if (file.contains(key)) number = static_cast<Number>(file.value(key).toInt());
}

using Values = QMap<QString, QVariant>;

Values AllValues(const QSettings& file) {
  Values values;
  for (const QString& key : file.allKeys()) values.insert(key, file.value(key));
  return values;
}

/// Writes the file's content with the new settings to a file next to it and returns its path, empty if it
/// can't be written. QSettings reports success even on a full disk, so the draft is read back, under another
/// name because QSettings caches the values of the first one.
QString WriteDraft(const ConnectionSettings& settings, const QString& path) {
  const QString unproven = path + QStringLiteral(".new");
  QString draft = path + QStringLiteral(".proven");
  QFile old(path);
  const QByteArray content = old.open(QIODevice::ReadOnly) ? old.readAll() : QByteArray();
  const std::vector<std::uint8_t> bytes(content.begin(), content.end());
  if (WriteAtomically(unproven, bytes) != WriteResult::kWritten) return {};
  Values values;
  {
    QSettings file(unproven, QSettings::IniFormat);
    file.setValue(QStringLiteral("device_ip_address"), QString::fromStdString(settings.ip_address));
    file.setValue(QStringLiteral("ktc_port"), QString::fromStdString(settings.port));
    file.setValue(QStringLiteral("rs485_com"), QString::fromStdString(settings.serial_port_485));
    file.setValue(QStringLiteral("rs232_com"), QString::fromStdString(settings.serial_port_232));
    file.setValue(QStringLiteral("point_cloud_baudrate"), QString::number(settings.baud_rate));
    file.sync();
    values = AllValues(file);
  }
  if (ReplaceFile(unproven, draft) && AllValues(QSettings(draft, QSettings::IniFormat)) == values) {
    return draft;
  }
  QFile::remove(unproven);
  QFile::remove(draft);
  return {};
}

}  // namespace

std::uint16_t UdpPortOf(const std::string& text) {
  return static_cast<std::uint16_t>(quarn::lidar::TextToInt(text));
}

SettingsFile::SettingsFile()
    : SettingsFile(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                   QStringLiteral("/VelmoraDataFiles/RecvSettings.ini")) {}

SettingsFile::SettingsFile(QString path) : path_(std::move(path)) {}

ConnectionSettings SettingsFile::Load(std::string* fault) const {
  ConnectionSettings settings;
  // Another copy of the tool may be replacing the file. Without the lock it is read all the same.
  QLockFile lock(LockPath(path_));
  lock.tryLock(kLockTimeMs);
  if (const QString obstacle = Obstacle(path_); !obstacle.isEmpty()) {
    if (fault != nullptr) {
      *fault = Sentence("The defaults are used instead of the settings in ", path_, obstacle);
    }
    return settings;
  }
  const QSettings file(path_, QSettings::IniFormat);
  ReadText(file, QStringLiteral("device_ip_address"), settings.ip_address);
  ReadText(file, QStringLiteral("ktc_port"), settings.port);
  ReadText(file, QStringLiteral("rs485_com"), settings.serial_port_485);
  ReadText(file, QStringLiteral("rs232_com"), settings.serial_port_232);
  ReadNumber(file, QStringLiteral("point_cloud_baudrate"), settings.baud_rate);
  ReadNumber(file, QStringLiteral("udp_port"), settings.udp_port);
  return settings;
}

std::string SettingsFile::Save(const ConnectionSettings& settings) const {
  const auto fault = [this](const QString& why) {
    return Sentence("The connection settings can't be saved to ", path_, why);
  };
  if (const QString obstacle = Obstacle(path_); !obstacle.isEmpty()) return fault(obstacle);
  const QFileInfo old(path_);
  const QString target = old.exists() ? old.canonicalFilePath() : path_;  // a link is kept
  QDir().mkpath(old.path());
  QLockFile lock(LockPath(path_));
  if (!AcquireForSaving(lock)) return fault(QStringLiteral("it is in use or protected"));
  const QString draft = WriteDraft(settings, target);
  if (old.exists()) QFile::setPermissions(draft, old.permissions());
  if (!draft.isEmpty() && ReplaceFile(draft, target)) return {};
  QFile::remove(draft);
  return fault(QStringLiteral("the disk is full, or it is in use or protected"));
}

}  // namespace varkel
