#pragma once

#include <QString>
#include <cstdint>
#include <span>

namespace varkel {

enum class WriteResult { kWritten, kNotOpened, kNotWritten };

/// Whether a file may be written at `path`: a regular file, a link to one, or nothing is there. A device node
/// or a pipe must neither be opened, which can block for ever, nor be replaced.
bool IsWritableTarget(const QString& path);

/// Writes a file so that `path` holds either its old content or all of `bytes`, whatever happens in between:
/// they go to a temporary file in the same folder, which replaces `path` once it is complete and on the disk.
WriteResult WriteAtomically(const QString& path, std::span<const std::uint8_t> bytes);

/// Renames `from` to `to` in one step, replacing a regular file of that name. On Windows it waits up to 200
/// ms for whoever has that file open. False if it fails.
bool ReplaceFile(const QString& from, const QString& to);

/// `name` with every character that no file name may hold on some system, that leads to another folder, or
/// that can't be seen replaced by "_", cut to a length that leaves room for a time stamp and an extension.
QString SanitizedFileName(const QString& name);

}  // namespace varkel
