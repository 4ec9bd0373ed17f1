#include "VarkelCore/src/connection_settings.h"

#include <QSettings>
#include <QStandardPaths>
#include <QVariant>
#include <utility>

namespace varkel {

namespace {

void ReadText(const QSettings& file, const QString& key, std::string& text) {
  if (file.contains(key)) text = file.value(key).toString().toStdString();
}

template <typename Number>
void ReadNumber(const QSettings& file, const QString& key, Number& number) {
  if (file.contains(key)) number = static_cast<Number>(file.value(key).toInt());
}

}  // namespace

SettingsFile::SettingsFile()
    : SettingsFile(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                   QStringLiteral("/VelmoraDataFiles/RecvSettings.ini")) {}

SettingsFile::SettingsFile(QString path) : path_(std::move(path)) {}

ConnectionSettings SettingsFile::Load() const {
  const QSettings file(path_, QSettings::IniFormat);
  ConnectionSettings settings;
  ReadText(file, QStringLiteral("device_ip_address"), settings.ip_address);
  ReadText(file, QStringLiteral("ktc_port"), settings.port);
  ReadText(file, QStringLiteral("rs485_com"), settings.serial_port_485);
  ReadText(file, QStringLiteral("rs232_com"), settings.serial_port_232);
  ReadNumber(file, QStringLiteral("point_cloud_baudrate"), settings.baud_rate);
  ReadNumber(file, QStringLiteral("udp_port"), settings.udp_port);
  return settings;
}

void SettingsFile::Save(const ConnectionSettings& settings) const {
  QSettings file(path_, QSettings::IniFormat);
  file.setValue(QStringLiteral("device_ip_address"), QString::fromStdString(settings.ip_address));
  file.setValue(QStringLiteral("ktc_port"), QString::fromStdString(settings.port));
  file.setValue(QStringLiteral("rs485_com"), QString::fromStdString(settings.serial_port_485));
  file.setValue(QStringLiteral("rs232_com"), QString::fromStdString(settings.serial_port_232));
  file.setValue(QStringLiteral("point_cloud_baudrate"), QString::number(settings.baud_rate));
}

}  // namespace varkel
