#include "VarkelCore/src/session/serial_connection.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/session/ktc_connect.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

using quarn::lidar::KtcSerialClient;
using quarn::lidar::SerialClient;
using quarn::lidar::SerialExchange;
using quarn::lidar::SerialSource;

// The rates of a source's two types. Commands go out slowly, data and replies come at the chosen rate.
constexpr std::uint32_t kRs485CommandRate = 115200;
constexpr std::uint32_t kUartCommandRate = 9600;
constexpr std::uint32_t kUartDataRate = 3125000;

constexpr std::uint32_t kExchangeTimeoutMs = 5000;

}  // namespace

SerialConnection::SerialConnection(UserReport& report, Events events)
    : report_(report), events_(std::move(events)) {}

SerialConnection::~SerialConnection() {
  Interrupt();
}

bool SerialConnection::InitSerial(const std::stop_token& stop, const ConnectionSettings& settings) {
  connecting_ = true;
  Drop();
  connected_ = false;
  const auto rs485 = std::make_shared<SerialSource>(settings.serial_port_485, kRs485CommandRate,
                                                    static_cast<std::uint32_t>(settings.baud_rate));
  const auto uart = std::make_shared<SerialSource>(settings.serial_port_232, kUartCommandRate, kUartDataRate);
  rs485->SetReceiveType(SerialSource::kDataType);
  if (!rs485->Open()) {
    return FailLine("Connection Failed. Please check your RS485 serial port.",
                    "Connection Error: RS485 serial open fail");
  }
  uart->SetReceiveType(SerialSource::kCommandType);
  uart->SetAutoReceive(false);
  if (!uart->Open()) {
    rs485->Close();  // ahead of the notice: whoever hears it may connect again at once
    return FailLine("Connection Failed. Please check your UART serial port.",
                    "Connection Error: UART serial open fail");
  }
  const auto client = std::make_shared<SerialClient>(uart, rs485);
  client->SetLogCallback([this](const std::string& line) { report_.Bytes(line); },
                         [this] { return byte_log_.IsWanted(); });
  {
    const std::lock_guard lock(mutex_);
    rs485_ = rs485;
    uart_ = uart;
    lines_ = client;
    interrupted_ = false;
  }
  if (stop.stop_requested()) {
    Interrupt();  // the one that came with the stop may have found no lines yet
    connecting_ = false;
    return false;
  }
  bool stands = false;
  {
    const std::lock_guard lock(mutex_);
    stands = Stands(client.get());
    connected_ = stands;
  }
  if (stands) report_.Log("Lidar connected", "INFO");
  connecting_ = false;
  if (!stands) return false;
  events_.connected();
  const std::lock_guard lock(mutex_);
  if (Stands(client.get())) events_.start_info();
  return true;
}

void SerialConnection::InitKtcForSerial(const std::stop_token& stop, const ConnectionSettings& settings,
                                        const std::string& model_name) {
  connecting_ = true;
  Drop();
  connected_ = false;
  AttemptTcp("VarkelManager::InitKtcForSerial", stop, report_, connecting_, [&] {
    const auto client = OpenClient(stop, settings);
    if (stop.stop_requested()) {
      connecting_ = false;
      return;
    }
    if (!client->IsOpen()) throw std::runtime_error("TCP connection failed.");
    SetLineRate(*client, settings);
    {
      const std::lock_guard lock(mutex_);
      if (!Stands(client.get())) throw std::runtime_error("TCP connection failed.");
      connected_ = true;
      events_.start_info();
    }
    report_.Log("Lidar connected", "INFO");
    if (model_name == kMarvoKtc) events_.read_marvo_versions();
    connecting_ = false;  // whoever hears of the connection finds the attempt ended
    events_.connected();
  });
}

bool SerialConnection::CheckLidarConnection() {
  std::shared_ptr<SerialSource> rs485;
  std::shared_ptr<SerialSource> uart;
  {
    const std::lock_guard lock(mutex_);
    rs485 = rs485_;
    uart = uart_;
  }
  if (rs485 && uart) return rs485->IsOpened() && uart->IsOpened();
  const auto client = ktc_client();
  const ByteLog::Quiet quiet(byte_log_);
  return client && client->IsOpen() && AnswersKtc(*client);
}

void SerialConnection::Interrupt() {
  std::shared_ptr<SerialSource> rs485;
  std::shared_ptr<SerialSource> uart;
  std::shared_ptr<KtcClient> client;
  {
    const std::lock_guard lock(mutex_);
    connected_ = false;
    interrupted_ = true;
    rs485 = rs485_;
    uart = uart_;
    client = ktc_client_;
  }
  if (client) client->Interrupt();
  if (rs485) rs485->Close();
  if (uart) uart->Close();
}

void SerialConnection::Drop() {
  // Their threads are joined when the lock is free again.
  std::shared_ptr<KtcClient> client;
  std::shared_ptr<KtcSerialClient> tunnel;
  std::shared_ptr<SerialSource> rs485;
  std::shared_ptr<SerialSource> uart;
  std::shared_ptr<SerialClient> lines;
  {
    const std::lock_guard lock(mutex_);
    client.swap(ktc_client_);
    tunnel.swap(tunnel_);
    rs485.swap(rs485_);
    uart.swap(uart_);
    lines.swap(lines_);
  }
  // Who still works with them is not to keep the ports from the next attempt.
  if (rs485) rs485->Close();
  if (uart) uart->Close();
}

/// Whether an attempt's client is still the one in use: who ends the connection while it is made must not
/// find it standing afterwards. With mutex_ held.
bool SerialConnection::Stands(const void* mine) const {
  return !interrupted_ && (ktc_client_.get() == mine || lines_.get() == mine);
}

std::shared_ptr<SerialExchange> SerialConnection::KtcExchange() const {
  const std::lock_guard lock(mutex_);
  return tunnel_;
}

std::shared_ptr<SerialExchange> SerialConnection::LineExchange() const {
  const std::lock_guard lock(mutex_);
  return lines_;
}

std::shared_ptr<quarn::lidar::KtcClient> SerialConnection::ktc_client() const {
  const std::lock_guard lock(mutex_);
  return ktc_client_;
}

int SerialConnection::QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload,
                               std::vector<std::uint8_t>& reply, bool silent) {
  const auto client = ktc_client();
  if (!client) return SerialExchange::kNotSent;
  const auto quiet = silent ? std::make_unique<ByteLog::Quiet>(byte_log_) : nullptr;
  auto result = QueryKtcCommand(*client, command, payload);
  if (!result) return result.error();
  reply = std::move(*result);
  return 0;
}

std::shared_ptr<quarn::lidar::KtcClient> SerialConnection::OpenClient(const std::stop_token& stop,
                                                                      const ConnectionSettings& settings) {
  auto client = MakeKtcClient(settings, kExchangeTimeoutMs);
  {
    const std::lock_guard lock(mutex_);
    ktc_client_ = client;
    tunnel_ = std::make_shared<KtcSerialClient>(client);
    interrupted_ = false;
  }
  SleepUnlessStopped(stop, kAcceptTime);
  return client;
}

/// Whether the sensor takes the rate shows later, when it answers or not.
void SerialConnection::SetLineRate(KtcClient& client, const ConnectionSettings& settings) {
  const auto baud_rate = static_cast<std::uint32_t>(settings.baud_rate);
  client.SetSerialFastBaudRate(baud_rate);
  client.SetLogCallback([this](const std::string& line) { report_.Bytes(line); },
                        [this] { return byte_log_.IsWanted(); });
  std::vector<std::uint8_t> reply;
  client.QueryCommand(quarn::lidar::SetBaudRatePayload(baud_rate), reply, quarn::lidar::kKtcExtensionCmd);
}

/// Lines that were opened close with their last owner, the caller.
bool SerialConnection::FailLine(const char* notice, const char* log_line) {
  report_.Error(notice);
  report_.Log(log_line, "ERROR");
  connecting_ = false;
  return false;
}

}  // namespace varkel
