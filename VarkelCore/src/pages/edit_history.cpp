#include "VarkelCore/src/pages/edit_history.h"

#include <algorithm>
#include <utility>

namespace varkel {

void EditHistory::Do(const std::shared_ptr<Model>& model, std::initializer_list<Target> targets,
                     const std::function<void()>& change) {
  if (model_ != model) Clear();
  model_ = model;
  Step step;
  for (const Target& target : targets) step.push_back({target, Present(target), {}});
  change();
  for (Change& made : step) made.after = Present(made.target);
  std::erase_if(step, [this](const Change& made) { return IsPresent(made.target, made.before); });
  if (step.empty()) return;
  undone_.clear();
  if (Continues(step)) {
    done_.back().insert(done_.back().end(), step.begin(), step.end());
  } else {
    done_.push_back(std::move(step));
  }
}

/// Switching a variable off makes two changes, the switch and then the value 0, which form one step.
bool EditHistory::Continues(const Step& step) const {
  if (done_.empty() || done_.back().size() != 1 || step.size() != 1) return false;
  const auto* const switched = std::get_if<VarInfo*>(&done_.back().front().target);
  const auto* const var = std::get_if<VarInfo*>(&step.front().target);
  return switched != nullptr && var != nullptr && (*var)->switch_var == *switched &&
         done_.back().front().after.text == "0" && step.front().after.text == "0";
}

std::optional<EditHistory::Target> EditHistory::Undo() {
  while (!done_.empty()) {
    Step step = std::move(done_.back());
    done_.pop_back();
    const bool holds = std::all_of(step.begin(), step.end(), [this](const Change& change) {
      return IsPresent(change.target, change.after);
    });
    if (!holds) continue;
    for (const Change& change : step) Restore(change.target, change.before);
    undone_.push_back(std::move(step));
    return undone_.back().front().target;
  }
  return std::nullopt;
}

std::optional<EditHistory::Target> EditHistory::Redo() {
  while (!undone_.empty()) {
    Step step = std::move(undone_.back());
    undone_.pop_back();
    const bool holds = std::all_of(step.begin(), step.end(), [this](const Change& change) {
      return IsPresent(change.target, change.before);
    });
    if (!holds) continue;
    for (const Change& change : step) Restore(change.target, change.after);
    done_.push_back(std::move(step));
    return done_.back().front().target;
  }
  return std::nullopt;
}

void EditHistory::Clear() {
  done_.clear();
  undone_.clear();
}

EditHistory::Value EditHistory::Present(const Target& target) const {
  if (const auto* const angle = std::get_if<std::size_t>(&target)) {
    const float degrees = model_->values.Fov().at(*angle);
    return {{}, degrees, degrees != model_->values.ReportedFov().at(*angle)};
  }
  const VarInfo& var = *std::get<VarInfo*>(target);
  return {model_->catalogue->CurrentValue(var), 0, model_->values.IsEdited(var)};
}

/// A target without an edit may have been read again, so its value does not matter.
bool EditHistory::IsPresent(const Target& target, const Value& value) const {
  const Value present = Present(target);
  if (present.edited != value.edited) return false;
  return !value.edited || (present.text == value.text && present.degrees == value.degrees);
}

void EditHistory::Restore(const Target& target, const Value& value) {
  if (const auto* const angle = std::get_if<std::size_t>(&target)) {
    value.edited ? model_->values.EditFov(*angle, value.degrees) : model_->values.TakeBackFov(*angle);
  } else {
    VarInfo& var = *std::get<VarInfo*>(target);
    value.edited ? model_->values.Edit(var, value.text) : model_->values.TakeBack(var);
  }
}

}  // namespace varkel
