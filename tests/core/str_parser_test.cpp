#include "VarkelCore/src/values/str_parser.h"

#include <stdexcept>

#include "tests/core/core_test.h"

namespace {

/// What a type makes of a text: bytes in hexadecimal, or a refusal.
struct Case {
  const char* type;
  const char* text;
  const char* result;
  float coefficient = 1;
};

class StrParserTest : public QObject {
  Q_OBJECT
 private slots:
  void ParsesToBytes() {
    const Case cases[] = {{"uint8", "255", "ff"},
                          {"uint8", "12.9", "0c"},
                          {"uint8", "2.5", "05", 0.5F},
                          {"uint16", "1000", "2710", 0.1F},
                          {"uint32", "0.9", "00000000"},
                          {"uint64", "0", "0000000000000000"},
                          {"int8", "-128", "80"},
                          {"int16", "-2", "fffe"},
                          {"int16", "-3.9", "fffd"},
                          {"int32", "-1", "ffffffff"},
                          {"int32", "2147483648", "80000000"},  // the bound is rounded up as a float
                          {"int64", "-1", "ffffffffffffffff"},
                          {"int64", "9223372036854775807", "7fffffffffffffff"},
                          {"float32", "1", "3f800000"},
                          {"float32", "1", "bf000000", -2},
                          {"double", "1", "3ff0000000000000"},
                          {"double", "1e300", "7e37e43c8800759c"},
                          {"IP", "192.168.1.201", "c0a801c9"},
                          {"MAC", "0:1:2:3:4:255", "0001020304ff"},
                          {"raw", "anything", ""}};
    for (const Case& c : cases) {
      const auto bytes = varkel::MakeStrParser(c.type)->ParseToBytes(c.text, c.coefficient);
      const QByteArray hex(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
      QCOMPARE(QByteArray(c.type) + " " + hex.toHex(), QByteArray(c.type) + " " + c.result);
    }
  }

  void Refuses() {
    const Case cases[] = {
        {"uint8", "256", "UintParser: contains an illegal number, error:256"},
        {"uint8", "-1", "UintParser: contains an illegal number, error:-1"},
        {"uint8", "", "UintParser: contains an illegal number, error:"},
        {"uint8", "0", "UintParser: contains an illegal number, error:0", 0},  // 0 / 0
        {"uint8", "1e50", "UintParser: stof() failed, error:stof argument out of range"},
        {"uint32", "1", "UintParser: contains an illegal number, error:1"},
        {"uint64", "1", "UintParser: contains an illegal number, error:1"},
        {"int8", "128", "IntParser: contains an illegal number, error:128"},
        {"int8", "-129", "IntParser: contains an illegal number, error:-129"},
        {"int64", "nan", "IntParser: contains an illegal number, error:nan"},
        {"int16", "x", "IntParser: contains an illegal number, error:x"},
        {"float32", "x", "FloatParser: contains an illegal number, error:x"},
        {"float32", "1e50", "FloatParser: stof() out of range, error:stof argument out of range"},
        {"double", "1e400", "DoubleParser: stod() out of range, error:stod argument out of range"},
        {"IP", "192.168.1", "IPv4Parser: ip address, wrong format."},
        {"IP", "192..168.1", "IPv4Parser: contains an illegal number"},
        {"IP", "192.168.1.256", "IPv4Parser: contains an illegal number"},
        {"IP", "192.168.1.-1", "IPv4Parser: contains an illegal number"},
        {"MAC", "0:1:2:3:4", "MacParser: ip address, wrong format."},
        {"MAC", "00:1A:2B:3C:4D:5E", "MacParser: contains an illegal number"}};
    for (const Case& c : cases) {
      try {
        varkel::MakeStrParser(c.type)->ParseToBytes(c.text, c.coefficient);
        QFAIL(c.text);
      } catch (const std::invalid_argument& error) {
        QCOMPARE(QString(error.what()), c.result);
      }
    }
  }

  void UnknownTypesHaveNoCodec() {
    for (const char* type : {"bool", "string", "Uint8", ""}) QVERIFY(varkel::MakeStrParser(type) == nullptr);
  }
};

const RegisterTest<StrParserTest> registered;

}  // namespace

#include "str_parser_test.moc"
