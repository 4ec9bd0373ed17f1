#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// The set command of the network addresses. It goes out last, and a sensor that has already moved to its
/// new address need not answer it.
inline constexpr char kAddressSetCommand[] = "0x21";

/// The steps of saving a page: what to read first, and what to send.
struct WritePlan {
  std::vector<ReadGroup> refresh;     ///< reads that update the unedited fields
  std::vector<std::string> commands;  ///< set commands in the order in which they are sent
};

/// Collects the pending set commands of a page, the address command last.
WritePlan PlanWrite(const Model& model, int module);

/// Whether saving the page would send anything.
bool HasPendingCommands(const Model& model, int module);

/// Names of the fields that saving the page would write although their values are unknown: neither edited nor
/// ever reported by this sensor. In the order of the page's commands; empty if there is no such page.
std::vector<std::string> UnreadFields(const Model& model, int module);

/// A set command ready to go out.
struct SetRequest {
  SentCommand command;
  std::vector<std::uint8_t> payload;
};

/// Builds a set command from the current values, with every field that it carries. An unedited field is sent
/// with the very bytes that the sensor reported if reading and writing use the same scale: texts have only
/// two decimals, so encoding the text could change the value. Raises std::invalid_argument if a field has no
/// usable value.
SetRequest MakeSetRequest(Model& model, const std::string& set_cmd);

/// The edits that a save has sent.
struct SavedEdits {
  std::vector<const VarInfo*> vars;
  bool fov = false;  ///< angles of the field of view
};

/// Saves the edits of a page, on the calling thread.
class PageWriter {
 public:
  struct Targets {
    const PageReader& reader;
    UserReport& report;
  };

  explicit PageWriter(Targets targets) : targets_(targets) {}

  /// Refreshes the unedited fields, then sends each pending set command with all its fields. Unedited fields
  /// that the sensor did not report are named in a warning and sent with their last values. The first refused
  /// command ends the save: commands sent before it remain written, and all edits stay pending, as does an
  /// edit made during the save. Every outcome is reported. Returns the edits that were sent; empty unless the
  /// save succeeded.
  SavedEdits Run(Model& model, quarn::lidar::KtcClient& client, int module) const;

 private:
  SavedEdits WriteAll(Model& model, quarn::lidar::KtcClient& client, int module) const;
  void Refresh(Model& model, quarn::lidar::KtcClient& client, const WritePlan& plan) const;
  SentCommand WriteFov(Model& model, quarn::lidar::KtcClient& client) const;
  SentCommand Write(Model& model, quarn::lidar::KtcClient& client, const std::string& set_cmd) const;
  void ReportSent(const ConfigParser& catalogue, const std::string& set_cmd) const;
  void ReportRefused(const Model& model, const std::string& set_cmd, std::span<const std::uint8_t> payload,
                     int code) const;

  Targets targets_;
};

}  // namespace varkel
