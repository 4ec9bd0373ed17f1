#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <utility>

#include "VarkelCore/src/whole_file.h"
#include "tests/core/core_test.h"
#include "tests/core/file_content.h"

namespace {

class HostileNamesTest : public QObject {
  Q_OBJECT
 private slots:
  void UserHearsOfSettingsThatAreNone() {
    const QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                         "/VelmoraDataFiles/RecvSettings.ini";
    QFile::remove(path);
    QVERIFY(QDir().mkpath(path));
    Bench bench;
    const QString why = path + ": it is no regular file.";
    QTRY_VERIFY(bench.log.contains("WARNING The defaults stand in for the settings of " + why));
    QVERIFY(bench.Connect());
    QVERIFY(bench.log.contains("WARNING The connection settings can't be saved to " + why));
    QVERIFY(QDir().rmdir(path));
  }

  // A name comes from the table, the file from the sensor: it is found in the folder, and nowhere else.
  void NamesStayInTheFolder() {
    const QString letters = QString::fromUtf8("é😀");  // 2 and 4 bytes
    const std::pair<QString, QString> cases[] = {
        {"Event Log", "Event Log"},
        {"/etc/passwd Log", "_etc_passwd Log"},
        {"C:\\Windows Log", "C__Windows Log"},
        {"a*?\"<>| Log", "a______ Log"},
        {".hidden Log", "_hidden Log"},
        {QString::fromUtf8("gnp\xE2\x80\xAE.exe\n\x1B Log"), "gnp_.exe__ Log"},
        {letters.repeated(100), letters.repeated(30)},
        {"../../up Log", "_._.._up Log"}};
    for (const auto& [name, part] : cases) QCOMPARE(varkel::FileNamePart(name), part);
    const auto& [name, part] = *std::rbegin(cases);
    const QTemporaryDir folder(QDir::current().filePath("hostile-XXXXXX"));  // on the tables' own drive
    QVERIFY(QDir(folder.path()).mkpath("a/b"));
    Put(folder.filePath("table.csv"), Content("Config/varID/Quenta.csv").replace("Fault Log", name.toUtf8()));
    Bench bench;
    QVERIFY(bench.Connect());
    bench.manager->InitConfigFileParser(QDir("Config/varID").relativeFilePath(folder.filePath("table")));
    QCOMPARE(bench.manager->DownloadLog(QUrl::fromLocalFile(folder.filePath("a/b")), name), 0);
    QCOMPARE(bench.NextSuccess(), name + " download successful.");
    const QStringList files = Files(folder.filePath("a/b"));
    QVERIFY2(files.size() == 1 && files[0].startsWith(part + '_'), qPrintable(files.join(' ')));
  }
};

const RegisterTest<HostileNamesTest> registered;

}  // namespace

#include "hostile_names_test.moc"
