#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>

#include "app/src/log_model.h"
#include "app/src/plain_text.h"
#include "tests/ui/ui_test.h"

namespace {

constexpr int kMegabyte = 1000000;
constexpr int kLongestFreezeMs = 1000;  // a sanitizer's build takes its time

const QString kTags = QString::fromUtf8("<b>bold</b><img src='qrc:/x.png'>&lt;\u202Eevil\n\x1B[2J");
const QString kTagsShown = "<b>bold</b><img src='qrc:/x.png'>&lt;\\u202eevil\\n\\x1b[2J";

/// A folder whose default table carries hostile texts, as the current one.
class HostileTable {
 public:
  HostileTable() {
    QFile original("Config/varID/Quenta.csv");
    original.open(QIODevice::ReadOnly);
    QByteArray table = original.readAll();
    const QByteArray tags = '"' + kTags.toUtf8() + '"';
    const QByteArray megabyte(kMegabyte, 'M');
    table.replace("Device Info,Identity", tags + ',' + tags);    // a page and a group
    table.replace(",Production Date,0", ',' + megabyte + ",0");  // a name
    table.replace("Channel Count,0,uint8", tags + ",0,uint8");   // a name
    table.replace(",905,,nm,", ",905,," + tags + ',');           // a unit
    table.replace("Calibration Date,0,string,2024-05-21,,,,,,1_3_1_0",
                  "Calibration Date,1,string," + megabyte + ",,,,,,1_3_1_1");
    table.replace("2_Running", "2_" + kTags.section('\n', 0, 0).toUtf8());  // an option
    table.replace("1_Starting", "1_" + megabyte);
    table.replace(",Event Log,", ",\"" + kTags.toUtf8() + " Log\",");  // a log's name
    folder_.isValid() && QDir(folder_.path()).mkpath("Config/varID");
    QFile doctored(folder_.filePath("Config/varID/Quenta.csv"));
    doctored.open(QIODevice::WriteOnly);
    doctored.write(table);
    doctored.close();
    QDir::setCurrent(folder_.path());
  }
  ~HostileTable() { QDir::setCurrent(before_); }
  HostileTable(const HostileTable&) = delete;
  HostileTable& operator=(const HostileTable&) = delete;

 private:
  const QString before_ = QDir::currentPath();
  const QTemporaryDir folder_;
};

/// The longest time between two turns of the event loop.
class Pulse {
 public:
  Pulse() {
    clock_.start();
    QObject::connect(&timer_, &QTimer::timeout, [this] { longest_ = std::max(longest_, clock_.restart()); });
    timer_.start(0);
  }
  qint64 longest() const { return std::max(longest_, clock_.elapsed()); }

 private:
  QElapsedTimer clock_;
  QTimer timer_;
  qint64 longest_ = 0;
};

/// What is wrong with the texts of an item and of those in it.
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
  void TextsBecomePlain_data();
  void TextsBecomePlain();
  void EveryPageShowsPlainText();
  void NoticesAndLogLinesArePlain();
};
const RegisterTest<HostileTextTest> registration;

void HostileTextTest::TextsBecomePlain_data() {
  QTest::addColumn<QString>("text");
  QTest::addColumn<QString>("line");
  QTest::addColumn<QString>("paragraph");
  const QString smile = QString::fromUtf8("😀");
  QTest::newRow("ordinary") << "48 °C"
                            << "48 °C"
                            << "48 °C";
  QTest::newRow("tags and controls") << kTags << kTagsShown << QString(kTagsShown).replace("\\n", "\n");
  QTest::newRow("line ends") << "a\r\nb\tc"
                             << "a\\r\\nb\\tc"
                             << "a\\r\nb\tc";
  QTest::newRow("line separators") << QString::fromUtf8("\u2028\u2029\u0085") << "\\u2028\\u2029\\x85"
                                   << "\\u2028\\u2029\\x85";
  QTest::newRow("isolates") << QString::fromUtf8("\u2067x\u2069\u200F") << "\\u2067x\\u2069\\u200f"
                            << "\\u2067x\\u2069\\u200f";
  QTest::newRow("NUL") << QString::fromUtf8("a\0b", 3) << "a\\x00b"
                       << "a\\x00b";
  QTest::newRow("long") << QString(5000, 'x') << QString(1000, 'x') + "… (5000 characters)"
                        << QString(4000, 'x') + "… (5000 characters)";
  QTest::newRow("cut in a pair") << 'x' + smile.repeated(2500)
                                 << 'x' + smile.repeated(499) + "… (5001 characters)"
                                 << 'x' + smile.repeated(1999) + "… (5001 characters)";
}

void HostileTextTest::TextsBecomePlain() {
  QFETCH(QString, text);
  QTEST(PlainText::line(text), "line");
  QTEST(PlainText::paragraph(text), "paragraph");
}

void HostileTextTest::EveryPageShowsPlainText() {
  Desk desk;  // ahead of the table, which no sensor would serve
  desk.sensor.SetValue("SN", "<b>Qu</b>\u202E\n<i>");
  const HostileTable table;
  const Pulse pulse;
  desk.manager->InitConfigFileParser("Quenta");
  for (int page = 0; page < desk.manager->level1List().size(); ++page) {
    desk.ShowPage(page);
    QCOMPARE(Faults(desk.view().contentItem()), QStringList());
  }
  desk.ShowPage(0);
  QCOMPARE(desk.Text("tab_0"), kTagsShown);
  // A value that is not shown whole can't be edited: the rest would be lost.
  const QQuickItem* const value = desk.Find("field_" + desk.Place(0, "Calibration Date"));
  QVERIFY(value->property("text").toString().endsWith("M… (1000000 characters)"));
  QVERIFY(value->property("readOnly").toBool());
  QVERIFY(desk.Connect());
  QTRY_COMPARE(desk.Text("field_" + desk.Place(0, "SN")), "<b>Qu</b>\\u202e\\n<i>");
  QVERIFY(!value->property("readOnly").toBool());
  QVERIFY2(pulse.longest() < kLongestFreezeMs, qPrintable(QString::number(pulse.longest())));
}

void HostileTextTest::NoticesAndLogLinesArePlain() {
  Desk desk;
  const QString megabyte(kMegabyte, 'm');
  const Pulse pulse;
  desk.manager->setErrorMsg(kTags + megabyte);
  QVERIFY(desk.NoticeShows("errorWindow", kTags));
  QVERIFY(desk.Find("noticeText")
              ->property("text")
              .toString()
              .startsWith(QString(kTagsShown).replace("\\n", "\n")));
  QCOMPARE(Faults(desk.view().contentItem()), QStringList());
  desk.Key(Qt::Key_Escape);

  QMetaObject::invokeMethod(desk.view().rootObject(), "openLog");
  auto* const window = desk.view().rootObject()->property("logWindow").value<QQuickWindow*>();
  auto* const log = window->property("log").value<LogModel*>();
  for (int i = 0; i < 3; ++i) emit desk.manager->sendLogMessage(megabyte, "BYTES");
  emit desk.manager->sendLogMessage(kTags, "ERROR");
  QTRY_COMPARE(log->rowCount(), 4);
  const auto* const list = window->findChild<QQuickItem*>("logList");
  QTRY_VERIFY(list->property("contentHeight").toReal() > 1000);
  QCOMPARE(Faults(window->contentItem()), QStringList());
  QVERIFY2(pulse.longest() < kLongestFreezeMs, qPrintable(QString::number(pulse.longest())));

  const QStringList saved = log->Text().split('\n');
  QCOMPARE(saved.size(), 5);  // the last one is empty
  QVERIFY(saved[0].endsWith(" BYTES " + megabyte));
  QVERIFY(saved[3].endsWith(" ERROR " + kTagsShown));
  for (int i = 0; i < 40; ++i) log->append(LogModel::Info, megabyte);
  QTRY_VERIFY(log->rowCount() < 40);  // memory has a bound
}

}  // namespace

#include "hostile_text_test.moc"
