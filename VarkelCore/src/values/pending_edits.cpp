#include "VarkelCore/src/values/pending_edits.h"

namespace varkel {

void PendingEdits::Mark(const std::string& set_cmd, const std::string& var_id) {
  const std::lock_guard lock(mutex_);
  set_map_[set_cmd] = true;
  edited_var_map_[var_id] = true;
}

void PendingEdits::MarkCommand(const std::string& set_cmd) {
  const std::lock_guard lock(mutex_);
  set_map_[set_cmd] = true;
}

void PendingEdits::Confirm(const std::vector<std::string>& var_ids) {
  const std::lock_guard lock(mutex_);
  for (const std::string& var_id : var_ids) edited_var_map_.erase(var_id);
}

void PendingEdits::ConfirmCommand(const std::string& set_cmd) {
  const std::lock_guard lock(mutex_);
  set_map_.erase(set_cmd);
}

void PendingEdits::Clear() {
  const std::lock_guard lock(mutex_);
  set_map_.clear();
  edited_var_map_.clear();
}

std::size_t PendingEdits::command_count() const {
  const std::lock_guard lock(mutex_);
  return set_map_.size();
}

bool PendingEdits::IsPending(const std::string& set_cmd) const {
  const std::lock_guard lock(mutex_);
  return set_map_.count(set_cmd) != 0;
}

bool PendingEdits::IsEdited(const std::string& var_id) const {
  const std::lock_guard lock(mutex_);
  return edited_var_map_.count(var_id) != 0;
}

}  // namespace varkel
