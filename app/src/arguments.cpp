#include "app/src/arguments.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QStringList>
#include <string_view>

#include "app/src/startup.h"

namespace arguments {

QString ModuleName(std::span<char* const> arguments) {
  constexpr std::string_view kPrefix = "-moduleVM=";
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string_view argument(arguments[i]);
    if (argument.starts_with(kPrefix)) {
      return QString::fromLocal8Bit(arguments[i] + kPrefix.size());
    }
  }
  return {};
}

void AnswerHelpAndVersion(std::span<char* const> arguments) {
  QCommandLineParser parser;
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  parser.setApplicationDescription("Inspects and configures a lidar sensor.");
  const QCommandLineOption help({"h", "help"}, "Shows this help.");
  const QCommandLineOption version({"v", "version"}, "Shows the version.");
  parser.addOptions({help, version});
  // Listed as a positional argument, because the parser would show an option with two dashes.
  parser.addPositionalArgument("-moduleVM=NAME", "Starts with the model NAME; no other can be selected.",
                               "[-moduleVM=NAME]");
  QStringList texts;
  for (const char* argument : arguments) {
    texts << QString::fromLocal8Bit(argument);
  }
  parser.parse(texts);
  if (!parser.isSet(help) && !parser.isSet(version)) {
    return;
  }
  int count = static_cast<int>(arguments.size());
  const QCoreApplication application(count, const_cast<char**>(arguments.data()));  // it names the program
  startup::SetIdentity();
  if (parser.isSet(version)) {
    parser.showVersion();
  }
  parser.showHelp();
}

}  // namespace arguments
