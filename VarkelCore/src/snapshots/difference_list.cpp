#include "VarkelCore/src/snapshots/difference_list.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/snapshots/change_text.h"
#include "VarkelCore/src/state/set_plan.h"

namespace varkel {

namespace {

using ValuesById = std::unordered_map<std::string_view, const StateValue*>;

ValuesById ById(const SensorState& state) {
  ValuesById values;
  for (const StateValue& value : state.values) values.emplace(value.id, &value);
  return values;
}

const StateValue* Find(const ValuesById& values, const std::string& id) {
  const auto found = values.find(id);
  return found == values.end() ? nullptr : found->second;
}

/// Like on the pages: an option by its label, any other value with its unit.
QString Shown(const ConfigParser& catalogue, const StateValue& value) {
  const QString text = QString::fromStdString(value.text);
  const VarInfo* const var = catalogue.FindById(value.id);
  if (var != nullptr && var->var_name == value.name) {
    const int option = OptionValues(*var).indexOf(text);
    if (option >= 0) return OptionLabels(*var).value(option).toString();
  }
  return value.unit.empty() ? text : text + QLatin1Char(' ') + QString::fromStdString(value.unit);
}

QString WithBytes(const StateValue& value) {
  return QStringLiteral("%1 [%2]").arg(QString::fromStdString(value.text), QString::fromStdString(value.raw));
}

}  // namespace

std::vector<DifferenceRow> MakeRows(const ConfigParser& catalogue, const SensorState& left,
                                    const SensorState& right, const Comparison& comparison) {
  const ValuesById on_left = ById(left);
  const ValuesById on_right = ById(right);
  std::vector<DifferenceRow> rows;
  rows.reserve(comparison.differences.size());
  for (const Difference& difference : comparison.differences) {
    const bool lacks_left = difference.kind == DifferenceKind::kOnlyRight;
    const bool lacks_right = difference.kind == DifferenceKind::kOnlyLeft;
    const StateValue* const ours = lacks_left ? nullptr : Find(on_left, difference.id);
    const StateValue* const theirs = lacks_right ? nullptr : Find(on_right, difference.id);
    if (ours == nullptr && theirs == nullptr) continue;  // the comparison is of other states
    const StateValue& described = ours != nullptr ? *ours : *theirs;
    const auto shown = [&](const StateValue* value) {
      if (value == nullptr) return QStringLiteral("–");
      return difference.kind == DifferenceKind::kOtherBytes ? WithBytes(*value) : Shown(catalogue, *value);
    };
    DifferenceRow row;
    row.id = difference.id;
    if (ours != nullptr && !comparison.other_model) row.key = SettableKey(catalogue, *ours);
    row.page = QString::fromStdString(described.page);
    row.name = QString::fromStdString(difference.name);
    row.left = shown(ours);
    row.right = shown(theirs);
    rows.push_back(std::move(row));
  }
  return rows;
}

int DifferenceList::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

QVariant DifferenceList::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const DifferenceRow& row = rows_[shown_[static_cast<std::size_t>(index.row())]];
  switch (role) {
    case kPage:
      return row.page;
    case kName:
      return row.name;
    case kLeft:
      return row.left;
    case kRight:
      return row.right;
    case kSettable:
      return !row.key.empty();
    case kEdited:
      return row.edited;
    case kSelected:
      return row.selected;
    case kOutcome:
      return row.outcome;
    case kGood:
      return row.is_good;
    default:
      return {};
  }
}

QHash<int, QByteArray> DifferenceList::roleNames() const {
  return {{kPage, "page"},         {kName, "name"},       {kLeft, "left"},
          {kRight, "right"},       {kEdited, "edited"},   {kSelected, "selected"},
          {kSettable, "settable"}, {kOutcome, "outcome"}, {kGood, "good"}};
}

int DifferenceList::selected() const {
  return static_cast<int>(
      std::count_if(rows_.begin(), rows_.end(), [](const DifferenceRow& row) { return row.selected; }));
}

int DifferenceList::selectable() const {
  return static_cast<int>(std::count_if(rows_.begin(), rows_.end(), IsSelectable));
}

void DifferenceList::setOnlySettable(bool only) {
  if (only == only_settable_) return;
  only_settable_ = only;
  beginResetModel();
  Filter();
  endResetModel();
  emit changed();
}

void DifferenceList::select(int row, bool on) {
  if (row < 0 || row >= rowCount()) return;
  DifferenceRow& chosen = rows_[shown_[static_cast<std::size_t>(row)]];
  chosen.selected = on && IsSelectable(chosen);
  RowsChanged();
}

void DifferenceList::selectAll(bool on) {
  for (DifferenceRow& row : rows_) row.selected = on && IsSelectable(row);
  RowsChanged();
}

void DifferenceList::Set(std::vector<DifferenceRow> rows) {
  beginResetModel();
  rows_ = std::move(rows);
  Filter();
  endResetModel();
  emit changed();
}

void DifferenceList::SetEdited(const std::unordered_set<std::string>& keys) {
  for (DifferenceRow& row : rows_) {
    row.edited = keys.count(row.key) != 0;
    row.selected = row.selected && !row.edited;
  }
  RowsChanged();
}

std::unordered_set<std::string> DifferenceList::SelectedIds() const {
  std::unordered_set<std::string> ids;
  for (const DifferenceRow& row : rows_) {
    if (row.selected) ids.insert(row.id);
  }
  return ids;
}

void DifferenceList::ShowOutcomes(const std::vector<ChangeOutcome>& changes) {
  std::unordered_map<std::string_view, const ChangeOutcome*> outcome_of;
  for (const ChangeOutcome& change : changes) outcome_of.emplace(change.id, &change);
  for (DifferenceRow& row : rows_) {
    const auto found = outcome_of.find(row.key);
    const bool was_held = found == outcome_of.end() && row.selected;
    row.outcome = was_held                    ? QStringLiteral("already held")
                  : found == outcome_of.end() ? QString()
                                              : OutcomeText(*found->second);
    row.is_good = was_held || (found != outcome_of.end() && found->second->verdict == Verdict::kVerified);
    row.selected = row.selected && !row.is_good;
  }
  RowsChanged();
}

void DifferenceList::Filter() {
  shown_.clear();
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (!only_settable_ || !rows_[i].key.empty()) shown_.push_back(i);
  }
}

void DifferenceList::RowsChanged() {
  if (!shown_.empty()) emit dataChanged(index(0), index(rowCount() - 1));
  emit changed();
}

}  // namespace varkel
