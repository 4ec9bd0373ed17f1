#pragma once

#include <atomic>
#include <functional>
#include <stop_token>
#include <string>

#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Reads values of the selected model from the connected sensor, when that may be done now. Thread-safe.
class PageReading {
 public:
  /// `connect_type` is the controller's; everything outlives this object.
  PageReading(const SensorConnection& connection, const ModelSelection& models,
              const std::atomic<int>& connect_type, const PageReader& reader)
      : connection_(connection), models_(models), connect_type_(connect_type), reader_(reader) {}

  /// The page whose live variables RefreshShownPage reads.
  void set_shown_module(int module) { shown_module_ = module; }

  /// Reads a page, but no more of a silent sensor's once `replaced` answers true. False, and nothing read,
  /// without a network sensor's session, beside an upgrade or a download, or when there is no such page.
  bool ReadPage(int module, const std::function<bool()>& replaced) const;

  /// One round of a session: reads the live variables of the shown page. True when there were any.
  bool RefreshShownPage(SensorSession& session, const std::stop_token& stop) const;

  /// Reads one variable, found as searchVarPtr does; true when it was refreshed.
  bool UpdateSingleVarInfo(const std::string& key, const std::string& search_type) const;

 private:
  const SensorConnection& connection_;
  const ModelSelection& models_;
  const std::atomic<int>& connect_type_;
  const PageReader& reader_;
  std::atomic<int> shown_module_ = 0;
};

}  // namespace varkel
