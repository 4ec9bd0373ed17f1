#pragma once

#include <QString>
#include <cstdint>
#include <string>

namespace varkel {

/// How to reach the sensor. Texts are what the user typed; they are judged when connecting.
struct ConnectionSettings {
  std::string ip_address = "192.168.1.201";
  std::string port = "9347";
  std::string serial_port_485 = "/dev/ttyUSB0";
  std::string serial_port_232 = "/dev/ttyUSB1";
  int baud_rate = 3000000;
  std::uint16_t udp_port = 2368;
};

/// The settings file, an INI file shared with the host viewer: the user's documents folder +
/// "/VelmoraDataFiles/RecvSettings.ini".
class SettingsFile {
 public:
  SettingsFile();
  explicit SettingsFile(QString path);

  const QString& path() const { return path_; }

  /// The values in the file; the defaults for keys it does not have. A value of a wrong type reads as "" or
  /// 0. `fault` is set to a sentence if there is something else in its place (no regular file, larger than 1
  /// MiB, not readable); it is not opened then, because that could take long or never end.
  ConnectionSettings Load(std::string* fault = nullptr) const;
  /// Writes all but the UDP port, which only the host viewer or a person changes. Returns the empty text,
  /// or a sentence that says why it failed. The file has either its old or all of its new content, whatever
  /// happens.
  std::string Save(const ConnectionSettings& settings) const;

 private:
  QString path_;
};

}  // namespace varkel
