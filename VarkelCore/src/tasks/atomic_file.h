#pragma once

#include <QString>
#include <cstdint>
#include <span>

namespace varkel {

enum class WriteResult { kWritten, kNotOpened, kNotWritten };

/// Whether `path` may be written: it is a regular file, a link to one, or does not exist. A device node or a
/// pipe must be neither opened, which could block forever, nor replaced.
bool IsWritableTarget(const QString& path);

/// Writes a file so that `path` holds either its old content or all of `bytes`, whatever happens: the bytes
/// are written to a temporary file in the same folder, which replaces `path` once it is complete and on disk.
WriteResult WriteAtomically(const QString& path, std::span<const std::uint8_t> bytes);

/// Renames `from` to `to` in one step, replacing any regular file of that name. On Windows it waits up to 200
/// ms for other programs to close that file. False if it fails.
bool ReplaceFile(const QString& from, const QString& to);

/// `name` with "_" in place of every character that some system forbids in file names, that separates
/// folders, or that is invisible; cut to a length that leaves room for a time stamp and an extension.
QString SanitizedFileName(const QString& name);

}  // namespace varkel
