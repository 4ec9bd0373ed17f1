#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>
#include <functional>
#include <map>

#include "VarkelCore/src/varkel_manager.h"

namespace varkel {

using BackgroundCall = std::function<QVariant(VarkelManager&, const QVariantList&)>;

/// The small sensors' functions of the controller's face that may run on a worker, by name.
const std::map<QString, BackgroundCall>& BackgroundCalls();

}  // namespace varkel
