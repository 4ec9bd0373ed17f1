#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Undo and redo for the user's edits of one model, step by step. Used from one thread.
///
/// A step can be undone only while the values are still as it left them: a step whose edit has since been
/// saved, or reverted by other means, is skipped.
class EditHistory {
 public:
  /// The target of an edit: a variable, or an angle of the field of view by its index.
  using Target = std::variant<VarInfo*, std::size_t>;

  /// Makes a change and records its effect on the targets. A change of another model clears the history
  /// first.
  void Do(const std::shared_ptr<Model>& model, std::initializer_list<Target> targets,
          const std::function<void()>& change);

  /// The target that the step changed; nullopt if there is nothing to undo or redo.
  std::optional<Target> Undo();
  std::optional<Target> Redo();
  void Clear();

 private:
  struct Value {
    std::string text;
    float degrees = 0;
    bool edited = false;
  };
  struct Change {
    Target target;
    Value before;
    Value after;
  };
  using Step = std::vector<Change>;

  Value Present(const Target& target) const;
  bool IsPresent(const Target& target, const Value& value) const;
  void Restore(const Target& target, const Value& value);
  bool Continues(const Step& step) const;

  std::shared_ptr<Model> model_;
  std::vector<Step> done_;
  std::vector<Step> undone_;
};

}  // namespace varkel
