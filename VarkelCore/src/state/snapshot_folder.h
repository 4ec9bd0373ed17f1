#pragma once

#include <QString>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "VarkelCore/src/state/sensor_state.h"

namespace varkel {

/// The snapshots that are taken before each change, a folder for each serial number.
class SnapshotFolder {
 public:
  /// Kept for each sensor; older ones go.
  static constexpr int kKept = 20;

  /// The user's documents folder + "/VelmoraDataFiles/Snapshots".
  SnapshotFolder();
  explicit SnapshotFolder(QString root) : root_(std::move(root)) {}

  struct Entry {
    QString id;  ///< the time that it was taken at, UTC, "20261122T013811.250"
    QString path;
  };

  /// Writes a snapshot and removes the oldest of that sensor. The error is a sentence.
  tl::expected<Entry, std::string> Save(const SensorState& state) const;
  /// Newest first.
  std::vector<Entry> List(const std::string& sn) const;
  /// A snapshot in a sensor's folder, an automatic one or one that the user put there.
  struct Description {
    QString path;
    std::string time;    ///< as in the state
    std::string reason;  ///< as in the state
    bool is_automatic = false;
  };
  /// All that can be read, newest first.
  std::vector<Description> Describe(const std::string& sn) const;
  /// By identifier; the newest for an empty one.
  std::optional<Entry> Find(const std::string& sn, const QString& id) const;
  /// A sensor's folder, which need not be there yet.
  QString FolderOf(const std::string& sn) const;

 private:
  const QString root_;
};

}  // namespace varkel
