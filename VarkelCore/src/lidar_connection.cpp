#include "VarkelCore/src/lidar_connection.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "VarkelCore/src/worker_threads.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

using quarn::lidar::KtcClient;

constexpr std::uint32_t kPlainTcp = 0;
constexpr std::uint8_t kProtocolVersion = 1;
constexpr std::uint32_t kExchangeTimeoutMs = 4000;
constexpr float kConnectTimeoutS = 0.0F;  // one try
/// A sensor in the same network accepts within this time; there is no second chance.
constexpr std::chrono::milliseconds kAcceptTime{200};
constexpr std::uint8_t kProbeCommands[] = {7, 8};

}  // namespace

LidarConnection::LidarConnection(UserReport& report, Events events)
    : report_(report), events_(std::move(events)) {}

LidarConnection::~LidarConnection() {
  Interrupt();
}

void LidarConnection::Init(const std::stop_token& stop, const ConnectionSettings& settings) {
  connecting_ = true;
  Drop();
  connected_ = false;
  std::cout << "VarkelManager::Init"
            << "(): try to connect to lidar with TCP connection.\n"
            << std::flush;
  try {
    const auto client = OpenClient(stop, settings);
    if (stop.stop_requested()) {
      connecting_ = false;
      return;
    }
    if (!client->IsOpen()) throw std::runtime_error("TCP connection failed.");
    InstallByteLog(*client);
    if (!Probe(*client)) {
      std::cout << "DEBUG: heckLidarConnection() == false\n" << std::flush;
      throw std::runtime_error("Lidar has No KTC reply.");
    }
    events_.start_refresh();
    connected_ = true;
    report_.Log("Lidar connected", "INFO");
    events_.connected();
    connecting_ = false;
  } catch (const std::exception& error) {
    Fail(stop.stop_requested() ? std::string() : "Connection Error: " + std::string(error.what()));
  } catch (...) {
    Fail("Connection Error: Unknown");
  }
}

bool LidarConnection::CheckLidarConnection() {
  const auto current = client();
  return current && current->IsOpen() && Probe(*current);
}

void LidarConnection::Interrupt() {
  connected_ = false;
  if (const auto current = client()) current->Interrupt();
}

void LidarConnection::Drop() {
  std::shared_ptr<KtcClient> leaving;  // its thread is joined when the lock is free again
  const std::lock_guard lock(mutex_);
  leaving.swap(client_);
}

std::shared_ptr<KtcClient> LidarConnection::client() const {
  const std::lock_guard lock(mutex_);
  return client_;
}

std::shared_ptr<KtcClient> LidarConnection::usable_client() const {
  auto current = client();
  return connected_ && current && current->IsOpen() ? current : nullptr;
}

std::shared_ptr<KtcClient> LidarConnection::OpenClient(const std::stop_token& stop,
                                                       const ConnectionSettings& settings) {
  const auto port = static_cast<std::uint16_t>(quarn::lidar::TextToInt(settings.port));
  auto client =
      std::make_shared<KtcClient>(settings.ip_address, port, false, kPlainTcp, kProtocolVersion, "", "", "",
                                  kExchangeTimeoutMs, kExchangeTimeoutMs, kConnectTimeoutS, std::uint16_t{0});
  {
    const std::lock_guard lock(mutex_);
    client_ = client;
  }
  SleepUnlessStopped(stop, kAcceptTime);
  return client;
}

bool LidarConnection::Probe(KtcClient& client) {
  const Quiet quiet(*this);
  const std::vector<std::uint8_t> no_payload;
  std::vector<std::uint8_t> reply;
  bool answered = false;
  for (const std::uint8_t command : kProbeCommands) {
    answered = answered || client.QueryCommand(no_payload, reply, command, false) == 0;
  }
  return answered;
}

void LidarConnection::InstallByteLog(KtcClient& client) {
  client.SetLogCallback([this](const std::string& line) { report_.Bytes(line); },
                        [this] { return log_bytes_ && quiet_ == 0; });
}

/// Without a reason the attempt was given up by the user.
void LidarConnection::Fail(const std::string& reason) {
  if (!reason.empty()) {
    std::cout << "VarkelManager::Init"
              << "(): init lidar error\n"
              << std::flush;
    report_.Error("Connection Failed. Please check your network settings.");
    report_.Log(reason, "ERROR");
  }
  connecting_ = false;
}

}  // namespace varkel
