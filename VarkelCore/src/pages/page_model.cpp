#include "VarkelCore/src/pages/page_model.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "VarkelCore/src/pages/page_description.h"
#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Platform/src/hex_text.h"

namespace varkel {

namespace {

constexpr int kHeadingKind = -1;
/// The roles that value events can change.
const QVector<int> kChangingRoles = {PageModel::kText,     PageModel::kSwitchText, PageModel::kOrigin,
                                     PageModel::kReadTime, PageModel::kEdited,     PageModel::kRawHex,
                                     PageModel::kSentText, PageModel::kVerdict,    PageModel::kStale,
                                     PageModel::kAngles,   PageModel::kHeldText,   PageModel::kRefusal};

/// The sensor's code, or the client's reason.
QString RefusalWords(const std::optional<int>& code) {
  if (!code) return {};
  if (*code > 0) return QStringLiteral("refused, code %1").arg(*code);
  return *code == quarn::lidar::KtcClient::kNotSent ? QStringLiteral("not sent")
                                                    : QStringLiteral("not answered, code %1").arg(*code);
}

}  // namespace

PageModel::PageModel(std::shared_ptr<Model> model, int page, QObject* parent)
    : QAbstractListModel(parent), model_(std::move(model)) {
  const ConfigParser& catalogue = *model_->catalogue;
  for (const PageRow& place : RowsOfPage(catalogue, page)) {
    Row& row = rows_.emplace_back();
    row.label = place.label;
    row.group = place.group;
    row.variable = place.index;
    row.var = VariableAt(catalogue, page, place.group, place.index);
    row.kind = row.var == nullptr ? kHeadingKind : place.kind;
    if (row.var == nullptr) continue;
    Watch(*row.var, static_cast<int>(rows_.size()) - 1);
    Follow(row);
  }
}

/// A switch affects the row that it switches; every field of the angles' command affects the field of view's
/// row.
void PageModel::Watch(const VarInfo& var, int row) {
  rows_of_[&var].push_back(row);
  if (var.switch_var != nullptr && var.switch_var != &var) rows_of_[var.switch_var].push_back(row);
  if (var.component_type != kFieldOfView) return;
  const auto carried = model_->catalogue->set_cmd_map().find(var.set_cmd);
  if (carried == model_->catalogue->set_cmd_map().end()) return;
  for (const VarInfo* other : carried->second) {
    if (other != &var) rows_of_[other].push_back(row);
  }
}

int PageModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> PageModel::roleNames() const {
  return {{kLabel, "label"},
          {kKind, "kind"},
          {kGroup, "group"},
          {kVariable, "variable"},
          {kName, "name"},
          {kText, "text"},
          {kSwitchText, "switchText"},
          {kOrigin, "origin"},
          {kReadTime, "readTime"},
          {kEdited, "edited"},
          {kLive, "live"},
          {kWritable, "writable"},
          {kRangeMin, "rangeMin"},
          {kRangeMax, "rangeMax"},
          {kUnit, "unit"},
          {kType, "type"},
          {kOptions, "options"},
          {kOptionLabels, "optionLabels"},
          {kRawHex, "rawHex"},
          {kSentText, "sentText"},
          {kVerdict, "verdict"},
          {kVarId, "varId"},
          {kStale, "stale"},
          {kAngles, "angles"},
          {kHeldText, "heldText"},
          {kRefusal, "refusal"}};
}

bool PageModel::upgrades() const {
  return std::any_of(rows_.begin(), rows_.end(), [](const Row& row) { return row.kind == kUpgradeArea; });
}

QVariant PageModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const Row& row = rows_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case kLabel:
      return row.label;
    case kKind:
      return row.kind;
    case kGroup:
      return row.group;
    case kVariable:
      return row.variable;
    default:
      break;
  }
  if (row.var == nullptr) return {};
  QVariant constant = Constant(*row.var, role);
  return constant.isValid() ? constant : Changing(row, role);
}

QVariant PageModel::Constant(const VarInfo& var, int role) const {
  switch (role) {
    case kName:
      return QString::fromStdString(var.var_name);
    case kLive:
      return var.timer_update;
    case kWritable:
      return var.permission != 0;
    case kRangeMin:
      return var.range_min;
    case kRangeMax:
      return var.range_max;
    case kUnit:
      return QString::fromStdString(var.unit);
    case kType:
      return QString::fromStdString(var.var_type);
    case kOptions:
      return OptionValues(var);
    case kOptionLabels:
      return OptionLabels(var);
    case kVarId:
      return QString::fromStdString(var.var_id);
    default:
      return {};
  }
}

QVariant PageModel::Changing(const Row& row, int role) const {
  if (role == kVerdict) return row.verdict;
  if (role == kAngles) return row.kind == kFieldOfView ? AngleTexts(model_->values.Fov()) : QVariant();
  if (role == kSentText) {
    const auto verification = model_->values.Verify(*row.var);
    return verification ? ShownText(*row.var, verification->sent) : QString();
  }
  const ValueStore::Shown shown = model_->values.Show(*row.var);
  switch (role) {
    case kText:
      return QString::fromStdString(shown.text);
    case kSwitchText:
      return QString::fromStdString(shown.switch_text);
    case kOrigin:
      return QString::fromLatin1(OriginName(shown.origin));
    case kReadTime:
      return IsoTime(shown.read_time);
    case kEdited:
      return shown.edited;
    case kRawHex:
      return QString::fromStdString(quarn::lidar::HexText(shown.raw));
    case kStale:
      return shown.stale;
    case kHeldText:
      return ShownText(*row.var, shown.held);
    case kRefusal:
      return RefusalWords(shown.refusal);
    default:
      return {};
  }
}

/// Updates the cached values of the row.
void PageModel::Follow(Row& row) {
  const ValueStore::Shown shown = model_->values.Show(*row.var);
  if (shown.text != row.refused_text) row.verdict.clear();
  edits_ += static_cast<int>(shown.edited) - static_cast<int>(row.edited);
  row.edited = shown.edited;
  if (shown.read_time && (!last_read_ || *last_read_ < *shown.read_time)) last_read_ = shown.read_time;
}

QDateTime PageModel::lastRead() const {
  return last_read_ ? QDateTime::fromString(IsoTime(last_read_), Qt::ISODateWithMs).toLocalTime()
                    : QDateTime();
}

void PageModel::ShowChanges(const std::vector<const VarInfo*>& vars) {
  std::vector<int> changed;
  for (const VarInfo* var : vars) {
    const auto rows = rows_of_.find(var);
    if (rows == rows_of_.end()) continue;
    changed.insert(changed.end(), rows->second.begin(), rows->second.end());
  }
  std::sort(changed.begin(), changed.end());
  changed.erase(std::unique(changed.begin(), changed.end()), changed.end());
  const int edits_before = edits_;
  const auto read_before = last_read_;
  for (const int number : changed) Follow(rows_[static_cast<std::size_t>(number)]);
  for (std::size_t first = 0; first < changed.size();) {
    std::size_t last = first;
    while (last + 1 < changed.size() && changed[last + 1] == changed[last] + 1) ++last;
    emit dataChanged(index(changed[first]), index(changed[last]), kChangingRoles);
    first = last + 1;
  }
  if (edits_ != edits_before) emit editsChanged();
  if (last_read_ != read_before) emit lastReadChanged();
}

void PageModel::SetVerdict(const VarInfo& var, const QString& verdict) {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    Row& row = rows_[i];
    if (row.var != &var) continue;
    row.verdict = verdict;
    row.refused_text = model_->values.Show(var).text;
    const QModelIndex place = index(static_cast<int>(i));
    emit dataChanged(place, place, {kVerdict});
  }
}

}  // namespace varkel
