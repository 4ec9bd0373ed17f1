#include "cli/manual.h"

#include <utility>
#include <vector>

namespace varkel::cli {

namespace {

/// Escapes text for roff, where backslashes, hyphens and dots at the beginning of a line have a meaning.
std::string Roff(const std::string& text) {
  std::string roff;
  bool is_line_begin = true;
  for (const char c : text) {
    if (is_line_begin && (c == '.' || c == '\'')) roff += "\\&";
    if (c == '-' || c == '\\') roff += '\\';
    roff += c == '\\' ? "e" : std::string(1, c);
    is_line_begin = c == '\n';
  }
  return roff;
}

std::vector<const CLI::Option*> ShownOptions(const CLI::App& app) {
  std::vector<const CLI::Option*> shown;
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_group().empty()) shown.push_back(option);
  }
  return shown;
}

std::string Options(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* option : ShownOptions(app)) {
    const bool is_flag = option->get_expected_max() == 0;
    const bool is_positional = option->get_positional();
    text += ".TP\n.B " + Roff(is_positional ? option->get_type_name() : option->get_name(false, true));
    if (!is_flag && !is_positional) text += " " + Roff(option->get_type_name());
    text += "\n" + Roff(option->get_description()) + "\n";
  }
  return text;
}

std::string OptionNames(const CLI::App& app) {
  std::string names;
  for (const CLI::Option* option : ShownOptions(app)) {
    if (option->get_positional()) continue;
    for (const std::string& name : option->get_lnames()) names += " --" + name;
    for (const std::string& name : option->get_snames()) names += " -" + name;
  }
  return names;
}

/// The commands by what the user types; a subcommand follows its command's name.
std::vector<std::pair<std::string, const CLI::App*>> Commands(const CLI::App& app,
                                                              const std::string& before = {}) {
  std::vector<std::pair<std::string, const CLI::App*>> commands;
  for (const CLI::App* command : app.get_subcommands({})) {
    const std::string name = before + command->get_name();
    commands.emplace_back(name, command);
    const auto within = Commands(*command, name + " ");
    commands.insert(commands.end(), within.begin(), within.end());
  }
  return commands;
}

/// The words that may follow a command: its subcommands and options.
std::string Words(const CLI::App& command) {
  std::string words;
  for (const CLI::App* within : command.get_subcommands({})) words += " " + within->get_name();
  return words + OptionNames(command);
}

}  // namespace

std::string ManualPage(const CLI::App& app) {
  std::string text = ".TH VARKELCTL 1\n.SH NAME\nvarkelctl \\- " + Roff(app.get_description()) +
                     "\n.SH SYNOPSIS\n.B varkelctl\n[OPTIONS] COMMAND\n.SH OPTIONS\n" + Options(app) +
                     ".SH COMMANDS\n";
  for (const auto& [name, command] : Commands(app)) {
    text += ".SS " + Roff(name) + "\n" + Roff(command->get_description()) + "\n" + Options(*command);
  }
  return text + ".SH NOTES\n.nf\n" + Roff(app.get_footer()) + "\n.fi\n";
}

std::string BashCompletion(const CLI::App& app) {
  std::string names;
  std::string cases;
  for (const CLI::App* command : app.get_subcommands({})) names += " " + command->get_name();
  for (const auto& [name, command] : Commands(app)) {
    cases += "      " + command->get_name() + ") words=\"" + Words(*command) + "\" ;;\n";
  }
  return "_varkelctl() {\n"
         "  local word words=\"" +
         names +
         "\"\n"
         "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
         "    case $word in\n" +
         cases +
         "    esac\n"
         "  done\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words" +
         OptionNames(app) +
         "\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
         "}\n"
         "complete -o default -F _varkelctl varkelctl\n";
}

}  // namespace varkel::cli
