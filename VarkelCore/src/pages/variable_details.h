#pragma once

#include <QVariantList>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// What there is to know about a variable, as maps of "caption" and "text": always the same captions in the
/// same order, with an empty text where there is nothing to say.
QVariantList VariableDetails(const Model& model, const VarInfo& var);

}  // namespace varkel
