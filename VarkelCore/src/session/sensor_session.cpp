#include "VarkelCore/src/session/sensor_session.h"

#include <utility>

#include "VarkelCore/src/session/ktc_connect.h"
#include "libquarn/Source/src/ktc_serial_client.h"

namespace varkel {

SensorSession::SensorSession(KtcPeer peer, std::shared_ptr<quarn::lidar::KtcClient> client,
                             std::shared_ptr<ByteLog> byte_log, const Activity& activity, Periodic periodic)
    : peer_(peer),
      client_(std::move(client)),
      tunnel_(std::make_shared<quarn::lidar::KtcSerialClient>(client_)),
      byte_log_(std::move(byte_log)),
      activity_(activity),
      periodic_(periodic.period, [this, round = std::move(periodic.round)](const std::stop_token& stop) {
        round(*this, stop);
      }) {}

SensorSession::SensorSession(Lines lines, std::shared_ptr<ByteLog> byte_log, const Activity& activity,
                             Periodic periodic)
    : lines_(std::move(lines)),
      byte_log_(std::move(byte_log)),
      activity_(activity),
      periodic_(periodic.period, [this, round = std::move(periodic.round)](const std::stop_token& stop) {
        round(*this, stop);
      }) {}

SensorSession::~SensorSession() {
  End();
}

void SensorSession::End() {
  stop_.request_stop();
  periodic_
      .RequestStop();  // first, so that the round does not mistake the interruption for a fault of the sensor
  if (client_) client_->Interrupt();
  if (lines_.rs485) lines_.rs485->Close();
  if (lines_.uart) lines_.uart->Close();
  periodic_.Stop();
}

bool SensorSession::is_ktc_open() const {
  return !has_ended() && client_ && client_->IsOpen();
}

bool SensorSession::Answers() {
  if (!client_) return !has_ended() && lines_.rs485->IsOpened() && lines_.uart->IsOpened();
  const ByteLog::Quiet quiet;
  return is_ktc_open() && AnswersKtc(*client_);
}

ExchangeResult SensorSession::QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload,
                                       Logged logged) {
  if (!client_) return tl::unexpected(quarn::lidar::SerialExchange::kNotSent);
  std::optional<ByteLog::Quiet> quiet;
  if (logged == Logged::kNo) quiet.emplace();
  return QueryKtcCommand(*client_, command, payload);
}

}  // namespace varkel
