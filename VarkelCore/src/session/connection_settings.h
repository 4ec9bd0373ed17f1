#pragma once

#include <QString>
#include <cstdint>
#include <string>

namespace varkel {

/// How to reach the sensor. The texts are as typed by the user; they are validated when connecting.
struct ConnectionSettings {
  std::string ip_address = "192.168.1.201";
  std::string port = "9347";
  std::string serial_port_485 = "/dev/ttyUSB0";
  std::string serial_port_232 = "/dev/ttyUSB1";
  int baud_rate = 3000000;
  std::uint16_t udp_port = 2368;
};

/// The UDP port of a decimal text: the number's low 16 bits. Raises the conversion errors of text_number.h.
std::uint16_t UdpPortOf(const std::string& text);

/// The settings file, an INI file shared with the host viewer: the user's documents folder +
/// "/VelmoraDataFiles/RecvSettings.ini".
class SettingsFile {
 public:
  SettingsFile();
  explicit SettingsFile(QString path);

  const QString& path() const { return path_; }

  /// The values in the file, and the defaults for missing keys. A value of the wrong type reads as "" or 0.
  /// If the path is not a readable regular file of at most 1 MiB, `fault` is set to a sentence and the file
  /// is not opened, since reading it could take long or never end.
  ConnectionSettings Load(std::string* fault = nullptr) const;
  /// Writes all settings except the UDP port, which only the host viewer or a person changes. Returns an
  /// empty text, or a sentence saying why it failed. The write is atomic: the file has either its old or its
  /// complete new content. Waits up to a second while another program holds the file's lock.
  std::string Save(const ConnectionSettings& settings) const;

 private:
  QString path_;
};

}  // namespace varkel
