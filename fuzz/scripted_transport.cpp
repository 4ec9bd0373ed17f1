#include "fuzz/scripted_transport.h"

#include <array>
#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include "libquarn/KtcClient/src/transport_factory.h"

namespace fuzz {
namespace {

class ScriptedTransport : public quarn::lidar::ClientBase {
 public:
  bool Open(const std::string& /*ip*/, std::uint16_t /*port*/, bool /*auto_receive*/, const char* /*cert*/,
            const char* /*private_key*/, const char* /*ca*/) override {
    return open_ = true;
  }
  bool TryOpen(std::uint16_t /*local_port*/, const std::string& ip, std::uint16_t port, bool auto_receive,
               const char* cert, const char* private_key, const char* ca,
               std::uint32_t /*timeout_s*/) override {
    return Open(ip, port, auto_receive, cert, private_key, ca);
  }
  void Close() override { open_ = false; }
  bool IsOpened() const override { return open_; }
  int Send(const std::uint8_t* data, std::uint16_t length, int /*flags*/) override {
    return Script().send ? Script().send({data, length}) : -1;
  }
  int Receive(std::uint8_t* buffer, std::uint32_t length, int /*flags*/) override {
    return Script().receive ? Script().receive({buffer, length}) : -1;
  }
  bool SetReceiveTimeout(std::uint32_t /*receive_ms*/) override { return true; }
  int SetTimeout(std::uint32_t /*receive_ms*/, std::uint32_t /*send_ms*/) override { return 0; }
  void SetReceiveBufferSize(const std::uint32_t& /*size*/) override {}
  void Interrupt() override { open_ = false; }

 private:
  std::atomic<bool> open_ = false;
};

std::shared_ptr<quarn::lidar::KtcClient> Connect(std::uint8_t version) {
  auto client = std::make_shared<quarn::lidar::KtcClient>("scripted", std::uint16_t{1}, false,
                                                          quarn::lidar::kPlainTcpClient, version, "", "", "",
                                                          0U, 0U, 0.0F, std::uint16_t{0});
  while (!client->IsOpen()) std::this_thread::yield();
  return client;
}

}  // namespace

TransportScript& Script() {
  static TransportScript script;
  return script;
}

void AnswerWith(std::function<Vector(Bytes request)> answer, std::size_t block) {
  const auto waiting = std::make_shared<Vector>();
  Script().send = [waiting, answer = std::move(answer)](Bytes request) {
    *waiting = answer(request);
    return static_cast<int>(request.size());
  };
  Script().receive = [waiting, block](std::span<std::uint8_t> buffer) {
    const Bytes piece = Bytes(*waiting).first(std::min({buffer.size(), block, waiting->size()}));
    std::copy(piece.begin(), piece.end(), buffer.begin());
    const auto count = static_cast<int>(piece.size());
    waiting->erase(waiting->begin(), waiting->begin() + count);
    return count;
  };
}

const std::shared_ptr<quarn::lidar::KtcClient>& OpenClient(std::uint8_t version) {
  static const std::array<std::shared_ptr<quarn::lidar::KtcClient>, 2> clients = {Connect(1), Connect(2)};
  return clients.at(version - 1U);
}

}  // namespace fuzz

namespace quarn::lidar {

// Replaces the library's own.
std::shared_ptr<ClientBase> CreateTransport(std::uint32_t /*client_type*/) {
  return std::make_shared<fuzz::ScriptedTransport>();
}

}  // namespace quarn::lidar
