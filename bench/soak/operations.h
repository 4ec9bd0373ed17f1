#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "VarkelCore/src/varkel_manager.h"

/// Something long that a user starts, and that a sensor may leave unanswered.
struct Operation {
  QString name;
  std::function<void(VarkelManager&)> start;
};

/// All of a connected model. They take "package" from the folder and put downloads there and into its "logs".
std::vector<Operation> OperationsOf(const QString& model, const QString& folder);
