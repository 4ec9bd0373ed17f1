#pragma once

#include <QObject>
#include <QTest>
#include <functional>
#include <memory>
#include <vector>

/// Every test object of the program; a test file registers its own.
inline std::vector<std::function<std::unique_ptr<QObject>()>>& TestObjects() {
  static std::vector<std::function<std::unique_ptr<QObject>()>> objects;
  return objects;
}

template <typename Test>
struct RegisterTest {
  RegisterTest() {
    TestObjects().push_back([] { return std::make_unique<Test>(); });
  }
};

/// A table of cases for a "_data" slot: named with its columns, then called once a row.
template <typename... Values>
class Table {
 public:
  template <typename... Names>
  explicit Table(Names... names) {
    (QTest::addColumn<Values>(names), ...);
  }
  void operator()(const char* row, const Values&... values) const { (QTest::newRow(row) << ... << values); }
};
