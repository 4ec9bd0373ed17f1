#include "app/src/startup.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QStandardPaths>
#include <algorithm>

namespace startup {

QPalette DarkPalette() {
  const struct {
    QPalette::ColorRole role;
    QColor colour;
  } kColours[] = {
      {QPalette::WindowText, QColor("#EEEEEE")},
      {QPalette::Button, QColor("#3A3D3F")},
      {QPalette::Light, QColor("#666666")},
      {QPalette::Midlight, QColor("#4D4D4D")},
      {QPalette::Dark, QColor("#222325")},
      {QPalette::Mid, QColor("#2B2C2E")},
      {QPalette::Text, QColor("#EEEEEE")},
      {QPalette::BrightText, QColor("#EEEEEE")},
      {QPalette::ButtonText, QColor("#EEEEEE")},
      {QPalette::Base, QColor(1, 1, 1, 255)},
      {QPalette::Window, QColor("#2B2C2E")},
      {QPalette::Highlight, QColor("#999999")},
      {QPalette::HighlightedText, QColor("#EEEEEE")},
      {QPalette::AlternateBase, QColor(1, 1, 1, 255)},
      {QPalette::ToolTipBase, QColor("#010101")},
      {QPalette::PlaceholderText, QColor("#EEEEEE")},
  };
  QPalette palette;
  for (const auto& entry : kColours) {
    palette.setBrush(QPalette::All, entry.role, QBrush(entry.colour, Qt::SolidPattern));
  }
  return palette;
}

double ScaleFactor(const quarn::platform::ScreenMetrics& metrics) {
  constexpr double kLargestUnscaledDpi = 1.25;
  constexpr double kShareOfDesktopScale = 0.8;
  constexpr double kDesignWidth = 1920.0;
  if (metrics.logical_width <= 0 || metrics.logical_height <= 0) {
    return 1.0;
  }
  const auto rx = static_cast<float>(static_cast<double>(metrics.physical_width) / metrics.logical_width);
  const auto ry = static_cast<float>(static_cast<double>(metrics.physical_height) / metrics.logical_height);
  const float dpi = std::min(rx, ry);
  const double scale = dpi > kLargestUnscaledDpi ? dpi * kShareOfDesktopScale
                                                 : std::max(1.0, metrics.logical_width / kDesignWidth);
  qDebug() << "main"
           << "dpi=" << dpi << "scale=" << scale;
  return scale;
}

QString InstallRoot(const QString& application_dir) {
  const QDir program(application_dir);
  const QDir parent(QDir::cleanPath(program.absoluteFilePath("..")));
  if (parent.exists(kRegularFont)) {
    return parent.absolutePath();
  }
  if (program.exists(kRegularFont)) {
    return program.absolutePath();
  }
  qWarning() << "[Varkel] install root heuristic: missing" << kRegularFont << "in" << application_dir << "and"
             << parent.absolutePath() << "\u2014 using parent of exe dir:" << parent.absolutePath();
  return parent.absolutePath();
}

void SetIdentity() {
  QCoreApplication::setOrganizationName("QuarnTech");
  QCoreApplication::setOrganizationDomain("quarntech.example");
  QCoreApplication::setApplicationVersion(VARKEL_VERSION);
}

QString LogFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

int loadApplicationFont(const QString& path, const QString& tag) {
  const QFileInfo file(path);
  if (!file.exists() || !file.isFile()) {
    qWarning() << "[Varkel] Font file missing:" << tag << "absolutePath:" << file.absoluteFilePath();
    return -1;
  }
  const int id = QFontDatabase::addApplicationFont(path);
  if (id < 0) {
    qWarning() << "[Varkel] addApplicationFont failed:" << tag << "absolutePath:" << file.absoluteFilePath()
               << "id:" << id;
  }
  return id;
}

QFont LoadFonts() {
  loadApplicationFont(kBoldFont, "Roboto-Bold");
  const int regular = loadApplicationFont(kRegularFont, "Roboto-Regular");
  QFont font;
  if (regular >= 0) {
    const QStringList families = QFontDatabase::applicationFontFamilies(regular);
    if (families.isEmpty()) {
      qWarning() << "[Varkel] applicationFontFamilies empty for"
                 << "Roboto-Regular absolutePath:" << QFileInfo(kRegularFont).absoluteFilePath();
    } else {
      font.setFamily(families.first());
    }
  }
  return font;
}

}  // namespace startup
