#pragma once

#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <optional>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The catalogue as QML sees it: pages, rows and variable maps. All functions take the value lock themselves.

/// The titles of the pages.
QVariantList PageTitles(const ConfigParser& catalogue);

/// A row of a page: a heading (index -1) or a variable.
struct PageRow {
  QString label;
  int kind = 0;  ///< component type
  int group = 0;
  int index = -1;
};

/// The rows of one page; none when there is no such page. A group opens with a heading; its variables follow
/// by position, in file order where equal. The switch half of a switch row is not a row of its own.
std::vector<PageRow> RowsOfPage(const ConfigParser& catalogue, int page);

/// Per page its rows, each [label, component kind, page, group, variable index].
QVariantList PageRows(const ConfigParser& catalogue);

/// One variable; its keys are the field names of the model table, and
/// - "edited": changed by the user and not yet saved, the variable or its switch;
/// - "origin": where the text comes from, "default", "read", "edited", "sent", "verified" or "differs";
/// - "read_time": when the sensor reported the variable last, as ISO text in UTC; empty before.
QVariantMap VariableMap(const Model& model, const VarInfo& var);

/// `time` as ISO text in UTC; empty without one.
QString IsoTime(const std::optional<ValueStore::Time>& time);

/// The field of view's angles in degrees, with one decimal.
QVariantList AngleTexts(const FovAngles& angles);

/// Labels of the variable's options in their order: the number itself where the table has no label.
QVariantList OptionLabels(const VarInfo& var);
QVariantList OptionValues(const VarInfo& var);

/// The text as a row shows it: the option's label where the table has one.
QString ShownText(const VarInfo& var, const std::string& text);

/// Maps of all variables: [page][group][index].
QVariantList VariableMaps(const Model& model);

/// The firmware versions among the variables of the pages, each once: maps with "label" and "value", which is "not read"
/// until this sensor has told.
QVariantList InstalledVersions(const Model& model);

/// Names of the logs that can be downloaded one by one: variables kept off the pages that have a get command
/// and whose name ends in "Log", but for the operation log, which is downloaded as an archive.
QVariantList DownloadableLogs(const ConfigParser& catalogue);

/// The variable at [page][group][index], or null.
VarInfo* VariableAt(const ConfigParser& catalogue, int page, int group, int index);

}  // namespace varkel
