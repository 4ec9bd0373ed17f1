#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include "tests/core/core_test.h"

namespace {

class FirmwareUpgradeTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    bench_ = std::make_unique<Bench>();
    QVERIFY(bench_->ConnectOn());
  }

  void PackageArrivesAndTheNewVersionIsReported() {
    VarkelManager& manager = *bench_->manager;
    QCOMPARE(manager.upgradeProgressTotalLen(), 1);
    QSignalSpy upgrading(&manager, &VarkelManager::isUpgradingChanged);
    const QUrl file = Package(3 * 1024 + 100);
    QElapsedTimer entry;
    entry.start();
    QCOMPARE(Upgrade(file), 0);
    QVERIFY(entry.elapsed() < 200);  // the wait ahead of the transfer is the worker's
    QVERIFY(manager.IsUpgrading());
    QCOMPARE(manager.upgradeProgressTotalLen(), 3);
    QCOMPARE(Upgrade(file), -1);
    manager.setIsDownloadLog(true);
    manager.Run(2);
    QCOMPARE(bench_->NextError(), "Please wait for the lidar to upgrade completely");
    manager.setIsDownloadLog(false);
    QCOMPARE(bench_->NextSuccess(),
             "Upgrade package transmitted successfully. The lidar will automatically reboot within 10 "
             "seconds.");
    QCOMPARE(upgrading.count(), 2);
    QCOMPARE(manager.upgradeProgress(), 4);
    QFile sent(file.toLocalFile());
    QVERIFY(sent.open(QIODevice::ReadOnly));
    const auto received = bench_->sensor->ReceivedPackage();
    QVERIFY(sent.readAll() ==
            QByteArray(reinterpret_cast<const char*>(received.data()), int(received.size())));
    QTRY_VERIFY_WITH_TIMEOUT(!manager.IsConnected(), 15000);  // the restart, 10 seconds later
    QVERIFY(bench_->errors.isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(bench_->sensor->restarts() == 1 && bench_->Connect(), 15000);
    manager.GetLidarModuleInfo(0);
    QCOMPARE(bench_->Shown("Firmware Version"), "4.1.2.9 (2027-03-04)");
  }

  void RefusedPieceEndsTheTransfer() {
    bench_->sensor->Misbehave("0x60=error:7#2");
    QCOMPARE(Upgrade(Package(4000)), 0);
    QCOMPARE(bench_->NextError(), "Upgrade package transfer failed or is terminated.");
    QTRY_COMPARE(bench_->log.last(), "INFO Upgrade package transfer failed or is terminated.");
    QVERIFY(!bench_->manager->IsUpgrading());
    QCOMPARE(bench_->sensor->Received(0x60).size(), 2U);
    QVERIFY(bench_->manager->IsConnected());
  }

  void RefusalsOfTheEntry() {
    QCOMPARE(Upgrade(QUrl::fromLocalFile(folder_.filePath("missing.patch"))), 0);
    QVERIFY(!bench_->manager->IsUpgrading());
    QCOMPARE(bench_->manager->UpgradeLidar(Package(10), 0, 0, 0), 0);  // a row that takes no package
    QVERIFY(!bench_->manager->IsUpgrading());
    bench_->manager->setIsDownloadLog(true);
    QCOMPARE(Upgrade(Package(10)), -1);
    bench_->manager->setIsDownloadLog(false);
    bench_->manager->Stop();
    QCOMPARE(Upgrade(Package(10)), -1);
    QVERIFY(bench_->errors.isEmpty());
  }

  void RestartAndReset() {
    VarkelManager& manager = *bench_->manager;
    for (const char* refusal : {"0x25=error:4", "0x10=error:4"}) bench_->sensor->Misbehave(refusal);
    QCOMPARE(manager.Reset(), 4);
    QCOMPARE(bench_->NextError(), "Reset failed, ret_code: 4.");
    QCOMPARE(manager.Restart(), 4);
    QCOMPARE(bench_->NextError(), "Auto reboot failed, ret_code: 4. Please reboot lidar manually.");
    bench_->sensor->Behave();
    QCOMPARE(manager.Reset(), 0);
    QVERIFY(manager.IsConnected());
    init();
    QCOMPARE(bench_->manager->Restart(), 0);
    QVERIFY(!bench_->manager->IsConnected());
  }

  void ClosingDuringATransferIsQuick() {
    bench_->sensor->Misbehave("0x60=silence#3");
    QCOMPARE(Upgrade(Package(20000)), 0);
    QVERIFY(bench_->sensor->WaitReceived(0x60, 3, std::chrono::seconds(10)));
    QElapsedTimer timer;
    timer.start();
    bench_->manager.reset();
    QVERIFY(timer.elapsed() < 1000);
  }

 private:
  QUrl Package(int size) const {
    QFile file(folder_.filePath("new.patch"));
    QByteArray content = "VARKEL-SIM FIRMWARE 4.1.2.9 2027-03-04\n";
    while (content.size() < size) content.append(static_cast<char>(content.size() * 7));
    if (file.open(QIODevice::WriteOnly)) file.write(content);
    return QUrl::fromLocalFile(file.fileName());
  }
  int Upgrade(const QUrl& file) {
    const auto place = bench_->Find("Firmware Upgrade");
    return bench_->manager->UpgradeLidar(file, place.page, place.group, place.index);
  }

  QTemporaryDir folder_;
  std::unique_ptr<Bench> bench_;
};

const RegisterTest<FirmwareUpgradeTest> registered;

}  // namespace

#include "firmware_upgrade_test.moc"
