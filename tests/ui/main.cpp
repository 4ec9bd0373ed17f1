#include <QApplication>

#include "tests/ui/window_driver.h"

int main(int argc, char** argv) {
  UsePersian();
  const QApplication application(argc, argv);
  const int failed = RunTestObjects();
  if (QmlWarnings() > 0) qWarning("%d warnings of QML count as failures", QmlWarnings());
  return failed + QmlWarnings() == 0 ? 0 : 1;
}
