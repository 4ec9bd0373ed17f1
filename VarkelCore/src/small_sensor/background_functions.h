#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

#include "VarkelCore/src/small_sensor/small_sensor.h"
#include "VarkelCore/src/tasks/background_work.h"

namespace varkel {

/// The functions of a small sensor for its page, without blocking it: each runs on a worker, and failures are
/// reported as notices. If calls of one function overlap, only the last one's answer is delivered. Lives on
/// the window's thread.
class BackgroundFunctions : public QObject {
  Q_OBJECT

 public:
  /// Both outlive this object, and the workers are joined before it is destroyed.
  BackgroundFunctions(SmallSensor& sensor, BackgroundWork& work) : sensor_(sensor), work_(work) {}

  Q_INVOKABLE void setStandby(int standby);  ///< any number except 0 means standby
  Q_INVOKABLE void setSpinRate(int rate);    ///< its low byte
  Q_INVOKABLE void setReturnMode(int mode);  ///< 0 strongest, else last
  Q_INVOKABLE void setBaudRate(const QString& text);
  Q_INVOKABLE void setDestination(const QString& ip, int port);
  Q_INVOKABLE void setImuRange(int angularRangeIndex, int accelRangeIndex);  ///< indices of the page's lists

  Q_INVOKABLE void readCorrection(const QString& path);  ///< correctionRead follows
  Q_INVOKABLE void readSafety();                         ///< safetyRead follows
  Q_INVOKABLE void readBaudRate();                       ///< baudRateRead follows
  /// destinationRead follows; `silent` keeps the exchange out of the byte log.
  Q_INVOKABLE void readDestination(bool silent);

 signals:
  /// Emitted after every call and its answer: the call's name ("setStandby") and why it failed, empty on
  /// success.
  void finished(QString call, QString fault);
  void correctionRead(int code);                ///< 0 if the file was written
  void safetyRead(QStringList texts);           ///< the state, then fault codes; empty after a failure
  void baudRateRead(QString text);              ///< decimal; empty after a failure
  void destinationRead(QStringList ipAndPort);  ///< empty after a failure

 private:
  void Set(const char* name, std::function<FunctionResult<void>()> call);
  template <typename Value>
  void Ask(const char* name, int& pending, std::function<FunctionResult<Value>()> call,
           std::function<void(const FunctionResult<Value>&)> answer);

  SmallSensor& sensor_;
  BackgroundWork& work_;
  int corrections_ = 0;
  int safeties_ = 0;
  int baud_rates_ = 0;
  int destinations_ = 0;
};

}  // namespace varkel
