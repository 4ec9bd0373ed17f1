#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

namespace varkel::sim {

/// A request from a client.
struct ReceivedRequest {
  std::uint8_t version = 1;           ///< frame version, 1 or 2
  std::uint8_t command = 0;           ///< KTC command byte; 0xFF for four-byte commands
  std::vector<std::uint8_t> payload;  ///< whole payload, with the four-byte code of a 0xFF command
};

/// The outcome of an exchange, for watchers.
struct Exchange {
  ReceivedRequest request;
  std::uint8_t return_code = 0;
  std::size_t reply_size = 0;  ///< payload bytes of the reply without faults
};

/// The clients' requests, oldest first. All operations are thread-safe. The newest kCapacity requests are
/// kept, so that a sensor polled for days does not fill the memory; Count counts all of them.
class ExchangeLog {
 public:
  static constexpr std::size_t kCapacity = 4096;

  void Add(ReceivedRequest request);
  void Clear();

  std::vector<ReceivedRequest> All() const;
  std::vector<ReceivedRequest> Of(std::uint8_t command) const;
  std::size_t Count() const;

  /// Waits until `count` of the kept requests have `command`. False on time-out.
  bool WaitFor(std::uint8_t command, std::size_t count, std::chrono::milliseconds timeout) const;

 private:
  std::size_t CountLocked(std::uint8_t command) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable added_;
  std::deque<ReceivedRequest> requests_;  // guarded by mutex_
  std::size_t total_ = 0;                 // guarded by mutex_
};

}  // namespace varkel::sim
