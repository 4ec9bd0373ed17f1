#pragma once

#include <QString>
#include <cstdint>
#include <span>

namespace varkel {

enum class WriteResult { kWritten, kNotOpened, kNotWritten };

/// Writes a file so that, whatever happens meanwhile, `path` holds either what it held before or all of
/// `bytes`: they go to a temporary file beside it, which takes its place when it is complete and on the disk.
WriteResult WriteWholeFile(const QString& path, std::span<const std::uint8_t> bytes);

/// Gives the file `from` the name `to` in one step, in place of a file that has it. False when it can't.
bool MoveOver(const QString& from, const QString& to);

/// `name` as a part of a file name on every system: what would lead out of the folder, name a device or a
/// stream, is not allowed or can't be seen becomes "_", and it is cut to a length that leaves room for more.
QString FileNamePart(const QString& name);

}  // namespace varkel
