#include <QApplication>
#include <QRegularExpression>

#include "tests/ui/desk.h"

namespace {

// "ConnectionTest" stands in connection_test.cpp.
QString SourceOf(const QObject& test) {
  QString name = test.metaObject()->className();
  name.replace(QRegularExpression("(?<=[a-z])(?=[A-Z])"), "_");
  return name.toLower();
}

}  // namespace

// ui_test [NAME] [ARGUMENT...]: the test objects of NAME.cpp, or all, with arguments of Qt Test.
int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QStringList arguments = QCoreApplication::arguments();
  std::vector<std::unique_ptr<QObject>> all;
  std::vector<QObject*> chosen;
  for (const auto& make : TestObjects()) {
    all.push_back(make());
    if (SourceOf(*all.back()) == arguments.value(1)) chosen.push_back(all.back().get());
  }
  if (!chosen.empty()) {
    arguments.removeAt(1);
  } else {
    for (const auto& test : all) chosen.push_back(test.get());
  }
  int failed = 0;
  for (QObject* const test : chosen) failed += QTest::qExec(test, arguments);
  if (QmlWarnings() > 0) qWarning("%d warnings of QML count as failures", QmlWarnings());
  return failed + QmlWarnings() == 0 ? 0 : 1;
}
