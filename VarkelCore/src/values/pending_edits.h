#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace varkel {

/// The edits that the sensor has not confirmed yet. Thread-safe. Where the catalogue's value lock is held as
/// well, that one is taken first.
class PendingEdits {
 public:
  /// Remembers that `var_id` was edited and that `set_cmd` has to carry it.
  void Mark(const std::string& set_cmd, const std::string& var_id);
  /// Marks a command alone, for values that are no variables of the table.
  void MarkCommand(const std::string& set_cmd);
  /// The sensor holds these variables' values now.
  void Confirm(const std::vector<std::string>& var_ids);
  /// Nothing is left for `set_cmd` to carry.
  void ConfirmCommand(const std::string& set_cmd);
  void Clear();

  std::size_t command_count() const;
  bool IsPending(const std::string& set_cmd) const;
  bool IsEdited(const std::string& var_id) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, bool> set_map_;         ///< set command -> pending
  std::map<std::string, bool> edited_var_map_;  ///< edited variable -> pending
};

}  // namespace varkel
