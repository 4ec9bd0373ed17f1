#pragma once

#include <QByteArray>
#include <QString>
#include <string>
#include <tl/expected.hpp>

#include "VarkelCore/src/state/sensor_state.h"

namespace varkel {

/// The version of the file format that this program writes; newer ones are not read.
inline constexpr int kStateFormat = 1;

/// Larger files are not read: a state of 10,000 variables takes 2 MiB.
inline constexpr qint64 kLargestStateFile = 32LL * 1024 * 1024;

/// One variable as a JSON object on one line; "live" is written only if true.
std::string FormatValue(const StateValue& value);

/// A state as JSON (UTF-8): keys in a fixed order, one variable per line.
std::string FormatState(const SensorState& state);

/// The error is a sentence with the location: line and column, or the key.
tl::expected<SensorState, std::string> ParseState(const QByteArray& json);

/// Writes the file atomically. Returns an empty text, or a sentence saying why it failed.
std::string SaveState(const SensorState& state, const QString& path);

/// Reads a regular file. The error is a sentence that begins with the path.
tl::expected<SensorState, std::string> LoadState(const QString& path);

}  // namespace varkel
