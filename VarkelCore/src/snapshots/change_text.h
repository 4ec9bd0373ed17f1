#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "VarkelCore/src/state/sensor_change.h"

namespace varkel {

// Texts about a change, for the window.

/// "verified", "the sensor holds 40", "refused, code 7" and so on.
QString OutcomeText(const ChangeOutcome& change);

/// What is about to be written, and what is left out because it has unsaved edits.
QString PlanText(const std::vector<ChangeOutcome>& changes, const QStringList& edited);

/// The number of changes with each outcome.
QString SummaryText(const RunReport& run);

/// Why nothing was written, or what ended the run early; empty if it was complete.
QString ProblemText(const ChangeResult& result);

}  // namespace varkel
