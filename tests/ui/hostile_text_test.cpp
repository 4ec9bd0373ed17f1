#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include "app/src/log_model.h"
#include "app/src/plain_text.h"
#include "tests/ui/window_driver.h"

namespace {

constexpr int kMegabyte = 1000000;

const QString kTags = QString::fromUtf8("<b>bold</b><img src='qrc:/x.png'>&lt;\u202Eevil\n\x1B[2J");
const QString kTagsShown = "<b>bold</b><img src='qrc:/x.png'>&lt;\\u202eevil\\n\\x1b[2J";
const QString kParagraphShown = QString(kTagsShown).replace("\\n", "\n");

/// A folder whose default table contains hostile texts.
void WriteHostileTable(const QDir& folder) {
  QFile original("Config/varID/Quenta.csv");
  QVERIFY(original.open(QIODevice::ReadOnly));
  QByteArray table = original.readAll();
  const QByteArray tags = '"' + kTags.toUtf8() + '"';
  const QByteArray megabyte(kMegabyte, 'M');
  const std::pair<const char*, QByteArray> changes[] = {
      {"Device Info,Identity", tags + ',' + tags},    // a page and a group
      {",Production Date,0", ',' + megabyte + ",0"},  // a name
      {"Channel Count,0,uint8", tags + ",0,uint8"},   // a name
      {",905,,nm,", ",905,," + tags + ','},           // a unit
      {"Calibration Date,0,string,2024-05-21,,,,,,1_3_1_0",
       "Calibration Date,1,string," + megabyte + ",,,,,,1_3_1_1"},
      {"2_Running", "2_" + kTags.section('\n', 0, 0).toUtf8()},  // an option
      {"1_Starting", "1_" + megabyte},
      {",Event Log,", ",\"" + kTags.toUtf8() + " Log\","}};  // a log's name
  for (const auto& [text, hostile] : changes) {
    QVERIFY2(table.contains(text), text);
    table.replace(text, hostile);
  }
  QVERIFY(folder.mkpath("Config/varID"));
  QFile doctored(folder.filePath("Config/varID/Quenta.csv"));
  QVERIFY(doctored.open(QIODevice::WriteOnly) && doctored.write(table) == table.size());
}

/// The faults in the texts of an item and its children.
QStringList Faults(const QQuickItem* item) {
  static const QRegularExpression acting("[\\x00-\\x1f\\x7f-\\x9f\\x{2028}-\\x{202e}\\x{2066}-\\x{2069}]");
  QStringList faults;
  const QString text = item->property("text").toString();
  const bool is_label = item->inherits("QQuickText");
  if (is_label || item->inherits("QQuickTextEdit") || item->inherits("QQuickTextInput")) {
    const auto wrong = [&](bool is, const char* what) {
      if (is) faults << QString(what) + ": " + text.left(60);
    };
    wrong(item->property("textFormat").toInt() != 0, "not plain text");
    wrong(text.contains(acting) && item->objectName() != "noticeText", "acts on its surroundings");
    wrong(text.size() > 2 * PlainText::kShownField, "too long");
    wrong(is_label && item->property("wrapMode").toInt() == 0 && item->property("lineCount").toInt() > 1,
          "more than one line");
  }
  for (const QQuickItem* child : item->childItems()) faults += Faults(child);
  return faults;
}

class HostileTextTest : public QObject {
  Q_OBJECT
 private slots:
  void TextsBecomePlain() {
    const QString smile = QString::fromUtf8("😀");
    const struct {
      QString text, line, paragraph;
    } cases[] = {{"48 °C", "48 °C", "48 °C"},
                 {kTags, kTagsShown, kParagraphShown},
                 {"a\r\nb\tc", "a\\r\\nb\\tc", "a\\r\nb\tc"},
                 {"\u2028\u2029\u0085", "\\u2028\\u2029\\x85", "\\u2028\\u2029\\x85"},
                 {"\u2067x\u2069\u200F", "\\u2067x\\u2069\\u200f", "\\u2067x\\u2069\\u200f"},
                 {QString::fromUtf8("a\0b", 3), "a\\x00b", "a\\x00b"},
                 {QString(5000, 'x'), QString(1000, 'x') + "… (5000 characters)",
                  QString(4000, 'x') + "… (5000 characters)"},
                 {'x' + smile.repeated(2500), 'x' + smile.repeated(499) + "… (5001 characters)",
                  'x' + smile.repeated(1999) + "… (5001 characters)"}};  // never half a surrogate pair
    for (const auto& [text, line, paragraph] : cases) {
      QCOMPARE(PlainText::line(text), line);
      QCOMPARE(PlainText::paragraph(text), paragraph);
    }
  }

  void EveryPageShowsPlainText() {
    WindowDriver driver;  // created before the hostile table, which the simulator could not serve
    driver.sensor.SetValue("SN", "<b>Qu</b>\u202E\n<i>");
    WriteHostileTable(driver.folder.path());
    const QString before = QDir::currentPath();
    QDir::setCurrent(driver.folder.path());
    driver.manager->InitConfigFileParser("Quenta");
    QDir::setCurrent(before);
    for (int page = 0; page < driver.manager->level1List().size(); ++page) {
      driver.ShowPage(page);
      QCOMPARE(Faults(driver.view().contentItem()), QStringList());
    }
    driver.ShowPage(0);
    QCOMPARE(driver.Text("tab_0"), kTagsShown);
    // A value that is not shown completely can't be edited: the rest would be lost.
    const QQuickItem* const value = driver.Find("field_" + driver.Place(0, "Calibration Date"));
    QVERIFY(value->property("text").toString().endsWith("M… (1000000 characters)"));
    QVERIFY(value->property("readOnly").toBool());
    QVERIFY(driver.Connect());
    EVENTUALLY_COMPARE(driver.Text("field_" + driver.Place(0, "SN")), "<b>Qu</b>\\u202e\\n<i>");
    QVERIFY(!value->property("readOnly").toBool());
  }

  void NoticesAndLogLinesArePlain() {
    WindowDriver driver;
    const QString megabyte(kMegabyte, 'm');
    driver.manager->setErrorMsg(kTags + QString(" and on").repeated(kMegabyte / 7));
    QVERIFY(driver.NoticeShows("errorWindow", kTags));
    QVERIFY(driver.Text("noticeText").startsWith(kParagraphShown));
    QCOMPARE(Faults(driver.view().contentItem()), QStringList());
    const QQuickItem* const button = driver.Find("noticeAcceptButton");
    QVERIFY(button->mapToScene({0, button->height()}).y() < driver.view().height());
    driver.Key(Qt::Key_Escape);

    driver.OpenLog();
    auto* const log = driver.view().property("log").value<LogModel*>();
    for (int i = 0; i < 3; ++i) emit driver.manager->sendLogMessage(megabyte, "BYTES");
    emit driver.manager->sendLogMessage(kTags, "ERROR");
    EVENTUALLY_COMPARE(log->rowCount(), 5);  // the notice is the first
    EVENTUALLY_VERIFY(driver.Property("logList", "contentHeight").toReal() > 1000);
    QCOMPARE(Faults(driver.view().contentItem()), QStringList());
    const QStringList saved = log->Text().split('\n');
    QCOMPARE(saved.size(), 6);  // the last one is empty
    QVERIFY(saved[1].endsWith(" BYTES " + megabyte));
    QVERIFY(saved[4].endsWith(" ERROR " + kTagsShown));
  }
};
const RegisterTest<HostileTextTest> register_hostile_text_test;

}  // namespace

#include "hostile_text_test.moc"
