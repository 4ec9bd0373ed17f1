#pragma once

#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <optional>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The catalogue as QML sees it: pages, rows and variable maps. All functions acquire the value lock
/// themselves.

/// The titles of the pages.
QVariantList PageTitles(const ConfigParser& catalogue);

/// A row of a page: a heading (index -1) or a variable.
struct PageRow {
  QString label;
  int kind = 0;  ///< component type
  int group = 0;
  int index = -1;
};

/// The rows of one page; empty if there is no such page. Each group begins with a heading, followed by its
/// variables by position, in file order where positions are equal. The switch half of a switch row is not a
/// row of its own.
std::vector<PageRow> RowsOfPage(const ConfigParser& catalogue, int page);

/// The rows of each page, each row being [label, component kind, page, group, variable index].
QVariantList PageRows(const ConfigParser& catalogue);

/// The map of one variable; its keys are the field names of the model table, and
/// - "edited": changed by the user and not yet saved, the variable or its switch;
/// - "origin": where the text comes from: "default", "read", "edited", "sent", "verified" or "differs";
/// - "read_time": when the sensor last reported the variable, as ISO text in UTC; empty if it has not.
QVariantMap VariableMap(const Model& model, const VarInfo& var);

/// `time` as ISO text in UTC; empty if there is none.
QString IsoTime(const std::optional<ValueStore::Time>& time);

/// The field of view's angles in degrees, with one decimal.
QVariantList AngleTexts(const FovAngles& angles);

/// The labels of the variable's options, in order; the number itself where the table has no label.
QVariantList OptionLabels(const VarInfo& var);
QVariantList OptionValues(const VarInfo& var);

/// The text as a row shows it: the option's label if the table has one.
QString ShownText(const VarInfo& var, const std::string& text);

/// Maps of all variables: [page][group][index].
QVariantList VariableMaps(const Model& model);

/// The firmware versions among the variables of the pages: maps with "label" and "value", which is "not read"
/// until this sensor has reported it.
QVariantList InstalledVersions(const Model& model);

/// Names of the logs that can be downloaded individually: variables that are on no page, have a get command
/// and a name ending in "Log"; except the operation log, which is downloaded as an archive.
QVariantList DownloadableLogs(const ConfigParser& catalogue);

/// The variable at [page][group][index], or null.
VarInfo* VariableAt(const ConfigParser& catalogue, int page, int group, int index);

}  // namespace varkel
