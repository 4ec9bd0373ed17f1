#pragma once

#include <QFont>
#include <QPalette>
#include <QString>

#include "libquarn/Platform/src/screen_metrics.h"

/// What the program settles before its window opens. All of it but loadApplicationFont works without a
/// window.
namespace startup {

inline constexpr char kBoldFont[] = "fonts/Roboto-Bold-3.ttf";
inline constexpr char kRegularFont[] = "fonts/Roboto-Regular-14.ttf";
inline constexpr char kWindowIcon[] = "png/Varkel-LOGO-black.svg";

/// The dark palette of the widgets; roles that it leaves out keep Qt's colours.
QPalette DarkPalette();

/// How much everything is enlarged: more than 1 on desktops that scale by more than 125 % or are wider than
/// 1920 logical pixels. Metrics without an area give 1.
double ScaleFactor(const quarn::platform::ScreenMetrics& metrics);

/// The folder that holds fonts, pictures and tables: the parent of the program's folder, or else the
/// program's folder itself; the parent when neither has them, with a warning.
QString InstallRoot(const QString& application_dir);

/// Tells Qt whose program this is and which version.
void SetIdentity();

/// Where the log file is.
QString LogFolder();

/// Registers a font file; returns its id, or -1 after a warning.
int loadApplicationFont(const QString& path, const QString& tag);

/// Registers the program's own fonts, and gives the application's: of the regular one's family, or Qt's own
/// after a warning.
QFont LoadFonts();

}  // namespace startup
