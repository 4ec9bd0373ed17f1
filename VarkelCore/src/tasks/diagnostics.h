#pragma once

#include <QDebug>

#include "libquarn/Platform/src/trace.h"

namespace varkel {

/// Diagnostics for users who run the tool from a terminal: Qt's debug output and standard output.
/// Thread-safe.

/// A line of Qt's debug output: the parts separated by spaces, QStrings in quotes.
template <typename... Parts>
void DebugLine(const Parts&... parts) {
  (qDebug() << ... << parts);
}

/// The same without the quotes.
template <typename... Parts>
void PlainDebugLine(const Parts&... parts) {
  (qDebug().noquote() << ... << parts);
}

using quarn::platform::TraceLine;

}  // namespace varkel
