#include "app/src/startup.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "app/src/arguments.h"
#include "app/src/last_folder.h"
#include "app/src/log_file.h"
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
                 {{960, 540, 1920, 1080}, 1.6},
                 {{1366, 768, 1366, 768}, 1.0},
                 {{1536, 864, 1920, 1080}, 1.0},               // 125 % exactly
                 {{1535, 863, 1920, 1080}, 0.8 * 1.2508143f},  // just above
                 {{1280, 1080, 1920, 1080}, 1.0},              // the smaller ratio is used
                 {{0, 0, 0, 0}, 1.0}};
    for (const auto& [screen, scale] : cases) {
      const double got = startup::ScaleFactor(screen);
      QVERIFY2(std::abs(got - scale) < 1e-6, qPrintable(QString::number(got, 'g', 10)));
    }
  }

  void LastFolderIsKeptUnlessItIsGone() {
    const QTemporaryDir settings;
    const QString file = settings.filePath("new/window.ini");
    const QUrl documents = LastFolder(file).folder();
    QVERIFY(QDir(settings.path()).mkpath("ü #1"));
    LastFolder(file).keep(QUrl::fromLocalFile(settings.filePath("ü #1/a.tar")));
    QCOMPARE(LastFolder(file).folder(), QUrl::fromLocalFile(settings.filePath("ü #1")));
    QVERIFY(QDir(settings.path()).rmdir("ü #1"));
    QCOMPARE(LastFolder(file).folder(), documents);
  }

  void EachRunningCopyHasALogOfItsOwn() {
    const QTemporaryDir folder;
    const auto name = [](const LogFile& file) { return QFileInfo(file.path()).fileName(); };
    auto first = std::make_unique<LogFile>(folder.filePath("new"));
    const LogFile second(folder.filePath("new"));
    QCOMPARE(name(*first) + ' ' + name(second), "varkel.log varkel-2.log");
    first.reset();
    QCOMPARE(name(LogFile(folder.filePath("new"))), "varkel.log");
    QFile file(folder.filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(LogFile(file.fileName()).path(), QString());
  }

  void Root() {
    const struct {
      QStringList with_fonts;
      const char* root;
    } cases[] = {{{"root"}, "root"},
                 {{"root/bin"}, "root/bin"},
                 {{"root", "root/bin"}, "root"},  // the parent is tried first
                 {{}, "root"}};
    const QRegularExpression warning("install root heuristic: missing.*using parent of exe dir");
    for (const auto& [with_fonts, root] : cases) {
      const QTemporaryDir temporary;
      const QDir folder(QFileInfo(temporary.path()).canonicalFilePath());
      QVERIFY(folder.mkpath("root/bin"));
      for (const QString& where : with_fonts) {
        QFile font(folder.filePath(where + "/fonts/Roboto-Regular-14.ttf"));
        QVERIFY(folder.mkpath(where + "/fonts") && font.open(QIODevice::WriteOnly));
      }
      if (with_fonts.isEmpty()) QTest::ignoreMessage(QtWarningMsg, warning);
      QCOMPARE(startup::InstallRoot(folder.filePath("root/bin")), folder.filePath(root));
    }
  }

  void Arguments() {
    const std::pair<QByteArrayList, QString> cases[] = {{{"varkel"}, ""},
                                                        {{"varkel", "-moduleVM=", "-moduleVM=Zelto"}, ""},
                                                        {{"varkel", "x", "-moduleVM=A", "-moduleVM=B"}, "A"},
                                                        {{"varkel", "-modulevm=A"}, ""},
                                                        {{"varkel", " -moduleVM=A"}, ""},
                                                        {{"-moduleVM=A"}, ""}};  // the program's own name
    for (auto [arguments, name] : cases) {
      std::vector<char*> pointers;
      for (QByteArray& argument : arguments) pointers.push_back(argument.data());
      QCOMPARE(arguments::ModuleName(pointers), name);
    }
  }
};
const RegisterTest<StartupTest> register_startup_test;

}  // namespace

#include "startup_test.moc"
