#pragma once

#include <atomic>
#include <functional>
#include <stop_token>
#include <string>

#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Reads values of the selected model from the connected sensor, if that is possible now. Thread-safe.
class PageReading {
 public:
  /// `connect_type` belongs to the controller; all arguments outlive this object.
  PageReading(const SensorConnection& connection, const ModelSelection& models,
              const std::atomic<int>& connect_type, const PageReader& reader)
      : connection_(connection), models_(models), connect_type_(connect_type), reader_(reader) {}

  /// Sets the page whose live variables RefreshShownPage reads.
  void set_shown_module(int module) { shown_module_ = module; }

  /// Reads a page; stops early if the sensor is silent and `replaced` returns true. False, with nothing read,
  /// without a network sensor's session, during an upgrade or a download, or if there is no such page.
  bool ReadPage(int module, const std::function<bool()>& replaced) const;

  /// One round of a session's periodic work: reads the live variables of the shown page. True if there were
  /// any.
  bool RefreshShownPage(SensorSession& session, const std::stop_token& stop) const;

  /// Reads one variable, looked up by searchVarPtr; true if it was refreshed.
  bool UpdateSingleVarInfo(const std::string& key, const std::string& search_type) const;

 private:
  const SensorConnection& connection_;
  const ModelSelection& models_;
  const std::atomic<int>& connect_type_;
  const PageReader& reader_;
  std::atomic<int> shown_module_ = 0;
};

}  // namespace varkel
