#pragma once

#include <QString>
#include <span>

/// The program's command line; argument 0 is the program's name.
namespace arguments {

/// The text after the first "-moduleVM=" (case-sensitive); empty if there is none.
QString ModuleName(std::span<char* const> arguments);

/// Prints the help or the version and ends the process with 0 if the arguments ask for either. Ignores all
/// other arguments, including options that only a host program knows. Needs no display; call before creating
/// the application object.
void AnswerHelpAndVersion(std::span<char* const> arguments);

}  // namespace arguments
