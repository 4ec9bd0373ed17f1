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

/// The user's edits of one model in their order, to be undone and redone one by one. Used from one thread.
///
/// A step stands for what it changed only while that is still so: one whose edit has been saved, or taken
/// back otherwise, is passed over.
class EditHistory {
 public:
  /// What an edit can change: a variable, or an angle of the field of view by its index.
  using Target = std::variant<VarInfo*, std::size_t>;

  /// Makes a change and keeps what it did to the targets. A step of another model empties the history.
  void Do(const std::shared_ptr<Model>& model, std::initializer_list<Target> targets,
          const std::function<void()>& change);

  /// What the step changed; nullopt when there is none to undo or redo.
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
