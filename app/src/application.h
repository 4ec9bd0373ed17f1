#pragma once

#include <functional>

class MainWindow;

/// Sets the process up (scale, install root as the current directory, fonts, colours, identity, log file),
/// opens the window for the model that the arguments name and returns what `run` makes of it. Once per
/// process.
int RunApplication(int argc, char* argv[], const std::function<int(MainWindow&)>& run);
