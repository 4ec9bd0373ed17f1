#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "VarkelCore/src/catalogue/var_info.h"

namespace varkel {

/// Records by name. Two words a record and no memory of its own for each, so that indexing a large table
/// costs little. The names must not change and the records must stand as long as the index is used.
class NameIndex {
 public:
  /// Of several records with one name the first is found.
  void Build(const std::vector<VarInfo*>& vars);
  VarInfo* Find(std::string_view name) const;

 private:
  struct Slot {
    std::size_t hash = 0;
    VarInfo* var = nullptr;  ///< none: free
  };

  std::size_t SlotOf(std::string_view name, std::size_t hash) const;

  std::vector<Slot> slots_;  // a power of two, at most half of them taken
};

}  // namespace varkel
