#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <vector>

#include "app/src/startup.h"
#include "app/src/tour.h"

namespace {

class StartupTest : public QObject {
  Q_OBJECT
 private slots:
  void Scale_data();
  void Scale();
  void Root_data();
  void Root();
  void Module_data();
  void Module();
  void TourPlan();
  void MissingFont();
  void PaletteLeavesSomeRolesAlone();
};

void StartupTest::Scale_data() {
  QTest::addColumn<int>("logical_width");
  QTest::addColumn<int>("logical_height");
  QTest::addColumn<int>("physical_width");
  QTest::addColumn<int>("physical_height");
  QTest::addColumn<double>("scale");
  QTest::newRow("wide screen at 100 %") << 3840 << 2160 << 3840 << 2160 << 2.0;
  QTest::newRow("150 %") << 1280 << 720 << 1920 << 1080 << 1.2;
  QTest::newRow("small screen at 100 %") << 1366 << 768 << 1366 << 768 << 1.0;
  QTest::newRow("125 % exactly") << 1536 << 864 << 1920 << 1080 << 1.0;
  QTest::newRow("just above 125 %") << 1535 << 863 << 1920 << 1080 << 0.8 * 1.2508143f;
  QTest::newRow("125 % of a wide screen") << 3072 << 1728 << 3840 << 2160 << 1.6;
  QTest::newRow("the smaller ratio counts") << 1280 << 1080 << 1920 << 1080 << 1.0;
  QTest::newRow("no screen") << 0 << 0 << 0 << 0 << 1.0;
}

void StartupTest::Scale() {
  QFETCH(int, logical_width);
  QFETCH(int, logical_height);
  QFETCH(int, physical_width);
  QFETCH(int, physical_height);
  QFETCH(double, scale);
  const double got = startup::ScaleFactor({logical_width, logical_height, physical_width, physical_height});
  QVERIFY2(std::abs(got - scale) < 1e-6, qPrintable(QString::number(got, 'g', 10)));
}

void StartupTest::Root_data() {
  QTest::addColumn<bool>("beside");
  QTest::addColumn<bool>("above");
  QTest::addColumn<QString>("root");
  QTest::newRow("program in a folder of the root") << false << true << "root";
  QTest::newRow("program in the root") << true << false << "root/bin";
  QTest::newRow("the parent is tried first") << true << true << "root";
  QTest::newRow("no fonts anywhere") << false << false << "root";
}

void StartupTest::Root() {
  QFETCH(bool, beside);
  QFETCH(bool, above);
  QFETCH(QString, root);
  QTemporaryDir temporary;
  const QDir folder(QFileInfo(temporary.path()).canonicalFilePath());
  const QString program = folder.filePath("root/bin");
  QVERIFY(folder.mkpath("root/bin/fonts") && folder.mkpath("root/fonts"));
  const auto put_font = [](const QString& path) { return QFile(path).open(QIODevice::WriteOnly); };
  QVERIFY(!beside || put_font(folder.filePath("root/bin/fonts/Roboto-Regular-14.ttf")));
  QVERIFY(!above || put_font(folder.filePath("root/fonts/Roboto-Regular-14.ttf")));
  if (!beside && !above) {
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression("install root heuristic: missing.*using parent of exe dir"));
  }
  QCOMPARE(startup::InstallRoot(program), folder.filePath(root));
}

void StartupTest::Module_data() {
  QTest::addColumn<QByteArrayList>("arguments");
  QTest::addColumn<QString>("name");
  QTest::newRow("none") << QByteArrayList{"varkel"} << "";
  QTest::newRow("empty name ends the search")
      << QByteArrayList{"varkel", "-moduleVM=", "-moduleVM=Zelto"} << "";
  QTest::newRow("the first counts") << QByteArrayList{"varkel", "x", "-moduleVM=A", "-moduleVM=B"} << "A";
  QTest::newRow("lower case") << QByteArrayList{"varkel", "-modulevm=A"} << "";
  QTest::newRow("not at the start") << QByteArrayList{"varkel", " -moduleVM=A"} << "";
  QTest::newRow("the program's own name") << QByteArrayList{"-moduleVM=A"} << "";
}

void StartupTest::Module() {
  QFETCH(QByteArrayList, arguments);
  std::vector<char*> pointers;
  for (QByteArray& argument : arguments) {
    pointers.push_back(argument.data());
  }
  QTEST(startup::ModuleName(pointers), "name");
}

void StartupTest::TourPlan() {
  QVERIFY(!tour::PlanFromArguments({"varkel", "--tour"}));
  QVERIFY(!tour::PlanFromArguments({"varkel", "--connect", "1.2.3.4:5"}));
  const auto plan = tour::PlanFromArguments({"varkel", "--connect", "1.2.3.4:5", "--tour", "shots"});
  QVERIFY(plan);
  QCOMPARE(plan->folder, QDir::current().absoluteFilePath("shots"));
  QCOMPARE(plan->host, "1.2.3.4");
  QCOMPARE(plan->port, "5");
}

void StartupTest::MissingFont() {
  QTest::ignoreMessage(QtWarningMsg,
                       QRegularExpression("Font file missing: \"Tag\" absolutePath: .*nowhere.ttf"));
  QCOMPARE(startup::LoadApplicationFont("nowhere.ttf", "Tag"), -1);
  QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Font file missing"));
  QCOMPARE(startup::LoadApplicationFont("fonts", "Tag"), -1);  // a folder
  QVERIFY(startup::LoadApplicationFont(startup::kRegularFont, "Tag") >= 0);
}

void StartupTest::PaletteLeavesSomeRolesAlone() {
  const QPalette palette = startup::DarkPalette();
  const QPalette standard;
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    QCOMPARE(palette.color(group, QPalette::Text), QColor("#EEEEEE"));
    QCOMPARE(palette.color(group, QPalette::AlternateBase), QColor(1, 1, 1));
    for (const auto role : {QPalette::Shadow, QPalette::Link, QPalette::LinkVisited, QPalette::ToolTipText}) {
      QCOMPARE(palette.color(group, role), standard.color(group, role));
    }
  }
}

}  // namespace

QTEST_MAIN(StartupTest)
#include "startup_test.moc"
