#include "VarkelCore/src/catalogue/name_index.h"

#include <bit>
#include <functional>

namespace varkel {
namespace {

std::size_t Hash(std::string_view name) {
  return std::hash<std::string_view>()(name);
}

}  // namespace

void NameIndex::Build(const std::vector<VarInfo*>& vars) {
  slots_.assign(std::bit_ceil(2 * vars.size() + 1), Slot());
  for (VarInfo* var : vars) {
    const std::size_t hash = Hash(var->var_name);
    Slot& slot = slots_[SlotOf(var->var_name, hash)];
    if (slot.var == nullptr) {
      slot = {hash, var};
    }
  }
}

VarInfo* NameIndex::Find(std::string_view name) const {
  return slots_.empty() ? nullptr : slots_[SlotOf(name, Hash(name))].var;
}

// The slot that the name has taken, or the free one that it would take.
std::size_t NameIndex::SlotOf(std::string_view name, std::size_t hash) const {
  const std::size_t last = slots_.size() - 1;
  std::size_t at = hash & last;
  while (slots_[at].var != nullptr && (slots_[at].hash != hash || slots_[at].var->var_name != name)) {
    at = (at + 1) & last;
  }
  return at;
}

}  // namespace varkel
