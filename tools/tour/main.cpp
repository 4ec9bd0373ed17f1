#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QTextStream>
#include <optional>

#include "app/src/application.h"
#include "app/src/startup.h"
#include "tools/tour/tour.h"

namespace {

// nullopt, after a sentence on standard error, if the arguments are not valid. Ends the process after --help.
std::optional<tour::Plan> ReadPlan(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  startup::SetIdentity();
  QCommandLineParser parser;
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  parser.setApplicationDescription(
      "Connects, reads every page of the sensor, prints its rows and puts a picture of each page into "
      "FOLDER.");
  parser.addHelpOption();
  const QCommandLineOption connect("connect", "Address of the sensor, if not the one in the settings.",
                                   "HOST:PORT");
  parser.addOption(connect);
  parser.addOption({"moduleVM", "The sensor's model; written -moduleVM=NAME.", "NAME"});
  parser.addPositionalArgument("FOLDER", "Folder for the pictures.");
  parser.process(application);
  if (parser.positionalArguments().size() != 1) {
    QTextStream(stderr) << "varkel-tour: give one folder for the pictures.\n";
    return std::nullopt;
  }
  const QString address = parser.value(connect);
  return tour::Plan{QDir::current().absoluteFilePath(parser.positionalArguments().first()),
                    address.section(':', 0, 0), address.section(':', 1, 1)};
}

}  // namespace

int main(int argc, char* argv[]) {
  const auto plan = ReadPlan(argc, argv);
  return plan ? RunApplication(argc, argv, [&plan](MainWindow& window) { return tour::Run(window, *plan); })
              : 2;
}
