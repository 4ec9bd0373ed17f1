#include <QAbstractItemModel>
#include <QFile>

#include "tests/ui/window_driver.h"

namespace {

/// Opens the snapshots page with a snapshot of a sensor that has changed since.
class SnapshotsPageDriver : public WindowDriver {
 public:
  SnapshotsPageDriver() {
    if (!Connect()) qFatal("no connection");
    page = manager->level1List().size() + 2;
    QMetaObject::invokeMethod(root, "choosePage", Q_ARG(QVariant, page));
    snapshots = manager->snapshots();
    list = snapshots->property("list").value<QAbstractItemModel*>();
    differences = snapshots->property("differences").value<QAbstractItemModel*>();
    Find("snapshotsPage");
    Idle();
    QUrl folder_of_sensor;
    QMetaObject::invokeMethod(snapshots, "folder", Q_RETURN_ARG(QUrl, folder_of_sensor));
    file = QUrl(folder_of_sensor.toString() + "/good state.json");
    QFile::remove(file.toLocalFile());
    QMetaObject::invokeMethod(snapshots, "save", Q_ARG(QUrl, file));
    Idle();
    sensor.SetValue("Spin Rate", "1200");
    sensor.SetValue("Sync Angle", "45");
    sensor.SetValue("VLAN ID", "77");
  }
  ~SnapshotsPageDriver() { QFile::remove(file.toLocalFile()); }

  bool Idle() const {
    return QTest::qWaitFor([&] { return !snapshots->property("busy").toBool() && !manager->isWorking(); },
                           kPatienceMs);
  }
  /// Each row as "name|left|right|...|outcome".
  QStringList Rows() const {
    QStringList rows;
    const auto roles = differences->roleNames();
    for (int row = 0; row < differences->rowCount(); ++row) {
      QStringList texts;
      for (const char* role : {"name", "left", "right", "edited", "selected", "outcome"}) {
        texts += differences->index(row, 0).data(roles.key(role)).toString();
      }
      rows += texts.join('|');
    }
    return rows;
  }
  void DropSnapshot() const {
    QMetaObject::invokeMethod(Find("snapshotDrop"), "offered", Q_ARG(QUrl, file));
    if (!Idle()) qFatal("the comparison does not end");
  }

  int page = 0;
  QUrl file;
  QObject* snapshots = nullptr;
  QAbstractItemModel* list = nullptr;
  QAbstractItemModel* differences = nullptr;
};

class SnapshotsPageTest : public QObject {
  Q_OBJECT
 private slots:
  void AppliesWhatIsSelectedAndLeavesEditsAlone() {
    SnapshotsPageDriver driver;
    EVENTUALLY_VERIFY(driver.list->rowCount() >= 2);
    QVERIFY(driver.Find("snapshotRow_1")->property("reason").toString().contains("Saved"));
    const QString vlan = driver.Place(2, "VLAN ID");
    const QStringList place = vlan.split('_');
    driver.manager->SetText(1, place[0].toInt(), place[1].toInt(), place[2].toInt(), "42");
    driver.ShowPage(0);
    driver.DropSnapshot();
    driver.Find("snapshotsPage");
    QCOMPARE(driver.Rows().filter("VLAN"), QStringList("VLAN ID|1|77|true|false|"));
    driver.Click("onlySettableButton");
    QCOMPARE(driver.Rows().size(), 3);

    driver.sensor.AddFault("0x45=error:7");
    driver.Click("selectAllBox");
    QCOMPARE(driver.Text("snapshotOutcome"), QString("2 selected"));
    driver.Find("differenceList")->forceActiveFocus(Qt::TabFocusReason);
    driver.Key(Qt::Key_Space);  // the row with the edit
    QCOMPARE(driver.Text("snapshotOutcome"), QString("2 selected"));
    driver.Key(Qt::Key_Down);
    driver.Key(Qt::Key_Space);
    QCOMPARE(driver.Text("snapshotOutcome"), QString("1 selected"));
    driver.Key(Qt::Key_Space);
    driver.Click("applyButton");
    QVERIFY(driver.NoticeShows("messageWindow", "Spin Rate: 1200 → 600"));
    QVERIFY(driver.NoticeShows("messageWindow", "Left unchanged because of unsaved edits: VLAN ID."));
    QCOMPARE(driver.sensor.ValueText("Spin Rate"), std::string("1200"));
    driver.Click("noticeAcceptButton");
    EVENTUALLY_COMPARE(driver.Text("snapshotOutcome"), QString("1 written and verified, 1 refused."));
    QVERIFY(driver.Idle());
    QCOMPARE(driver.Rows().filter("Spin Rate").value(0),
             QString("Spin Rate|600 rpm (10 Hz)|1200 rpm (20 Hz)|false|false|verified"));
    QVERIFY(driver.Rows().filter("Sync Angle").value(0).endsWith("true|refused, code 7"));
    QCOMPARE(driver.sensor.ValueText("Spin Rate"), std::string("600"));
    QCOMPARE(driver.sensor.ValueText("VLAN ID"), std::string("77"));
    QCOMPARE(driver.manager->getSetMapSize(), 1);
    QVERIFY(
        driver.Find("snapshotRow_1")->property("reason").toString().contains("good state.json was applied"));
    QCOMPARE(QmlWarnings(), 0);
  }

  void ComparesTheChosenSnapshot() {
    SnapshotsPageDriver driver;
    EVENTUALLY_VERIFY(driver.list->rowCount() >= 2);
    driver.Find("snapshotList")->forceActiveFocus(Qt::TabFocusReason);
    driver.Key(Qt::Key_Down);
    driver.Click("compareButton");
    driver.Click("compareSensorItem");
    EVENTUALLY_VERIFY(driver.Rows().contains("Spin Rate|600 rpm (10 Hz)|1200 rpm (20 Hz)|false|false|"));
    driver.Click("compareButton");
    driver.Click("compareDefaultsItem");
    EVENTUALLY_COMPARE(driver.snapshots->property("rightTitle").toString(), QString("Defaults of the table"));
    QFile broken(driver.file.toLocalFile());
    QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("{");
    broken.close();
    driver.DropSnapshot();
    QVERIFY(driver.Dismiss("errorWindow", "good state.json: no JSON at line 1"));
    QCOMPARE(QmlWarnings(), 0);
  }
};
const RegisterTest<SnapshotsPageTest> register_snapshots_page_test;

}  // namespace

#include "snapshots_page_test.moc"
