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

  /// The defaults, with those that the file holds replaced. A value of a wrong type reads as "" or 0. `fault`
  /// becomes a sentence when something that can't be a settings file stands there (no regular file, larger
  /// than 1 MiB, not readable); it is not opened then, as that could take long or never end.
  ConnectionSettings Load(std::string* fault = nullptr) const;
  /// Writes all but the UDP port, which only the host viewer or a person changes. Empty, or the sentence that
  /// tells why it failed; whatever happens, the file's old content stays or the new one is there as a whole.
  std::string Save(const ConnectionSettings& settings) const;

 private:
  QString path_;
};

}  // namespace varkel
