#pragma once

#include <QString>
#include <QVariantList>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The unit alone: "rpm" for the table's " (rpm)".
QString BareUnit(const VarInfo& var);

/// The details of a variable, as maps of "caption" and "text": always the same captions in the same order,
/// some texts possibly empty.
QVariantList VariableDetails(const Model& model, const VarInfo& var);

}  // namespace varkel
