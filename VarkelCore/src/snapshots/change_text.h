#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "VarkelCore/src/state/sensor_change.h"

namespace varkel {

// What the window says about a change.

/// "verified", "the sensor holds 40", "refused, code 7" and so on.
QString OutcomeText(const ChangeOutcome& change);

/// What is about to be written, and what is left as it is for its unsaved edits.
QString PlanText(const std::vector<ChangeOutcome>& changes, const QStringList& edited);

/// How many changes came to what.
QString SummaryText(const RunReport& run);

/// Why nothing was written, or what ended the run early; empty when nothing did.
QString ProblemText(const ChangeResult& result);

}  // namespace varkel
