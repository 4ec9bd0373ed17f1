#pragma once

#include <QString>
#include <QVariantList>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The unit alone: the table's " (rpm)" is "rpm".
QString BareUnit(const VarInfo& var);

/// What there is to know about a variable, as maps of "caption" and "text": always the same captions in the
/// same order, with an empty text where there is nothing to say.
QVariantList VariableDetails(const Model& model, const VarInfo& var);

}  // namespace varkel
