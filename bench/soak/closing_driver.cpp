// Runs the tool without a user: starts a long operation, later ends it in some way, and closes the window.
#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <iostream>

#include "app/src/main_window.h"
#include "bench/soak/figures.h"
#include "bench/soak/operations.h"

// Arguments: model, the two places of its sensor (address and port, or two lines), operation or "connect",
// milliseconds until the ending, the ending, milliseconds until the closing, a folder for files.
int main(int argc, char** argv) {
  constexpr int kRetryMs = 100;  // an attempt may time out on a busy machine
  const QApplication application(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  if (arguments.size() != 9) return 2;
  const QString& model = arguments[1];
  const QString& operation = arguments[4];
  const QString& ending = arguments[6];

  VarkelManager& manager = *new VarkelManager(true, "./Config/varID/Quenta.csv");
  auto window = std::make_unique<MainWindow>(nullptr, model, &manager);  // owns the controller
  window->show();
  manager.set_ip_address(arguments[2]);
  manager.set_port(arguments[3]);
  manager.set_serial_port_485(arguments[2]);
  manager.set_serial_port_232(arguments[3]);

  QTimer timer;
  timer.setSingleShot(true);
  std::function<void()> next;
  QObject::connect(&timer, &QTimer::timeout, [&next] { std::exchange(next, {})(); });
  const auto after = [&](int duration_ms, std::function<void()> step) {
    next = std::move(step);
    timer.start(duration_ms);
  };
  QElapsedTimer clock;  // since closing began
  double waited_ms = 0;
  const auto close = [&] {
    waited_ms = WaitedForCoreMs();
    clock.start();
    std::cout << "\nclosing " << clock.msecsSinceReference() << std::endl;
    window->close();
  };
  const auto end = [&] {
    if (ending == "close") return close();
    ending == "model" ? manager.InitConfigFileParser(model == "Quenta" ? "Zelto-KTC" : "Quenta")
                      : manager.Stop();
    if (ending == "reconnect") manager.ConnectLidar();
    after(arguments[7].toInt(), close);
  };
  bool begun = false;
  const auto begin = [&] {
    if (begun || (operation != "connect" && !manager.IsConnected())) return;
    begun = true;
    std::cout << "begun" << std::endl;
    for (const Operation& known : OperationsOf(model, arguments[8])) {
      if (known.name == operation) known.start(manager);
    }
    after(arguments[5].toInt(), end);
  };
  const auto retry = [&] {
    if (!begun) after(kRetryMs, [&] { manager.ConnectLidar(); });
  };
  QObject::connect(&manager, &VarkelManager::isConnectedChanged, begin);
  QObject::connect(&manager, &VarkelManager::errorMessageChanged, retry);
  manager.ConnectLidar();
  if (operation == "connect") begin();
  const int code = QApplication::exec();
  window.reset();
  std::cout << "\nleft " << static_cast<double>(clock.elapsed()) - WaitedForCoreMs() + waited_ms << std::endl;
  return code;
}
