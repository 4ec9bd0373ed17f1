#include "tests/core/core_test.h"

#include <QCoreApplication>
#include <QLocale>

int main(int argc, char** argv) {
  // The user's language writes numbers with other digits, which must not get into files and file names. Qt
  // asks for it once; files keep the encoding of the machine.
  const QByteArray language = qgetenv("LC_ALL");
  qputenv("LC_ALL", "fa_IR.UTF-8");
  QLocale::setDefault(QLocale::system());
  qputenv("LC_ALL", language);
  QCoreApplication application(argc, argv);
  int failed = 0;
  for (const auto& make : TestObjects()) failed += QTest::qExec(make().get(), argc, argv);
  return failed == 0 ? 0 : 1;
}
