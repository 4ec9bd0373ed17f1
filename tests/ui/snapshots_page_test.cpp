#include <QAbstractItemModel>
#include <QFile>

#include "tests/ui/desk.h"

namespace {

/// A desk whose user looks at the page of snapshots, and has saved one of a sensor that then changed.
class SnapshotDesk : public Desk {
 public:
  SnapshotDesk() {
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
  ~SnapshotDesk() { QFile::remove(file.toLocalFile()); }

  bool Idle() const {
    return QTest::qWaitFor([&] { return !snapshots->property("busy").toBool() && !manager->isWorking(); },
                           kPatienceMs);
  }
  /// "page name left right outcome" of each row.
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
    SnapshotDesk desk;
    EVENTUALLY_VERIFY(desk.list->rowCount() >= 2);
    QVERIFY(desk.Find("snapshotRow_1")->property("reason").toString().contains("Saved"));
    const QString vlan = desk.Place(2, "VLAN ID");
    const QStringList place = vlan.split('_');
    desk.manager->SetText(1, place[0].toInt(), place[1].toInt(), place[2].toInt(), "42");
    desk.ShowPage(0);
    desk.DropSnapshot();
    desk.Find("snapshotsPage");
    QCOMPARE(desk.Rows().filter("VLAN"), QStringList("VLAN ID|1|77|true|false|"));
    desk.Click("onlySettableButton");
    QCOMPARE(desk.Rows().size(), 3);

    desk.sensor.AddFault("0x45=error:7");
    desk.sensor.AddFault("0x45=late:1500");
    desk.Click("restartButton");
    EVENTUALLY_VERIFY(desk.Has("restartItem"));
    QQuickItem* const restart = desk.Find("restartItem");
    desk.Key(Qt::Key_Escape);
    QCOMPARE(restart->property("reason").toString(), QString());
    desk.Click("selectAllBox");
    QCOMPARE(desk.Text("snapshotOutcome"), QString("2 selected"));
    desk.Find("differenceList")->forceActiveFocus(Qt::TabFocusReason);
    desk.Key(Qt::Key_Space);  // the row with the edit
    QCOMPARE(desk.Text("snapshotOutcome"), QString("2 selected"));
    desk.Key(Qt::Key_Down);
    desk.Key(Qt::Key_Space);
    QCOMPARE(desk.Text("snapshotOutcome"), QString("1 selected"));
    desk.Key(Qt::Key_Space);
    desk.Click("applyButton");
    QVERIFY(desk.NoticeShows("messageWindow", "Spin Rate: 1200 → 600"));
    QVERIFY(desk.NoticeShows("messageWindow",
                             "Left as they are, since they have edits that are not saved: VLAN ID."));
    QCOMPARE(desk.sensor.ValueText("Spin Rate"), std::string("1200"));
    desk.Click("noticeAcceptButton");
    EVENTUALLY_COMPARE(restart->property("reason").toString(), QString("a snapshot is being applied"));
    EVENTUALLY_COMPARE(desk.Text("snapshotOutcome"), QString("1 written and verified, 1 refused."));
    QVERIFY(desk.Idle());
    QCOMPARE(restart->property("reason").toString(), QString());
    QCOMPARE(desk.Rows().filter("Spin Rate").value(0),
             QString("Spin Rate|600 rpm (10 Hz)|1200 rpm (20 Hz)|false|false|verified"));
    QVERIFY(desk.Rows().filter("Sync Angle").value(0).endsWith("true|refused, code 7"));
    QCOMPARE(desk.sensor.ValueText("Spin Rate"), std::string("600"));
    QCOMPARE(desk.sensor.ValueText("VLAN ID"), std::string("77"));
    QCOMPARE(desk.manager->getSetMapSize(), 1);
    QVERIFY(
        desk.Find("snapshotRow_1")->property("reason").toString().contains("good state.json was applied"));
    QCOMPARE(QmlWarnings(), 0);
  }

  void ComparesTheChosenSnapshot() {
    SnapshotDesk desk;
    EVENTUALLY_VERIFY(desk.list->rowCount() >= 2);
    desk.Find("snapshotList")->forceActiveFocus(Qt::TabFocusReason);
    desk.Key(Qt::Key_Down);
    desk.Click("compareButton");
    desk.Click("compareSensorItem");
    EVENTUALLY_VERIFY(desk.Rows().contains("Spin Rate|600 rpm (10 Hz)|1200 rpm (20 Hz)|false|false|"));
    desk.Click("compareButton");
    desk.Click("compareDefaultsItem");
    EVENTUALLY_COMPARE(desk.snapshots->property("rightTitle").toString(), QString("Defaults of the table"));
    QFile broken(desk.file.toLocalFile());
    QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("{");
    broken.close();
    desk.DropSnapshot();
    QVERIFY(desk.Dismiss("errorWindow", "good state.json: no JSON at line 1"));
    QCOMPARE(QmlWarnings(), 0);
  }
};
const RegisterTest<SnapshotsPageTest> registration;

}  // namespace

#include "snapshots_page_test.moc"
