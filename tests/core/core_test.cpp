#include "tests/core/core_test.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  int failed = 0;
  for (const auto& make : TestObjects()) failed += QTest::qExec(make().get(), argc, argv);
  return failed == 0 ? 0 : 1;
}
