#include "VarkelCore/src/pages/variable_map_cache.h"

#include <QString>
#include <utility>

#include "VarkelCore/src/pages/page_description.h"

namespace varkel {

QVariantMap VariableMapCache::Map(const std::shared_ptr<const ConfigParser>& catalogue, const VarInfo& var,
                                  const PendingEdits& edits) {
  if (catalogue != catalogue_) {
    entries_.clear();
    catalogue_ = catalogue;
  }
  Changing now;
  {
    const auto lock = catalogue->LockValues();
    now = Now(var, edits);
  }
  const auto [entry, is_new] = entries_.try_emplace(&var);
  if (is_new) {
    // At least as new as `now`: what changed in between is noticed the next time.
    entry->second = {VariableMap(*catalogue, var, edits), std::move(now)};
  } else {
    Update(entry->second, std::move(now));
  }
  return entry->second.map;
}

VariableMapCache::Changing VariableMapCache::Now(const VarInfo& var, const PendingEdits& edits) {
  return {var.current_val, SwitchValue(var), var.set_start_pos, var.var_len, IsShownEdited(var, edits)};
}

void VariableMapCache::Update(Entry& entry, Changing now) {
  const auto bring = [&entry](const QString& key, auto& shown, auto& current, const auto& as_variant) {
    if (shown == current) return;
    QVariant value = as_variant(current);
    entry.map[key].swap(value);
  };
  const auto as_text = [](const std::string& text) { return QString::fromStdString(text); };
  const auto as_is = [](auto value) { return QVariant(value); };
  bring(QStringLiteral("current_val"), entry.shown.value, now.value, as_text);
  bring(QStringLiteral("switch_index"), entry.shown.switch_value, now.switch_value, as_text);
  bring(QStringLiteral("set_start_pos"), entry.shown.set_start_pos, now.set_start_pos, as_is);
  bring(QStringLiteral("offset"), entry.shown.length, now.length, as_is);
  bring(QStringLiteral("edited"), entry.shown.edited, now.edited, as_is);
  entry.shown = std::move(now);
}

}  // namespace varkel
