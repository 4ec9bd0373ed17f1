#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QStandardPaths>
#include <optional>

#include "app/src/main_window.h"
#include "app/src/startup.h"
#include "app/src/tour.h"
#include "libquarn/Platform/src/logger.h"

namespace {

// The program scales itself, so Qt's own scaling must be off and the factor set before the application
// exists.
void SetScale() {
  QApplication::setAttribute(Qt::AA_DisableHighDpiScaling);
  const double scale =
      startup::ScaleFactor(quarn::platform::ReadScreenMetrics().value_or(quarn::platform::ScreenMetrics{}));
  qputenv("QT_SCALE_FACTOR", QByteArray::number(scale, 'g', 6));
}

void GoToInstallRoot() {
  const QString application_dir = QCoreApplication::applicationDirPath();
  const QString root = startup::InstallRoot(application_dir);
  QDir::setCurrent(root);
  qDebug() << "[Varkel] applicationDirPath:" << application_dir << "installRoot:" << root;
}

void SetIdentity() {
  QCoreApplication::setOrganizationName("QuarnTech");
  QCoreApplication::setOrganizationDomain("quarntech.example");
  QCoreApplication::setApplicationVersion(VARKEL_VERSION);
}

void SetIcon() {
  const QFileInfo icon(startup::kWindowIcon);
  if (icon.exists()) {
    QApplication::setWindowIcon(QIcon(icon.filePath()));
  } else {
    qWarning() << "[Varkel] Window icon missing absolutePath:" << icon.absoluteFilePath();
  }
}

void StartLogger() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
  if (!QDir().mkpath(folder) ||
      !log_lib::Logger::GetInstance().Start(QDir(folder).filePath("varkel.log").toStdString())) {
    qWarning() << "[Varkel] No log file in" << folder;
  }
}

int RunWindow(const QPalette& palette, const QString& module_name, const std::optional<tour::Plan>& plan) {
  MainWindow window(nullptr, module_name);
  window.setPalette(palette);
  window.show();
  return plan ? tour::Run(window, *plan) : QApplication::exec();
}

}  // namespace

int main(int argc, char* argv[]) {
  const QPalette palette = startup::DarkPalette();
  SetScale();
  QApplication application(argc, argv);
  const auto plan = tour::PlanFromArguments(QCoreApplication::arguments());  // its folder is meant from here
  GoToInstallRoot();
  const QFont font = startup::LoadFonts();
  QApplication::setPalette(palette);
  QApplication::setFont(font);
  SetIdentity();
  SetIcon();
  StartLogger();
  const QString module_name = startup::ModuleName({argv, static_cast<std::size_t>(argc)});
  const int result = RunWindow(palette, module_name, plan);
  log_lib::Logger::GetInstance().Stop();
  return result;
}
