#pragma once

#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <string>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/values/pending_edits.h"

namespace varkel {

/// The catalogue as QML sees it: pages, rows and variable maps. All functions take the value lock themselves.

/// The titles of the pages.
QVariantList PageTitles(const ConfigParser& catalogue);

/// Per page its rows, each [label, component kind, page, group, variable index]. A group opens with a heading
/// (kind 0, index -1); its variables follow by position, in file order where equal. The switch half of a
/// switch row is not a row of its own.
QVariantList PageRows(const ConfigParser& catalogue);

/// One variable; its keys are the field names of the model table, and "edited": changed by the user and not
/// yet saved, the variable or its switch.
QVariantMap VariableMap(const ConfigParser& catalogue, const VarInfo& var, const PendingEdits& edits);

/// The values in that map, as one text.
QString ValueMark(const ConfigParser& catalogue, const VarInfo& var);

/// Two of the map's entries, for a caller who holds the value lock: "switch_index" and "edited".
std::string SwitchValue(const VarInfo& var);
bool IsShownEdited(const VarInfo& var, const PendingEdits& edits);

/// Maps of all variables: [page][group][index].
QVariantList VariableMaps(const ConfigParser& catalogue, const PendingEdits& edits);

/// Names of the logs that can be downloaded one by one: variables kept off the pages that have a get command
/// and whose name ends in "Log", but for the operation log, which is downloaded as an archive.
QVariantList DownloadableLogs(const ConfigParser& catalogue);

/// The variable at [page][group][index], or null.
VarInfo* VariableAt(const ConfigParser& catalogue, int page, int group, int index);

}  // namespace varkel
