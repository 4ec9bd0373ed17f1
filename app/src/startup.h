#pragma once

#include <QFont>
#include <QPalette>
#include <QString>

#include "libquarn/Platform/src/screen_metrics.h"

/// Steps of the program's start-up before its window opens.
namespace startup {

inline constexpr char kBoldFont[] = "fonts/Roboto-Bold-3.ttf";
inline constexpr char kRegularFont[] = "fonts/Roboto-Regular-14.ttf";
inline constexpr char kWindowIcon[] = "png/Varkel-LOGO-black.svg";

/// The dark palette of the widgets; the other roles keep Qt's colours.
QPalette DarkPalette();

/// The scale factor of the user interface: more than 1 on desktops that scale by more than 125 % or are wider
/// than 1920 logical pixels. 1 if the metrics are empty.
double ScaleFactor(const quarn::platform::ScreenMetrics& metrics);

/// The folder with the fonts, pictures and tables: the parent of the program's folder, or the program's
/// folder itself. If neither has them, the parent, with a warning.
QString InstallRoot(const QString& application_dir);

/// Sets the organisation and the version of the application.
void SetIdentity();

/// The folder of the log file.
QString LogFolder();

/// Registers a font file; returns its id, or -1 after a warning.
int loadApplicationFont(const QString& path, const QString& tag);

/// Registers the program's own fonts, and returns the application font: the regular one's family, or Qt's
/// default after a warning.
QFont LoadFonts();

}  // namespace startup
