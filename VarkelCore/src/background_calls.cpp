#include "VarkelCore/src/background_calls.h"

namespace varkel {

const std::map<QString, BackgroundCall>& BackgroundCalls() {
  static const auto done = [](auto&& call) {
    call();
    return QVariant(true);
  };
  static const std::map<QString, BackgroundCall> calls = {
      {QStringLiteral("ZeltoSetStandby"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetStandby(a.value(0).toInt()); }); }},
      {QStringLiteral("ZeltoSetSpinRate"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetSpinRate(a.value(0).toInt()); }); }},
      {QStringLiteral("ZeltoSetReturnMode"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetReturnMode(a.value(0).toInt()); }); }},
      {QStringLiteral("ZeltoSetBaudRateFromUI"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetBaudRateFromUI(a.value(0).toString()); }); }},
      {QStringLiteral("MarvoSetIMURange"),
       [](auto& m, auto& a) {
         return done([&] { m.MarvoSetIMURange(a.value(0).toInt(), a.value(1).toInt()); });
       }},
      {QStringLiteral("ZeltoGetCorrection"),
       [](auto& m, auto& a) { return QVariant(m.ZeltoGetCorrection(a.value(0).toString())); }},
      {QStringLiteral("ZeltoGetLidarFunctionSafety"),
       [](auto& m, auto&) { return QVariant(m.ZeltoGetLidarFunctionSafety()); }},
      {QStringLiteral("ZeltoGetBaudRate"), [](auto& m, auto&) { return QVariant(m.ZeltoGetBaudRate()); }},
      {QStringLiteral("ZeltoGetDestinationConfig"),
       [](auto& m, auto& a) { return QVariant(m.ZeltoGetDestinationConfig(a.value(0).toBool())); }},
      {QStringLiteral("ZeltoSetDestinationIPandPort"), [](auto& m, auto& a) {
         return QVariant(m.ZeltoSetDestinationIPandPort(a.value(0).toString(), a.value(1).toInt()));
       }}};
  return calls;
}

}  // namespace varkel
