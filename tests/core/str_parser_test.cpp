#include "VarkelCore/src/str_parser.h"

#include <QTest>
#include <stdexcept>

#include "tests/core/core_test.h"

namespace {

class StrParserTest : public QObject {
  Q_OBJECT
 private slots:
  void ParsesToBytes_data();
  void ParsesToBytes();
  void Refuses_data();
  void Refuses();
  void UnknownTypesHaveNoCodec();
};

void StrParserTest::ParsesToBytes_data() {
  QTest::addColumn<QString>("type");
  QTest::addColumn<QString>("text");
  QTest::addColumn<float>("coefficient");
  QTest::addColumn<QByteArray>("hex");
  const auto row = [](const char* type, const char* text, float coefficient, const char* hex) {
    QTest::addRow("%s %s / %g", type, text, static_cast<double>(coefficient))
        << QString(type) << QString(text) << coefficient << QByteArray(hex);
  };
  row("uint8", "255", 1, "ff");
  row("uint8", "12.9", 1, "0c");
  row("uint8", "2.5", 0.5F, "05");
  row("uint16", "1000", 0.1F, "2710");
  row("uint16", "65535", 1, "ffff");
  row("uint32", "0", 1, "00000000");
  row("uint32", "0.9", 1, "00000000");
  row("uint64", "0", 1, "0000000000000000");
  row("int8", "-128", 1, "80");
  row("int8", "127", 1, "7f");
  row("int16", "-2", 1, "fffe");
  row("int16", "-3.9", 1, "fffd");
  row("int32", "-1", 1, "ffffffff");
  row("int32", "2147483648", 1, "80000000");  // the bound is rounded up as a float
  row("int64", "-1", 1, "ffffffffffffffff");
  row("int64", "9223372036854775807", 1, "7fffffffffffffff");
  row("float32", "1", 1, "3f800000");
  row("float32", "1", -2, "bf000000");
  row("double", "1", 1, "3ff0000000000000");
  row("double", "1e300", 1, "7e37e43c8800759c");
  row("IP", "192.168.1.201", 1, "c0a801c9");
  row("MAC", "0:1:2:3:4:255", 1, "0001020304ff");
  row("raw", "anything", 1, "");
}

void StrParserTest::ParsesToBytes() {
  QFETCH(QString, type);
  QFETCH(QString, text);
  QFETCH(float, coefficient);
  const auto codec = varkel::MakeStrParser(type.toStdString());
  QVERIFY(codec != nullptr);
  const auto bytes = codec->ParseToBytes(text.toStdString(), coefficient);
  const QByteArray hex(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
  QTEST(hex.toHex(), "hex");
}

void StrParserTest::Refuses_data() {
  QTest::addColumn<QString>("type");
  QTest::addColumn<QString>("text");
  QTest::addColumn<float>("coefficient");
  QTest::addColumn<QString>("message");
  const auto row = [](const char* type, const char* text, float coefficient, const char* message) {
    QTest::addRow("%s %s / %g", type, text, static_cast<double>(coefficient))
        << QString(type) << QString(text) << coefficient << QString(message);
  };
  row("uint8", "256", 1, "UintParser: contains an illegal number, error:256");
  row("uint8", "-1", 1, "UintParser: contains an illegal number, error:-1");
  row("uint8", "", 1, "UintParser: contains an illegal number, error:");
  row("uint8", "0", 0, "UintParser: contains an illegal number, error:0");  // 0 / 0
  row("uint8", "1e50", 1, "UintParser: stof() failed, error:stof argument out of range");
  row("uint32", "1", 1, "UintParser: contains an illegal number, error:1");
  row("uint64", "1", 1, "UintParser: contains an illegal number, error:1");
  row("int8", "128", 1, "IntParser: contains an illegal number, error:128");
  row("int8", "-129", 1, "IntParser: contains an illegal number, error:-129");
  row("int64", "nan", 1, "IntParser: contains an illegal number, error:nan");
  row("int16", "x", 1, "IntParser: contains an illegal number, error:x");
  row("float32", "x", 1, "FloatParser: contains an illegal number, error:x");
  row("float32", "1e50", 1, "FloatParser: stof() out of range, error:stof argument out of range");
  row("double", "1e400", 1, "DoubleParser: stod() out of range, error:stod argument out of range");
  row("IP", "192.168.1", 1, "IPv4Parser: ip address, wrong format.");
  row("IP", "192..168.1", 1, "IPv4Parser: contains an illegal number");
  row("IP", "192.168.1.256", 1, "IPv4Parser: contains an illegal number");
  row("IP", "192.168.1.-1", 1, "IPv4Parser: contains an illegal number");
  row("MAC", "0:1:2:3:4", 1, "MacParser: ip address, wrong format.");
  row("MAC", "00:1A:2B:3C:4D:5E", 1, "MacParser: contains an illegal number");
}

void StrParserTest::Refuses() {
  QFETCH(QString, type);
  QFETCH(QString, text);
  QFETCH(float, coefficient);
  const auto codec = varkel::MakeStrParser(type.toStdString());
  try {
    codec->ParseToBytes(text.toStdString(), coefficient);
    QFAIL("was taken");
  } catch (const std::invalid_argument& error) {
    QTEST(QString(error.what()), "message");
  }
}

void StrParserTest::UnknownTypesHaveNoCodec() {
  for (const char* type : {"bool", "string", "Uint8", ""}) QVERIFY(varkel::MakeStrParser(type) == nullptr);
}

const RegisterTest<StrParserTest> registered;

}  // namespace

#include "str_parser_test.moc"
