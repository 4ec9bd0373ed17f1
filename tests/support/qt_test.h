#pragma once

#include <QCoreApplication>
#include <QObject>
#include <QRegularExpression>
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

/// Runs the test objects of NAME.cpp when the program's first argument is such a NAME, or all; the other
/// arguments are Qt Test's. Returns the number of failures.
inline int RunTestObjects() {
  const auto source_of = [](const QObject& test) {  // "ConnectionTest" stands in connection_test.cpp
    QString name = test.metaObject()->className();
    return name.replace(QRegularExpression("(?<=[a-z])(?=[A-Z])"), "_").toLower();
  };
  QStringList arguments = QCoreApplication::arguments();
  std::vector<std::unique_ptr<QObject>> all;
  std::vector<QObject*> chosen;
  for (const auto& make : TestObjects()) {
    all.push_back(make());
    if (source_of(*all.back()) == arguments.value(1)) chosen.push_back(all.back().get());
  }
  if (!chosen.empty()) {
    arguments.removeAt(1);
  } else {
    for (const auto& test : all) chosen.push_back(test.get());
  }
  int failed = 0;
  for (QObject* const test : chosen) failed += QTest::qExec(test, arguments);
  return failed;
}

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
