#pragma once

#include <QString>
#include <QStringList>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// What is wrong with a text typed for the variable, in a few words ("is not a number"); empty if it can be
/// sent. Ranges are checked later, where the user may override them.
QString TypingFault(const VarInfo& var, const std::string& text);

/// A sentence for each edit of the page whose text can't be sent.
QStringList TypingFaults(const Model& model, int page);

/// "Destination Port: 80, allowed 1024 to 65535" for each value of the page that fails the page check.
QStringList RangeFaults(const Model& model, int page);

}  // namespace varkel
