#pragma once

#include <functional>

class MainWindow;

/// Sets up the process (scale, install root as the current directory, fonts, colours, identity, log file),
/// opens the window for the model named in the arguments and returns the result of `run`. Call once per
/// process.
int RunApplication(int argc, char* argv[], const std::function<int(MainWindow&)>& run);
