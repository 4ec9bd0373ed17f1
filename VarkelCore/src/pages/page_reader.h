#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// Variables read by one request: they share get command and get payload.
struct ReadGroup {
  std::string key;  ///< the pair (get command, get payload) as shown in messages
  std::vector<VarInfo*> vars;
};

/// Groups the readable variables of `vars` by get command and payload, in order of first appearance.
std::vector<ReadGroup> GroupByGetCommand(const std::vector<VarInfo*>& vars);

/// The variables of one page with a get command; empty if there is no such page.
std::vector<VarInfo*> ReadableVars(const ConfigParser& catalogue, int module);

/// How a group with the field-of-view command is read.
enum class FovRead {
  kTable,    ///< fills the field-of-view table
  kOrdinary  ///< like any other command
};

/// Reads variables from the sensor into a model's values. Stateless apart from its targets; several threads
/// may read at once (the client serialises their exchanges).
class PageReader {
 public:
  struct Targets {
    UserReport& report;
    std::function<void()> fov_changed;
  };

  explicit PageReader(Targets targets) : targets_(std::move(targets)) {}

  /// Performs one exchange for the whole group. True if at least one variable was refreshed. If the reply is
  /// missing or a refusal, writes a debug line and keeps the texts. Raises std::invalid_argument for an
  /// invalid group.
  bool GetInfoFromLidarWithSameCmd(Model& model, quarn::lidar::KtcClient& client,
                                   const std::vector<VarInfo*>& group, FovRead fov) const;
  /// Stores the reply to the group's request, made at `asked`; true if at least one variable was refreshed.
  bool StoreReply(Model& model, const std::vector<VarInfo*>& group, std::span<const std::uint8_t> reply,
                  ValueStore::Moment asked) const;
  /// Performs one exchange for one variable; true if it was refreshed.
  bool GetInfoFromLidar(Model& model, quarn::lidar::KtcClient& client, VarInfo& var) const;

  /// Reads the groups one after the other while `go_on` returns true; its argument is whether the previous
  /// group was answered (true before the first). Faults are written after the name of `operation`, and
  /// reading continues with the next group. Returns the number of groups read.
  std::size_t ReadGroups(Model& model, quarn::lidar::KtcClient& client, const std::vector<ReadGroup>& groups,
                         const char* operation, const std::function<bool(bool answered)>& go_on) const;

 private:
  bool Query(quarn::lidar::KtcClient& client, const VarInfo& first, const char* operation,
             std::vector<std::uint8_t>& reply) const;
  bool ReadFov(Model& model, quarn::lidar::KtcClient& client, VarInfo& first) const;
  std::optional<Reading> updateSingleVarFromOutput(ConfigParser& catalogue, VarInfo& var,
                                                   std::span<const std::uint8_t> reply) const;

  Targets targets_;
};

}  // namespace varkel
