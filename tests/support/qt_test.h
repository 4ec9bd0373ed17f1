#pragma once

#include <QObject>
#include <QStringList>
#include <QTemporaryFile>
#include <QTest>
#include <cstdio>
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

/// Runs every test object with the program's arguments, or with "-class NAME" that one; how many faults they
/// had. On Windows Qt Test tells the debugger what goes on, so there its report takes the way over a file to
/// where the report belongs.
inline int RunTestObjects(QStringList arguments) {
  QString chosen;
  if (arguments.value(1) == "-class") {
    chosen = arguments.value(2);
    arguments.erase(arguments.begin() + 1, arguments.begin() + 3);
  }
  int faults = 0;
  for (const auto& make : TestObjects()) {
    const std::unique_ptr<QObject> test = make();
    if (!chosen.isEmpty() && test->metaObject()->className() != chosen) continue;
#ifdef _WIN32
    QTemporaryFile report;
    report.open();
    faults += QTest::qExec(test.get(), arguments + QStringList{"-o", report.fileName() + ",txt"});
    std::fputs(report.readAll().constData(), stdout);
    std::fflush(stdout);
#else
    faults += QTest::qExec(test.get(), arguments);
#endif
  }
  return faults;
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
