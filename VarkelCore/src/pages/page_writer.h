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

/// What saving a page takes: whom to ask first, and what to send.
struct WritePlan {
  std::vector<ReadGroup> refresh;     ///< reads that bring the untouched fields up to date
  std::vector<std::string> commands;  ///< set commands in the order in which they are sent
};

/// Gathers the pending set commands of a page, the address command last.
WritePlan PlanWrite(const Model& model, int module);

/// Whether saving the page would send anything.
bool HasPendingCommands(const Model& model, int module);

/// The fields that saving the page would write although nobody has given them a value: not edited, and never
/// reported by this sensor. Their names in the order of the page's commands; none when there is no such page.
std::vector<std::string> UnreadFields(const Model& model, int module);

/// A set command ready to go out.
struct SetRequest {
  SentCommand command;
  std::vector<std::uint8_t> payload;
};

/// Builds a set command from the present values: every field that it carries, at its place. A field that the
/// user left alone goes out with the bytes that the sensor sent, where reading and writing use one scale:
/// text has two decimals, so bytes made from it might be others. Raises std::invalid_argument when a field
/// has no usable value.
SetRequest MakeSetRequest(Model& model, const std::string& set_cmd);

/// What the user had changed and a save has sent.
struct SavedEdits {
  std::vector<const VarInfo*> vars;
  bool fov = false;  ///< angles of the field of view
};

/// Saves the edits of a page. Works on the calling thread.
class PageWriter {
 public:
  struct Targets {
    const PageReader& reader;
    UserReport& report;
  };

  explicit PageWriter(Targets targets) : targets_(targets) {}

  /// Refreshes the untouched fields, then sends each pending set command whole. Untouched fields that the
  /// sensor did not report are named in a warning and go out with their last values. The first refused
  /// command ends the save: what was sent before stays written, and all edits stay pending, as does an edit
  /// that is made while the page is saved. Every outcome is reported. The edits that went out with a save
  /// that ended well.
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
