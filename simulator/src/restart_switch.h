#pragma once

namespace varkel::sim {

/// How a conversation restarts the sensor around its reply, so that a client that has the reply finds no open
/// port any more. Thread-safe.
class RestartSwitch {
 public:
  RestartSwitch() = default;
  virtual ~RestartSwitch() = default;
  RestartSwitch(const RestartSwitch&) = delete;
  RestartSwitch& operator=(const RestartSwitch&) = delete;

  /// Returns when new connections are refused. False when a restart is under way already.
  virtual bool Begin() = 0;
  /// After a Begin that was true, with the reply out: the sensor disconnects everybody and goes down.
  virtual void Finish() = 0;
};

}  // namespace varkel::sim
