// empty_window STARTED_US: an empty Quick window in a widget container.
#include <QApplication>
#include <QMainWindow>
#include <QQuickView>
#include <cstdlib>

#include "bench/app/first_frame.h"

int main(int argc, char* argv[]) {
  varkel::bench::PrepareDisplay();
  QApplication application(argc, argv);
  QMainWindow window;
  auto* const view = new QQuickView;  // the container owns it
  view->setResizeMode(QQuickView::SizeRootObjectToView);
  window.setCentralWidget(QWidget::createWindowContainer(view));
  view->setSource(QUrl("data:,import QtQuick 2.15\nItem {}"));
  window.resize(1300, 800);
  window.show();
  return varkel::bench::ReportFirstFrame(*view, argc > 1 ? std::strtoll(argv[1], nullptr, 10) : 0);
}
