#include "VarkelCore/src/small_sensor/background_functions.h"

#include <string>
#include <utility>
#include <vector>

namespace varkel {

namespace {

using Texts = std::vector<std::string>;

QStringList TextList(const FunctionResult<Texts>& texts) {
  QStringList list;
  for (const std::string& text : texts.value_or(Texts())) list.append(QString::fromStdString(text));
  return list;
}

template <typename Value>
QString FaultText(const FunctionResult<Value>& result) {
  return result ? QString() : QString::fromStdString(result.error().text);
}

}  // namespace

void BackgroundFunctions::setStandby(int standby) {
  Set("setStandby", [this, standby] { return sensor_.SetStandby(standby); });
}

void BackgroundFunctions::setSpinRate(int rate) {
  Set("setSpinRate", [this, rate] { return sensor_.SetSpinRate(rate); });
}

void BackgroundFunctions::setReturnMode(int mode) {
  Set("setReturnMode", [this, mode] { return sensor_.SetReturnMode(mode); });
}

void BackgroundFunctions::setBaudRate(const QString& text) {
  Set("setBaudRate", [this, text = text.toStdString()] { return sensor_.SetBaudRate(text); });
}

void BackgroundFunctions::setDestination(const QString& ip, int port) {
  Set("setDestination",
      [this, ip = ip.toStdString(), port] { return sensor_.SetDestinationIPandPort(ip, port); });
}

void BackgroundFunctions::setImuRange(int angularRangeIndex, int accelRangeIndex) {
  Set("setImuRange", [=, this] { return sensor_.SetImuRange(angularRangeIndex, accelRangeIndex); });
}

void BackgroundFunctions::readCorrection(const QString& path) {
  Ask<void>(
      "readCorrection", corrections_,
      [this, path = path.toStdString()] { return sensor_.GetCorrection(path); },
      [this](const FunctionResult<void>& result) { emit correctionRead(result ? 0 : result.error().code); });
}

void BackgroundFunctions::readSafety() {
  Ask<Texts>(
      "readSafety", safeties_, [this] { return sensor_.GetLidarFunctionSafety(); },
      [this](const FunctionResult<Texts>& texts) { emit safetyRead(TextList(texts)); });
}

void BackgroundFunctions::readBaudRate() {
  Ask<std::string>(
      "readBaudRate", baud_rates_, [this] { return sensor_.GetBaudRate(); },
      [this](const FunctionResult<std::string>& rate) {
        emit baudRateRead(QString::fromStdString(rate.value_or("")));
      });
}

void BackgroundFunctions::readDestination(bool silent) {
  Ask<Texts>(
      "readDestination", destinations_, [this, silent] { return sensor_.GetDestinationConfig(silent); },
      [this](const FunctionResult<Texts>& texts) { emit destinationRead(TextList(texts)); });
}

void BackgroundFunctions::Set(const char* name, std::function<FunctionResult<void>()> call) {
  work_.Start(std::move(call),
              [this, name](const FunctionResult<void>& result) { emit finished(name, FaultText(result)); });
}

template <typename Value>
void BackgroundFunctions::Ask(const char* name, int& pending, std::function<FunctionResult<Value>()> call,
                              std::function<void(const FunctionResult<Value>&)> answer) {
  ++pending;
  work_.Start(std::move(call),
              [this, name, answer = std::move(answer), &pending](const FunctionResult<Value>& result) {
                if (--pending > 0) return;
                answer(result);
                emit finished(name, FaultText(result));
              });
}

}  // namespace varkel
