#include "VarkelCore/src/upgrade/sensor_return.h"

#include <optional>
#include <utility>

namespace varkel {

namespace {

/// No background reading while a sensor is being identified.
const SensorSession::Periodic kNothing{std::chrono::hours(1), [](SensorSession&, const std::stop_token&) {}};

std::string Seconds(std::chrono::milliseconds time) {
  return std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) + " s";
}

}  // namespace

SensorReturn::SensorReturn(WorkerThreads& workers, EventQueue& events, SessionContext context,
                           std::function<void()> connect, Times times)
    : workers_(workers), events_(events), context_(context), connect_(std::move(connect)), times_(times) {}

void SensorReturn::Await(const ConnectionSettings& settings, const Catalogue& catalogue,
                         const SensorIdentity& before) {
  Cancel();
  wait_ = std::make_shared<std::stop_source>();
  text_ = QStringLiteral("Waiting for the sensor…");
  emit changed();
  workers_.Start([this, wait = wait_, settings, catalogue, before](const std::stop_token& closing) {
    const std::stop_callback forward(closing, [wait] { wait->request_stop(); });
    const Outcome outcome = Look(wait->get_token(), settings, catalogue, before);
    events_.Post([this, wait, outcome] { End(wait, outcome); });
  });
}

void SensorReturn::Cancel() {
  if (const Wait wait = std::exchange(wait_, nullptr)) wait->request_stop();
  if (text_.isEmpty()) return;
  text_.clear();
  emit changed();
}

/// Runs on a worker until the sensor is back, another one answers in its place, or the time limit is reached.
SensorReturn::Outcome SensorReturn::Look(const std::stop_token& stop, const ConnectionSettings& settings,
                                         const Catalogue& catalogue, const SensorIdentity& before) const {
  const auto end = std::chrono::steady_clock::now() + times_.limit;
  for (auto pause = times_.leaving; SleepUnlessStopped(stop, pause); pause = times_.pause) {
    const SensorIdentity now = Visit(stop, settings, catalogue);
    if (!now.serial_number.empty() && !before.serial_number.empty() &&
        now.serial_number != before.serial_number) {
      return {"Another sensor (SN " + now.serial_number + ") answers at " + settings.ip_address +
              " after the upgrade of SN " + before.serial_number + ", so it was not connected."};
    }
    if (!now.serial_number.empty() || (before.serial_number.empty() && !now.versions.empty())) {
      const std::string changes = VersionChanges(before, now);
      return {"The sensor is back after the upgrade.\n" +
                  (changes.empty() ? "Its versions are those from before." : changes),
              true};
    }
    if (std::chrono::steady_clock::now() >= end) break;
  }
  return {"The sensor has not come back within " + Seconds(times_.limit) +
          " after the upgrade. Check its power and its address, then connect."};
}

/// The identity of whichever sensor answers now; empty if none does.
SensorIdentity SensorReturn::Visit(const std::stop_token& stop, const ConnectionSettings& settings,
                                   const Catalogue& catalogue) const {
  const SessionResult made = ConnectNetworkSensor(stop, settings, context_, kNothing);
  if (!made) return {};
  const auto& session = *made;
  const std::stop_callback interrupt(stop, [&session] { session->End(); });
  const ByteLog::Quiet quiet;
  SensorIdentity identity = ReadIdentity(*session->ktc_client(), catalogue);
  session->End();
  return identity;
}

void SensorReturn::End(const Wait& wait, const Outcome& outcome) {
  if (wait != wait_) return;
  wait_ = nullptr;
  if (outcome.back) connect_();  // clears the text, as the user's click does
  text_ = QString::fromStdString(outcome.text);
  emit changed();
  emit ended(text_, outcome.back);
}

}  // namespace varkel
