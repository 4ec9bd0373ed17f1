// The tool with nobody at it: starts one long operation and, a while later, ends it in some way.
#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <functional>
#include <iostream>
#include <map>
#include <memory>

#include "VarkelCore/src/varkel_manager.h"
#include "app/src/main_window.h"
#include "tests/endurance/figures.h"

namespace {

/// Arguments: model, the two places of its sensor (address and port, or two lines), operation, milliseconds
/// until the ending, the ending, milliseconds until the closing, "1" for a window, a folder for files.
class Driver : public QObject {
 public:
  explicit Driver(const QStringList& arguments)
      : model_(arguments[1]),
        operation_(arguments[4]),
        moment_ms_(arguments[5].toInt()),
        ending_(arguments[6]),
        wait_ms_(arguments[7].toInt()),
        folder_(arguments[9]),
        manager_(new VarkelManager(true, "./Config/varID/Quenta.csv")) {
    if (arguments[8] == "1") {
      window_ = std::make_unique<MainWindow>(nullptr, model_, manager_);
      window_->show();
    } else {
      manager_->InitConfigFileParser(model_);
    }
    manager_->set_ip_address(arguments[2]);
    manager_->set_port(arguments[3]);
    manager_->set_serial_port_485(arguments[2]);
    manager_->set_serial_port_232(arguments[3]);
    connect(manager_, &VarkelManager::isConnectedChanged, this, [this] { Begin(); });
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] { next_(); });
    connect(manager_, &VarkelManager::errorMessageChanged, this, [this] {
      if (!begun_) After(kRetryMs, [this] { manager_->ConnectLidar(); });
    });
    manager_->ConnectLidar();
    if (operation_ == "connect") Begin();
  }
  ~Driver() override {
    if (window_) {
      window_.reset();  // deletes the controller
    } else {
      delete manager_;
    }
    std::cout << "\nleft " << static_cast<double>(clock_.elapsed()) - WaitedForCoreMs() + waited_ms_
              << std::endl;
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

 private:
  static constexpr int kRetryMs = 100;  // a busy machine may miss the time for an attempt

  QUrl InFolder(const char* name) const { return QUrl::fromLocalFile(folder_ + '/' + name); }

  void After(int duration_ms, std::function<void()> next) {
    next_ = std::move(next);
    timer_.start(duration_ms);
  }

  void Begin() {
    if (begun_ || (operation_ != "connect" && !manager_->IsConnected())) return;
    begun_ = true;
    std::cout << "begun" << std::endl;
    const std::map<QString, std::function<void()>> operations = {
        {"connect", [] {}},
        {"page", [this] { manager_->ReadPageInBackground(2); }},
        {"refresh", [this] { manager_->setModuleIndexUse(1); }},
        {"save",
         [this] {
           manager_->SetText(1, 4, 3, 0, "77");
           manager_->RunInBackground(4);
         }},
        {"console", [this] { manager_->SendCommandInBackground("07", ""); }},
        {"restart", [this] { manager_->RestartInBackground(); }},
        {"reset", [this] { manager_->ResetInBackground(); }},
        {"operation-log", [this] { manager_->DownloadOperationLog(InFolder("log.tar")); }},
        {"log", [this] { manager_->DownloadLog(InFolder("logs"), "Fault Log"); }},
        {"upgrade", [this] { manager_->UpgradeLidar(InFolder("package"), 6, 1, 0); }},
        {"function",
         [this] {
           manager_->CallInBackground("ZeltoGetLidarFunctionSafety", {});
           manager_->CallInBackground("ZeltoGetDestinationConfig", {false});
         }},
        {"zelto-upgrade", [this] { manager_->ZeltoUpgradeLidar(InFolder("package")); }},
        {"box-upgrade",
         [this] {
           manager_->ZeltoSetUpgradeMode(2);
           manager_->ZeltoUpgradeLidar(InFolder("package"));
         }},
        {"marvo-upgrade", [this] { manager_->MarvoUpgradeLidar(InFolder("package")); }}};
    operations.at(operation_)();
    After(moment_ms_, [this] { End(); });
  }

  void End() {
    if (ending_ == "close") return Close();
    if (ending_ == "model") {
      manager_->InitConfigFileParser(model_ == "Quenta" ? "Zelto-KTC" : "Quenta");
    } else {
      manager_->Stop();
    }
    if (ending_ == "reconnect") manager_->ConnectLidar();
    After(wait_ms_, [this] { Close(); });
  }

  void Close() {
    waited_ms_ = WaitedForCoreMs();
    clock_.start();
    std::cout << "\nclosing " << clock_.msecsSinceReference() << std::endl;
    if (window_) {
      window_->close();
    } else {
      QCoreApplication::quit();
    }
  }

  const QString model_;
  const QString operation_;
  const int moment_ms_;
  const QString ending_;
  const int wait_ms_;
  const QString folder_;
  VarkelManager* const manager_;
  std::unique_ptr<MainWindow> window_;
  bool begun_ = false;
  QTimer timer_;
  std::function<void()> next_;
  QElapsedTimer clock_;  ///< since the closing began
  double waited_ms_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  if (QCoreApplication::arguments().size() != 10) return 2;
  Driver driver(QCoreApplication::arguments());
  return QApplication::exec();
}
