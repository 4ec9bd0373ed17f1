#pragma once

#include <QString>

class MainWindow;

/// A walk through the program without a user, for machines that have no screen to look at.
namespace tour {

struct Plan {
  QString folder;  ///< for the pictures, absolute
  QString host;    ///< empty: as the settings say
  QString port;
};

/// Connects, shows every page until it is read and refreshed twice, writes a picture of each into the folder
/// and its rows to standard output ("Page / Group / Label: value"), disconnects. The program's exit code: 0,
/// or 1 with a sentence on standard error. Drives the window by the names of its controls, as a user does by
/// sight.
int Run(MainWindow& window, const Plan& plan);

}  // namespace tour
