#pragma once

#include <QCoreApplication>
#include <QLocale>
#include <QObject>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTest>
#include <algorithm>
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

/// The source file of a test object: "ConnectionTest" is in connection_test.cpp.
inline QString SourceOf(const QObject& test) {
  QString name = test.metaObject()->className();
  return name.replace(QRegularExpression("(?<=[a-z])(?=[A-Z])"), "_").toLower();
}

/// Runs the test object of NAME.cpp if the program's first argument is such a NAME, otherwise all of them;
/// the other arguments are passed to Qt Test. Returns the number of failures. On Windows Qt Test would write
/// its report to the debugger, so it is written to a file first and copied to standard output.
inline int RunTestObjects() {
  QStringList arguments = QCoreApplication::arguments();
  std::vector<std::unique_ptr<QObject>> all;
  for (const auto& make : TestObjects()) all.push_back(make());
  const auto is_chosen = [name = arguments.value(1)](const auto& test) { return SourceOf(*test) == name; };
  if (const auto chosen = std::find_if(all.begin(), all.end(), is_chosen); chosen != all.end()) {
    arguments.removeAt(1);
    std::swap(all.front(), *chosen);
    all.resize(1);
  }
  int failed = 0;
  for (const auto& test : all) {
#ifdef _WIN32
    QTemporaryFile report;
    report.open();
    failed += QTest::qExec(test.get(), arguments + QStringList{"-o", report.fileName() + ",txt"});
    std::fputs(report.readAll().constData(), stdout);
    std::fflush(stdout);
#else
    failed += QTest::qExec(test.get(), arguments);
#endif
  }
  return failed;
}

/// Makes Persian the user's language; call it before creating the application. Its digits and decimal point
/// differ, which must not show in files, file names and time stamps. Qt reads it once; files keep the
/// system's encoding.
inline void UsePersian() {
  const QByteArray language = qgetenv("LC_ALL");
  qputenv("LC_ALL", "fa_IR.UTF-8");
  QLocale::setDefault(QLocale::system());
  qputenv("LC_ALL", language);
}

/// A table of cases for a "_data" slot: constructed with the column names, then called once per row.
template <typename... Values>
class Table {
 public:
  template <typename... Names>
  explicit Table(Names... names) {
    (QTest::addColumn<Values>(names), ...);
  }
  void operator()(const char* row, const Values&... values) const { (QTest::newRow(row) << ... << values); }
};
