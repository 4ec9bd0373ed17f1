#include "app/src/application.h"

#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QIcon>

#include "app/src/arguments.h"
#include "app/src/log_file.h"
#include "app/src/main_window.h"
#include "app/src/startup.h"
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

void SetIcon() {
  const QFileInfo icon(startup::kWindowIcon);
  if (icon.exists()) {
    QApplication::setWindowIcon(QIcon(icon.filePath()));
  } else {
    qWarning() << "[Varkel] Window icon missing absolutePath:" << icon.absoluteFilePath();
  }
}

void StartLogger(const LogFile& file) {
  if (file.path().isEmpty() || !log_lib::Logger::GetInstance().Start(file.path().toStdString())) {
    qWarning() << "[Varkel] No log file in" << startup::LogFolder();
  }
}

int RunWindow(const QPalette& palette, const QString& module_name,
              const std::function<int(MainWindow&)>& run) {
  MainWindow window(nullptr, module_name);
  window.setPalette(palette);
  window.show();
  return run(window);
}

}  // namespace

int RunApplication(int argc, char* argv[], const std::function<int(MainWindow&)>& run) {
  const QPalette palette = startup::DarkPalette();
  SetScale();
  const QApplication application(argc, argv);
  GoToInstallRoot();
  const QFont font = startup::LoadFonts();
  QApplication::setPalette(palette);
  QApplication::setFont(font);
  startup::SetIdentity();
  SetIcon();
  const LogFile log_file(startup::LogFolder());
  StartLogger(log_file);
  const QString module_name = arguments::ModuleName({argv, static_cast<std::size_t>(argc)});
  const int result = RunWindow(palette, module_name, run);
  log_lib::Logger::GetInstance().Stop();
  return result;
}
