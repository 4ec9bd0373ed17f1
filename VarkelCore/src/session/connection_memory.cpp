#include "VarkelCore/src/session/connection_memory.h"

#include <QString>

namespace varkel {

ConnectionMemory::ConnectionMemory(UserReport& report)
    : report_(report), settings_(settings_file_.Load(&load_fault_)) {
  QObject::connect(&recent_addresses_, &RecentAddresses::notKept, &recent_addresses_,
                   [this](const QString& text) { report_.Log(text.toStdString(), "WARNING"); });
}

void ConnectionMemory::Dialled() {
  dialled_ = settings_.ip_address;
  const std::string fault = settings_file_.Save(settings_);
  if (!fault.empty()) report_.Log(fault, "WARNING");
}

void ConnectionMemory::SessionChanged(const SensorSession* session) {
  if (session != nullptr && session->ktc_client()) {
    recent_addresses_.add(QString::fromStdString(dialled_));
  }
}

}  // namespace varkel
