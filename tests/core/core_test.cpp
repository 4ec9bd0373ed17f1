#include "tests/core/core_test.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  return RunTestObjects(QCoreApplication::arguments()) == 0 ? 0 : 1;
}
