#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "VarkelCore/src/varkel_manager.h"

/// A long operation that a user starts and a sensor may leave unanswered.
struct Operation {
  QString name;
  std::function<void(VarkelManager&)> start;
};

/// All operations of a connected model. They read "package" from the folder and save downloads there and in
/// "logs".
std::vector<Operation> OperationsOf(const QString& model, const QString& folder);
