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

enum Argument {
  kModel = 1,
  kFirstPlace,
  kSecondPlace,
  kOperation,
  kMoment,
  kEnding,
  kWait,
  kWindow,
  kFolder,
  kArguments
};

struct Place {
  int page = -1;
  int group = -1;
  int index = -1;
};

Place Find(const VarkelManager& manager, const QString& var_name) {
  const QVariantList pages = manager.myMap();
  for (int page = 0; page < pages.size(); ++page) {
    const QVariantList groups = pages[page].toList();
    for (int group = 0; group < groups.size(); ++group) {
      const QVariantList vars = groups[group].toList();
      for (int index = 0; index < vars.size(); ++index) {
        if (vars[index].toMap().value("var_name") == var_name) return {page, group, index};
      }
    }
  }
  return {};
}

class Driver : public QObject {
 public:
  explicit Driver(const QStringList& arguments)
      : arguments_(arguments), manager_(new VarkelManager(true, "./Config/varID/Quenta.csv")) {
    const QString model = arguments_[kModel];
    if (arguments_[kWindow] == "1") {
      window_ = std::make_unique<MainWindow>(nullptr, model, manager_);
      window_->show();
    } else {
      manager_->InitConfigFileParser(model);
    }
    manager_->set_ip_address(arguments_[kFirstPlace]);
    manager_->set_port(arguments_[kSecondPlace]);
    manager_->set_serial_port_485(arguments_[kFirstPlace]);
    manager_->set_serial_port_232(arguments_[kSecondPlace]);
    connect(manager_, &VarkelManager::isConnectedChanged, this, [this] { Begin(); });
    connect(manager_, &VarkelManager::errorMessageChanged, this, [this] {
      if (!begun_) QTimer::singleShot(kMomentMs, this, [this] { manager_->ConnectLidar(); });
    });
    manager_->ConnectLidar();
    if (arguments_[kOperation] == "connect") Begin();
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
  static constexpr int kMomentMs = 100;

  QUrl InFolder(const char* name) const { return QUrl::fromLocalFile(arguments_[kFolder] + '/' + name); }

  void Begin() {
    const QString operation = arguments_[kOperation];
    if (begun_ || (operation != "connect" && !manager_->IsConnected())) return;
    begun_ = true;
    std::cout << "begun" << std::endl;
    const auto place = [this](const char* name) { return Find(*manager_, name); };
    const std::map<QString, std::function<void()>> operations = {
        {"connect", [] {}},
        {"page", [this] { manager_->ReadPageInBackground(2); }},
        {"refresh", [this] { manager_->setModuleIndexUse(1); }},
        {"save",
         [&] {
           const Place edit = place("Intensity Threshold");
           manager_->SetText(1, edit.page, edit.group, edit.index, "77");
           manager_->RunInBackground(edit.page);
         }},
        {"console", [this] { manager_->SendCommandInBackground("07", ""); }},
        {"restart", [this] { manager_->RestartInBackground(); }},
        {"reset", [this] { manager_->ResetInBackground(); }},
        {"operation-log", [this] { manager_->DownloadOperationLog(InFolder("log.tar")); }},
        {"log", [this] { manager_->DownloadLog(InFolder("logs"), "Fault Log"); }},
        {"upgrade",
         [&] {
           const Place row = place("Firmware Upgrade");
           manager_->UpgradeLidar(InFolder("package"), row.page, row.group, row.index);
         }},
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
    operations.at(operation)();
    QTimer::singleShot(arguments_[kMoment].toInt(), this, [this] { End(); });
  }

  void End() {
    const QString ending = arguments_[kEnding];
    if (ending == "close") return Close();
    if (ending == "model") {
      manager_->InitConfigFileParser(arguments_[kModel] == "Quenta" ? "Zelto-KTC" : "Quenta");
    } else {
      manager_->Stop();
    }
    if (ending == "reconnect") manager_->ConnectLidar();
    QTimer::singleShot(arguments_[kWait].toInt(), this, [this] { Close(); });
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

  const QStringList arguments_;
  VarkelManager* const manager_;
  std::unique_ptr<MainWindow> window_;
  bool begun_ = false;
  QElapsedTimer clock_;  ///< since the closing began
  double waited_ms_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  if (QCoreApplication::arguments().size() != kArguments) return 2;
  Driver driver(QCoreApplication::arguments());
  return QApplication::exec();
}
