#include "VarkelCore/src/small_sensor/background_functions.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace varkel {

namespace {

QStringList Texts(const std::vector<std::string>& texts) {
  QStringList list;
  for (const std::string& text : texts) list.append(QString::fromStdString(text));
  return list;
}

}  // namespace

void BackgroundFunctions::setStandby(int standby) {
  Run([this, standby] { sensor_.SetStandby(standby); });
}

void BackgroundFunctions::setSpinRate(int rate) {
  Run([this, rate] { sensor_.SetSpinRate(rate); });
}

void BackgroundFunctions::setReturnMode(int mode) {
  Run([this, mode] { sensor_.SetReturnMode(mode); });
}

void BackgroundFunctions::setBaudRate(const QString& text) {
  Run([this, text = text.toStdString()] { sensor_.SetBaudRate(text); });
}

void BackgroundFunctions::setDestination(const QString& ip, int port) {
  Run([this, ip = ip.toStdString(), port] { sensor_.SetDestinationIPandPort(ip, port); });
}

void BackgroundFunctions::setImuRange(int angularRangeIndex, int accelRangeIndex) {
  Run([=, this] { sensor_.SetImuRange(angularRangeIndex, accelRangeIndex); });
}

void BackgroundFunctions::readCorrection(const QString& path) {
  Ask<int>(
      corrections_, [this, path = path.toStdString()] { return sensor_.GetCorrection(path); },
      &BackgroundFunctions::correctionRead);
}

void BackgroundFunctions::readSafety() {
  Ask<QStringList>(
      safeties_, [this] { return Texts(sensor_.GetLidarFunctionSafety()); },
      &BackgroundFunctions::safetyRead);
}

void BackgroundFunctions::readBaudRate() {
  Ask<QString>(
      baud_rates_, [this] { return QString::fromStdString(sensor_.GetBaudRate()); },
      &BackgroundFunctions::baudRateRead);
}

void BackgroundFunctions::readDestination(bool silent) {
  Ask<QStringList>(
      destinations_, [this, silent] { return Texts(sensor_.GetDestinationConfig(silent)); },
      &BackgroundFunctions::destinationRead);
}

void BackgroundFunctions::Run(std::function<void()> call) {
  work_.Start(std::move(call), [] {});
}

template <typename Answer>
void BackgroundFunctions::Ask(int& pending, std::function<Answer()> call,
                              void (BackgroundFunctions::*answered)(Answer)) {
  ++pending;
  const auto answer = std::make_shared<Answer>();
  work_.Start([answer, call = std::move(call)] { *answer = call(); },
              [this, answer, answered, &pending] {
                if (--pending == 0) emit(this->*answered)(*answer);
              });
}

}  // namespace varkel
