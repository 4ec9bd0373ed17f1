#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace varkel::cli {

/// The manual page (roff) and the bash completion, generated from the parser's help.
std::string ManualPage(const CLI::App& app);
std::string BashCompletion(const CLI::App& app);

}  // namespace varkel::cli
