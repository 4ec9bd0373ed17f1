#pragma once

#include <QString>
#include <span>

/// The program's command line: argument 0 is the program's name.
namespace arguments {

/// The model after the first "-moduleVM=", exactly so written; empty if there is none.
QString ModuleName(std::span<char* const> arguments);

/// Prints the help or the version and ends the process with 0 if the arguments ask for either. Everything
/// else, an option that only a host program knows too, is left alone. Needs no display, and that no
/// application object exists yet.
void AnswerHelpAndVersion(std::span<char* const> arguments);

}  // namespace arguments
