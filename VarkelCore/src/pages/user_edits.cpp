#include "VarkelCore/src/pages/user_edits.h"

#include <QVariantMap>
#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "VarkelCore/src/pages/edit_check.h"
#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/pages/page_writer.h"

namespace varkel {

namespace {

constexpr char kAngleKey[] = "angle ";

/// The page that shows a variable; a switch is shown in the row that it switches.
int PageOf(const VarInfo& var) {
  return var.module_places.empty() ? -1 : var.module_places.begin()->first.first;
}

/// The index in the page's list of a variable or of the variable that it switches; -1 if neither is there.
int RowOf(const ConfigParser& catalogue, int page, const VarInfo& var) {
  int row = 0;
  for (const PageRow& place : RowsOfPage(catalogue, page)) {
    const VarInfo* const shown = VariableAt(catalogue, page, place.group, place.index);
    if (shown != nullptr && (shown == &var || shown->switch_var == &var)) return row;
    ++row;
  }
  return -1;
}

/// The variable of the field of view's row; null if no page has one.
const VarInfo* FovVariable(const Model& model) {
  const auto carried = model.catalogue->set_cmd_map().find(kFovSetCommand);
  if (carried == model.catalogue->set_cmd_map().end()) return nullptr;
  for (const VarInfo* var : carried->second) {
    if (var->component_type == kFieldOfView) return var;
  }
  return nullptr;
}

QVariantMap Entry(const QString& key, int page, const QString& label, const QString& from,
                  const QString& to) {
  return {{QStringLiteral("key"), key},
          {QStringLiteral("page"), page},
          {QStringLiteral("label"), label},
          {QStringLiteral("from"), from},
          {QStringLiteral("to"), to}};
}

QVariantMap Entry(const Model& model, const VarInfo& var) {
  const ValueStore::Shown shown = model.values.Show(var);
  return Entry(QString::fromStdString(var.var_id), PageOf(var),
               QString::fromStdString(var.var_name + var.unit), ShownText(var, shown.held),
               ShownText(var, shown.text));
}

void AppendAngles(const Model& model, QVariantList& entries) {
  const VarInfo* const var = FovVariable(model);
  if (var == nullptr || !model.values.IsFovEdited()) return;
  const QVariantList now = AngleTexts(model.values.Fov());
  const QVariantList reported = AngleTexts(model.values.ReportedFov());
  for (int i = 0; i < now.size(); ++i) {
    if (now[i] == reported[i]) continue;
    const int sectors = static_cast<int>(kFovSectors);
    const QString label = QStringLiteral("%1, %2 %3")
                              .arg(QString::fromStdString(var->var_name),
                                   i < sectors ? QStringLiteral("start") : QStringLiteral("end"))
                              .arg(i % sectors + 1);
    entries.append(Entry(kAngleKey + QString::number(i), PageOf(*var), label, reported[i].toString(),
                         now[i].toString()));
  }
}

}  // namespace

QVariantList UserEdits::all() const {
  QVariantList entries;
  const auto model = model_();
  if (!model) return entries;
  std::vector<const VarInfo*> edited = model->values.EditedVars();
  std::sort(edited.begin(), edited.end(), [](const VarInfo* a, const VarInfo* b) {
    return std::tie(a->module_places, a->var_id) < std::tie(b->module_places, b->var_id);
  });
  for (const VarInfo* var : edited) entries.append(Entry(*model, *var));
  AppendAngles(*model, entries);
  return entries;
}

QVariantList UserEdits::counts() const {
  QVariantList pages;
  const auto model = model_();
  if (!model) return pages;
  std::vector<int> counts(model->catalogue->module_vars().size(), 0);
  const auto count = [&](const VarInfo& var) {
    for (const auto& [place, position] : var.module_places) {
      ++counts.at(static_cast<std::size_t>(place.first));
    }
  };
  const std::vector<const VarInfo*> edited = model->values.EditedVars();
  const auto is_edited = [&](const VarInfo* var) {
    return std::find(edited.begin(), edited.end(), var) != edited.end();
  };
  for (const VarInfo* var : edited) {
    // One edit per row: a switch and its value count once, as do the angles and their channel.
    const bool counts_with_value =
        var->has_switch && std::any_of(edited.begin(), edited.end(), [var](const VarInfo* other) {
          return other != var && other->switch_var == var;
        });
    if (!counts_with_value) count(*var);
  }
  const VarInfo* const fov = model->values.IsFovEdited() ? FovVariable(*model) : nullptr;
  if (fov != nullptr && !is_edited(fov)) count(*fov);
  for (const int number : counts) pages.append(number);
  return pages;
}

void UserEdits::takeBack(const QString& key) {
  const auto model = model_();
  if (!model) return;
  if (key.startsWith(kAngleKey)) {
    const auto angle = static_cast<std::size_t>(key.mid(static_cast<int>(sizeof(kAngleKey)) - 1).toUInt());
    if (angle < FovAngles().size()) Do(model, {angle}, [&] { model->values.TakeBackFov(angle); });
  } else if (VarInfo* const var = model->catalogue->FindById(key.toStdString())) {
    Do(model, {var}, [&] { model->values.TakeBack(*var); });
  }
  edited_();
}

int UserEdits::undo() {
  return Announce(history_.Undo());
}

int UserEdits::redo() {
  return Announce(history_.Redo());
}

int UserEdits::Announce(const std::optional<EditHistory::Target>& target) {
  const auto model = model_();
  if (!target || !model) return -1;
  edited_();
  const auto* const var = std::get_if<VarInfo*>(&*target);
  const VarInfo* const shown = var != nullptr ? *var : FovVariable(*model);
  const int page = shown == nullptr ? -1 : PageOf(*shown);
  if (page >= 0) emit stepped(page, RowOf(*model->catalogue, page, *shown));
  return page;
}

QStringList UserEdits::faults(int page) const {
  const auto model = model_();
  return model ? TypingFaults(*model, page) : QStringList();
}

QStringList UserEdits::outOfRange(int page) const {
  const auto model = model_();
  return model ? RangeFaults(*model, page) : QStringList();
}

bool UserEdits::hasCommands(int page) const {
  const auto model = model_();
  return model && HasPendingCommands(*model, page);
}

}  // namespace varkel
