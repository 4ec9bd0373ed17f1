#include "VarkelCore/src/lidar_connection.h"

#include <chrono>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "VarkelCore/src/ktc_connect.h"
#include "VarkelCore/src/worker_threads.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

using quarn::lidar::KtcClient;

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
  AttemptTcp("VarkelManager::Init", stop, report_, connecting_, [&] {
    const auto client = OpenClient(stop, settings);
    if (stop.stop_requested()) {
      connecting_ = false;
      return;
    }
    if (!client->IsOpen()) throw std::runtime_error("TCP connection failed.");
    InstallByteLog(*client);
    if (!Answers(*client)) {
      std::cout << "DEBUG: heckLidarConnection() == false\n" << std::flush;
      throw std::runtime_error("Lidar has No KTC reply.");
    }
    Begin(client);
    report_.Log("Lidar connected", "INFO");
    connecting_ = false;  // whoever hears of the connection finds the attempt ended
    events_.connected();
  });
}

bool LidarConnection::CheckLidarConnection() {
  const auto current = client();
  return current && current->IsOpen() && Answers(*current);
}

void LidarConnection::Interrupt() {
  std::shared_ptr<KtcClient> current;
  {
    const std::lock_guard lock(mutex_);
    connected_ = false;
    interrupted_ = true;
    current = client_;
  }
  if (current) current->Interrupt();
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
  auto client = MakeKtcClient(settings, quarn::lidar::Timeouts().exchange_ms);
  {
    const std::lock_guard lock(mutex_);
    client_ = client;
    interrupted_ = false;
  }
  SleepUnlessStopped(stop, kAcceptTime);
  return client;
}

/// Who ends the connection meanwhile either finds it made, with its refresh running, or prevents it.
void LidarConnection::Begin(const std::shared_ptr<KtcClient>& client) {
  const std::lock_guard lock(mutex_);
  if (interrupted_ || client_ != client) throw std::runtime_error("TCP connection failed.");
  events_.start_refresh();
  connected_ = true;
}

bool LidarConnection::Answers(KtcClient& client) {
  const ByteLog::Quiet quiet(byte_log_);
  return AnswersKtc(client);
}

void LidarConnection::InstallByteLog(KtcClient& client) {
  client.SetLogCallback([this](const std::string& line) { report_.Bytes(line); },
                        [this] { return byte_log_.IsWanted(); });
}

}  // namespace varkel
