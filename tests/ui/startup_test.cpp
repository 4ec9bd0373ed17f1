#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <vector>

#include "app/src/startup.h"
#include "app/src/tour.h"
#include "tests/support/qt_test.h"

namespace {

class StartupTest : public QObject {
  Q_OBJECT
 private slots:
  void Scale() {
    const struct {
      quarn::platform::ScreenMetrics screen;  ///< logical, then physical size
      double scale;
    } cases[] = {{{3840, 2160, 3840, 2160}, 2.0},
                 {{1280, 720, 1920, 1080}, 1.2},
                 {{1366, 768, 1366, 768}, 1.0},
                 {{1536, 864, 1920, 1080}, 1.0},               // 125 % exactly
                 {{1535, 863, 1920, 1080}, 0.8 * 1.2508143f},  // just above
                 {{3072, 1728, 3840, 2160}, 1.6},
                 {{1280, 1080, 1920, 1080}, 1.0},  // the smaller ratio counts
                 {{0, 0, 0, 0}, 1.0}};
    for (const auto& [screen, scale] : cases) {
      const double got = startup::ScaleFactor(screen);
      QVERIFY2(std::abs(got - scale) < 1e-6, qPrintable(QString::number(got, 'g', 10)));
    }
  }

  void Root_data() {
    const Table<bool, bool, QString> row("beside", "above", "root");
    row("program in a folder of the root", false, true, "root");
    row("program in the root", true, false, "root/bin");
    row("the parent is tried first", true, true, "root");
    row("no fonts anywhere", false, false, "root");
  }
  void Root() {
    QFETCH(bool, beside);
    QFETCH(bool, above);
    QFETCH(QString, root);
    QTemporaryDir temporary;
    const QDir folder(QFileInfo(temporary.path()).canonicalFilePath());
    const auto put_font = [&folder](const QString& where) {
      return folder.mkpath(where + "/fonts") &&
             QFile(folder.filePath(where + "/fonts/Roboto-Regular-14.ttf")).open(QIODevice::WriteOnly);
    };
    QVERIFY(folder.mkpath("root/bin") && (!beside || put_font("root/bin")) && (!above || put_font("root")));
    const QRegularExpression warning("install root heuristic: missing.*using parent of exe dir");
    if (!beside && !above) QTest::ignoreMessage(QtWarningMsg, warning);
    QCOMPARE(startup::InstallRoot(folder.filePath("root/bin")), folder.filePath(root));
  }

  void Module() {
    const std::pair<QByteArrayList, QString> cases[] = {{{"varkel"}, ""},
                                                        {{"varkel", "-moduleVM=", "-moduleVM=Zelto"}, ""},
                                                        {{"varkel", "x", "-moduleVM=A", "-moduleVM=B"}, "A"},
                                                        {{"varkel", "-modulevm=A"}, ""},
                                                        {{"varkel", " -moduleVM=A"}, ""},
                                                        {{"-moduleVM=A"}, ""}};  // the program's own name
    for (auto [arguments, name] : cases) {
      std::vector<char*> pointers;
      for (QByteArray& argument : arguments) pointers.push_back(argument.data());
      QCOMPARE(startup::ModuleName(pointers), name);
    }
  }

  void TourPlan() {
    QVERIFY(!tour::PlanFromArguments({"varkel", "--tour"}));
    QVERIFY(!tour::PlanFromArguments({"varkel", "--connect", "1.2.3.4:5"}));
    const auto plan = tour::PlanFromArguments({"varkel", "--connect", "1.2.3.4:5", "--tour", "shots"});
    QVERIFY(plan);
    QCOMPARE(plan->folder, QDir::current().absoluteFilePath("shots"));
    QCOMPARE(plan->host + ' ' + plan->port, "1.2.3.4 5");
  }

  void MissingFont() {
    const QRegularExpression warning("Font file missing: \"Tag\" absolutePath: .*(nowhere.ttf|fonts)");
    for (const char* path : {"nowhere.ttf", "fonts"}) {  // the latter is a folder
      QTest::ignoreMessage(QtWarningMsg, warning);
      QCOMPARE(startup::LoadApplicationFont(path, "Tag"), -1);
    }
    QVERIFY(startup::LoadApplicationFont(startup::kRegularFont, "Tag") >= 0);
  }

  void PaletteLeavesSomeRolesAlone() {
    const QPalette palette = startup::DarkPalette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
      QCOMPARE(palette.color(group, QPalette::Text), QColor("#EEEEEE"));
      QCOMPARE(palette.color(group, QPalette::AlternateBase), QColor(1, 1, 1));
      for (const auto role :
           {QPalette::Shadow, QPalette::Link, QPalette::LinkVisited, QPalette::ToolTipText}) {
        QCOMPARE(palette.color(group, role), QPalette().color(group, role));
      }
    }
  }
};

}  // namespace

QTEST_MAIN(StartupTest)
#include "startup_test.moc"
