#include <QCoreApplication>
#include <QLocale>

#include "tests/support/qt_test.h"

int main(int argc, char** argv) {
  // A locale with other digits, which must not get into files and file names. Qt reads it once; files keep
  // the system's encoding.
  const QByteArray language = qgetenv("LC_ALL");
  qputenv("LC_ALL", "fa_IR.UTF-8");
  QLocale::setDefault(QLocale::system());
  qputenv("LC_ALL", language);
  const QCoreApplication application(argc, argv);
  return RunTestObjects() == 0 ? 0 : 1;
}
