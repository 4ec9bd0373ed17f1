#pragma once

namespace varkel::sim {

/// Lets a conversation restart the sensor around its reply, so that a client that has received the reply no
/// longer finds an open port. Thread-safe.
class RestartSwitch {
 public:
  RestartSwitch() = default;
  virtual ~RestartSwitch() = default;
  RestartSwitch(const RestartSwitch&) = delete;
  RestartSwitch& operator=(const RestartSwitch&) = delete;

  /// Returns once new connections are refused. False if a restart is already in progress.
  virtual bool Begin() = 0;
  /// Call after a successful Begin, once the reply is sent: the sensor disconnects all clients and goes down.
  virtual void Finish() = 0;
};

}  // namespace varkel::sim
