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

/// Variables that one request reads: they share get command and get payload.
struct ReadGroup {
  std::string key;  ///< the pair (get command, get payload) as messages show it
  std::vector<VarInfo*> vars;
};

/// Groups the readable variables of `vars` by get command and payload, in the order in which they come.
std::vector<ReadGroup> GroupByGetCommand(const std::vector<VarInfo*>& vars);

/// The variables of one page with a get command; none when there is no such page.
std::vector<VarInfo*> ReadableVars(const ConfigParser& catalogue, int module);

/// How a group with the field-of-view command is read.
enum class FovRead {
  kTable,    ///< fills the field-of-view table
  kOrdinary  ///< as any other command
};

/// Reads variables from the sensor into a model's values. Stateless but for what it is given; several threads
/// may read at once (the client keeps their exchanges apart).
class PageReader {
 public:
  struct Targets {
    UserReport& report;
    std::function<void()> fov_changed;
  };

  explicit PageReader(Targets targets) : targets_(std::move(targets)) {}

  /// One exchange for the whole group. True when at least one variable was refreshed. A refused or missing
  /// reply is written as a debug line and leaves the texts; a wrong group raises std::invalid_argument.
  bool GetInfoFromLidarWithSameCmd(Model& model, quarn::lidar::KtcClient& client,
                                   const std::vector<VarInfo*>& group, FovRead fov) const;
  /// What the group's exchange, begun at `asked`, does with its reply: true when at least one variable was
  /// refreshed.
  bool StoreReply(Model& model, const std::vector<VarInfo*>& group, std::span<const std::uint8_t> reply,
                  ValueStore::Moment asked) const;
  /// One exchange for one variable; true when it was refreshed.
  bool GetInfoFromLidar(Model& model, quarn::lidar::KtcClient& client, VarInfo& var) const;

  /// Reads the groups one after the other while `go_on` answers true; it hears whether the group before was
  /// answered (true before the first). Faults are written after the name of `operation` and the next group
  /// is read. The number of groups read.
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
