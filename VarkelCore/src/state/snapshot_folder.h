#pragma once

#include <QString>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "VarkelCore/src/state/sensor_state.h"

namespace varkel {

/// The snapshots taken before each change, one folder per serial number.
class SnapshotFolder {
 public:
  /// The number kept for each sensor; older ones are deleted.
  static constexpr int kMaxKept = 20;

  /// The user's documents folder + "/VelmoraDataFiles/Snapshots".
  SnapshotFolder();
  explicit SnapshotFolder(QString root) : root_(std::move(root)) {}

  struct Entry {
    QString id;  ///< the time at which it was taken, UTC, "20261122T013811.250"
    QString path;
  };

  /// Writes a snapshot and deletes the oldest of that sensor. The error is a sentence.
  tl::expected<Entry, std::string> Save(const SensorState& state) const;
  /// Newest first.
  std::vector<Entry> List(const std::string& sn) const;
  /// A snapshot in a sensor's folder, either automatic or saved there by the user.
  struct Description {
    QString path;
    std::string time;    ///< as in the state
    std::string reason;  ///< as in the state
    bool is_automatic = false;
  };
  /// All readable snapshots, newest first.
  std::vector<Description> Describe(const std::string& sn) const;
  /// The snapshot with this identifier; the newest if it is empty.
  std::optional<Entry> Find(const std::string& sn, const QString& id) const;
  /// A sensor's folder, which need not exist yet.
  QString FolderOf(const std::string& sn) const;

 private:
  const QString root_;
};

}  // namespace varkel
