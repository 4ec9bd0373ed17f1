#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Platform/src/socket.h"
#include "simulator/src/simulated_sensor.h"

namespace varkel::sim {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::chrono::seconds kPatience{10};

/// Waits for the condition; false when the patience ended.
inline bool Eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// A connected client, or null.
inline std::unique_ptr<quarn::lidar::KtcClient> Connect(const SimulatedSensor& sensor, std::uint8_t version,
                                                        std::uint32_t patience_ms = 400) {
  auto client = std::make_unique<quarn::lidar::KtcClient>("127.0.0.1", sensor.port(), false, 0, version, "",
                                                          "", "", patience_ms, patience_ms, 5.0F, 0);
  return Eventually([&] { return client->IsOpen(); }) ? std::move(client) : nullptr;
}

/// The path of a model's real table.
inline std::string ModelTable(const std::string& model) {
  return VARKEL_TABLES "/" + model + ".csv";
}

/// A table of a few rows in a file that goes with the object. Columns of a row: GroupID, Index, Get, Set,
/// SetIndex, VarName, VarType, DefaultValue, VarLen, Coefficient, FunctionModule, TimerUpdate,
/// GetCmdPayload.
class TestTable {
 public:
  explicit TestTable(const std::string& rows) {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    path_ = std::filesystem::path(testing::TempDir()) / (std::string("sim_") + test->name() + ".csv");
    std::ofstream(path_, std::ios::binary)
        << "GroupID,Index,Get,Set,SetIndex,VarName,VarType,DefaultValue,VarLen,Coefficient,FunctionModule,"
           "TimerUpdate,GetCmdPayload,Permission,Options,Unit,OptionDescription,SetCoefficient\n"
        << rows;
  }
  ~TestTable() { std::filesystem::remove(path_); }
  TestTable(const TestTable&) = delete;
  TestTable& operator=(const TestTable&) = delete;

  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

/// A connection without a client's manners.
class RawConnection {
 public:
  explicit RawConnection(std::uint16_t port)
      : connected_(quarn::platform::ConnectSocket(socket_, "127.0.0.1", port) == 0) {}
  ~RawConnection() { quarn::platform::CloseSocket(socket_); }
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  bool connected() const { return connected_; }
  bool Send(const Bytes& bytes) const {
    return connected_ && quarn::platform::SendBytes(socket_, bytes, 0) == static_cast<int>(bytes.size());
  }
  /// All bytes until the sensor closes.
  Bytes ReceiveToEnd() const {
    quarn::platform::SetSocketReceiveTimeout(socket_, 10'000);
    Bytes all;
    Bytes block(256);
    for (int size = 0; (size = quarn::platform::ReceiveBytes(socket_, block, 0)) > 0;) {
      all.insert(all.end(), block.begin(), block.begin() + size);
    }
    return all;
  }

 private:
  const quarn::platform::SocketHandle socket_ = quarn::platform::CreateTcpSocket();
  const bool connected_;
};

}  // namespace varkel::sim
