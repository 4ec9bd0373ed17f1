#include "VarkelCore/src/session/recent_addresses.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <cstdint>
#include <vector>

#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel {

namespace {
constexpr qint64 kLargestAddressFile = 4096;
}  // namespace

RecentAddresses::RecentAddresses()
    : RecentAddresses(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) +
                      QStringLiteral("/recent-addresses.txt")) {}

// Read every time: another instance of the tool may have changed the file.
QStringList RecentAddresses::all() const {
  QFile file(path_);
  if (!IsWritableTarget(path_) || !file.open(QIODevice::ReadOnly)) return {};
  QStringList addresses;
  for (const QString& line : QString::fromUtf8(file.read(kLargestAddressFile)).split('\n')) {
    const QString address = line.trimmed();
    if (!address.isEmpty() && !addresses.contains(address)) addresses.append(address);
  }
  return addresses.mid(0, kMaxAddresses);
}

void RecentAddresses::add(const QString& address) {
  QStringList addresses = all();
  addresses.removeAll(address.trimmed());
  addresses.prepend(address.trimmed());
  Keep(addresses.mid(0, kMaxAddresses));
}

void RecentAddresses::remove(const QString& address) {
  QStringList addresses = all();
  addresses.removeAll(address);
  Keep(addresses);
}

// Only a convenience, so a file that can't be written is not reported.
void RecentAddresses::Keep(const QStringList& addresses) {
  const QByteArray text = addresses.join('\n').toUtf8();
  QDir().mkpath(QFileInfo(path_).path());
  WriteAtomically(path_, std::vector<std::uint8_t>(text.begin(), text.end()));
  emit changed();
}

}  // namespace varkel
