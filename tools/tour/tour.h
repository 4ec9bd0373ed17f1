#pragma once

#include <QString>

class MainWindow;

/// A walk through the program without a user, for machines without a screen.
namespace tour {

struct Plan {
  QString folder;  ///< for the pictures, absolute
  QString host;    ///< empty: as the settings say
  QString port;
};

/// Connects, shows every page until it is read and has been refreshed twice, writes a picture of each to the
/// folder and its rows to standard output ("Page / Group / Label: value"), and disconnects. Returns the exit
/// code: 0, or 1 after a sentence on standard error. Finds the window's controls by name.
int Run(MainWindow& window, const Plan& plan);

}  // namespace tour
