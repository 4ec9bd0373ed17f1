#include <QApplication>

#include "app/src/application.h"
#include "app/src/arguments.h"

int main(int argc, char* argv[]) {
  arguments::AnswerHelpAndVersion({argv, static_cast<std::size_t>(argc)});
  return RunApplication(argc, argv, [](MainWindow&) { return QApplication::exec(); });
}
