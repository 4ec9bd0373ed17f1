#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/fov_table.h"
#include "VarkelCore/src/values/pending_edits.h"
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
WritePlan PlanWrite(const ConfigParser& catalogue, int module, const PendingEdits& edits);

/// A set command ready to go out, and the texts that its payload was made from.
struct SetRequest {
  std::string set_cmd;
  std::vector<std::uint8_t> payload;
  std::vector<std::pair<const VarInfo*, std::string>> values;
};

/// Builds a set command from the present value texts: every field that it carries, at its place. Raises
/// std::invalid_argument when a field has no usable value.
SetRequest MakeSetRequest(ConfigParser& catalogue, const std::string& set_cmd);

/// Saves the edits of a page. Works on the calling thread.
class PageWriter {
 public:
  struct Targets {
    const PageReader& reader;
    PendingEdits& edits;
    FovTable& fov;
    UserReport& report;
  };

  explicit PageWriter(Targets targets) : targets_(targets) {}

  /// Refreshes the untouched fields, then sends each pending set command whole. The first refusal ends it:
  /// what was sent before stays written, and all edits stay pending, as does an edit that is made while the
  /// page is saved. Every outcome is reported.
  void Run(ConfigParser& catalogue, quarn::lidar::KtcClient& client, int module) const;

 private:
  void WriteAll(ConfigParser& catalogue, quarn::lidar::KtcClient& client, int module) const;
  SetRequest WriteFov(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                      const FovTable::Angles& angles) const;
  SetRequest Write(ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                   const std::string& set_cmd) const;
  void Confirm(const ConfigParser& catalogue, const SetRequest& sent, const FovTable::Angles& angles) const;
  void ReportSent(const ConfigParser& catalogue, const std::string& set_cmd) const;

  Targets targets_;
};

}  // namespace varkel
