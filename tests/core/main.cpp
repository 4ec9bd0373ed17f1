#include <QCoreApplication>

#include "tests/support/qt_test.h"

int main(int argc, char** argv) {
  UsePersian();
  const QCoreApplication application(argc, argv);
  return RunTestObjects() == 0 ? 0 : 1;
}
