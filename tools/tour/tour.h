#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

class MainWindow;

/// A walk through the program without a user, for machines that have no screen to look at.
namespace tour {

/// What "--tour DIR" and "--connect HOST:PORT" asked for.
struct Plan {
  QString folder;  ///< absolute
  QString host;    ///< empty: as the settings say
  QString port;
};

/// Nothing when the arguments ask for no tour.
std::optional<Plan> PlanFromArguments(const QStringList& arguments);

/// Connects, shows every page until it is read and refreshed twice, writes a picture of each into the folder
/// and its rows to standard output ("Page / Group / Label: value"), disconnects. The program's exit code: 0,
/// or 1 with a sentence on standard error. Drives the window by the names of its controls, as a user does by
/// sight.
int Run(MainWindow& window, const Plan& plan);

}  // namespace tour
