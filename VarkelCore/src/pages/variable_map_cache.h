#pragma once

#include <QVariantMap>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/values/pending_edits.h"

namespace varkel {

/// The maps that rows ask for again and again. Most of a variable's map never changes: it is made once, and
/// of the rest only what did change is made anew. For one thread.
class VariableMapCache {
 public:
  /// As `VariableMap`. Another catalogue than the last one empties the cache.
  QVariantMap Map(const std::shared_ptr<const ConfigParser>& catalogue, const VarInfo& var,
                  const PendingEdits& edits);

 private:
  /// What of a map may change, as it was when the map was brought up to date.
  struct Changing {
    std::string value;
    std::string switch_value;
    std::uint32_t set_start_pos = 0;
    std::uint32_t length = 0;
    bool edited = false;
  };
  struct Entry {
    QVariantMap map;
    Changing shown;
  };

  static Changing Now(const VarInfo& var, const PendingEdits& edits);
  static void Update(Entry& entry, Changing now);

  std::shared_ptr<const ConfigParser> catalogue_;  // keeps the entries' keys alive
  std::unordered_map<const VarInfo*, Entry> entries_;
};

}  // namespace varkel
