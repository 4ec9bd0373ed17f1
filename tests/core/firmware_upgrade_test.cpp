#include <QElapsedTimer>
#include <QTemporaryDir>

#include "tests/core/core_test.h"
#include "tests/support/qt_files.h"

namespace {

class FirmwareUpgradeTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    fixture_ = std::make_unique<ControllerFixture>();
    QVERIFY(fixture_->ConnectOn());
  }

  void EntryReturnsAtOnceAndNothingElseStarts() {
    VarkelManager& manager = *fixture_->manager;
    QCOMPARE(manager.upgradeProgressTotalLen(), 1);
    const QUrl file = Package(QByteArray(3 * 1024 + 100, 'x'));
    QElapsedTimer entry;
    entry.start();
    QCOMPARE(Upgrade(file), 0);
    QVERIFY(entry.elapsed() < 200);  // the worker does the waiting before the transfer
    QVERIFY(manager.IsUpgrading());
    QCOMPARE(manager.upgradeProgressTotalLen(), 3);
    QCOMPARE(Upgrade(file), -1);
    manager.Run(2);
    QCOMPARE(fixture_->NextError(), "Please wait for the lidar to upgrade completely");
    QVERIFY(fixture_->NextSuccess().startsWith("Upgrade package transmitted successfully. The lidar will"));
    QCOMPARE(manager.upgradeProgress(), 4);
    QVERIFY(fixture_->errors.isEmpty() && manager.IsConnected());  // the restart follows 10 seconds later
  }

  void PackageThatCannotBeReadWholeIsNotSent() {
    // Announces 4096 bytes and delivers fewer.
    QCOMPARE(Upgrade(QUrl::fromLocalFile("/sys/devices/system/cpu/online")), 0);
    QCOMPARE(fixture_->NextError(), "The upgrade package can't be read whole, so nothing was sent.");
    QVERIFY(!fixture_->manager->IsUpgrading());
    QVERIFY(fixture_->sensor->Received(0x60).empty());
  }

  void RefusalsOfTheEntry() {
    QCOMPARE(Upgrade(QUrl::fromLocalFile(folder_.filePath("missing.patch"))), 0);
    QCOMPARE(fixture_->manager->UpgradeLidar(Package("x"), 0, 0, 0), 0);  // a row that accepts no package
    QCOMPARE(Upgrade(Package("")), 0);
    QCOMPARE(fixture_->NextError(), "The upgrade package is empty.");
    QVERIFY(!fixture_->manager->IsUpgrading());
    fixture_->manager->setIsDownloadLog(true);
    QCOMPARE(Upgrade(Package("x")), -1);
    fixture_->manager->setIsDownloadLog(false);
    fixture_->manager->Stop();
    QCOMPARE(Upgrade(Package("x")), -1);
    QVERIFY(fixture_->errors.isEmpty());
  }

 private:
  QUrl Package(const QByteArray& content) const {
    Put(folder_.filePath("new.patch"), content);
    return QUrl::fromLocalFile(folder_.filePath("new.patch"));
  }
  int Upgrade(const QUrl& file) const {
    const auto place = fixture_->Find("Firmware Upgrade");
    return fixture_->manager->UpgradeLidar(file, place.page, place.group, place.index);
  }

  QTemporaryDir folder_;
  std::unique_ptr<ControllerFixture> fixture_;
};

const RegisterTest<FirmwareUpgradeTest> register_firmware_upgrade_test;

}  // namespace

#include "firmware_upgrade_test.moc"
