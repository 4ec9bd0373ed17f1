#include "simulator/src/simulated_small_sensor.h"
#include "tests/core/core_test.h"

namespace {

/// The controller on two serial lines, which carry no KTC.
class SmallSensorLinesTest : public QObject {
  Q_OBJECT
 private slots:
  void RefusedFunctionLeavesTheLinesUsable() {
    varkel::sim::SimulatedSmallSensor sensor;
    sensor.Start();
    Bench bench;
    VarkelManager& manager = *bench.manager;
    manager.InitConfigFileParser("Zelto");
    manager.set_serial_port_485(QString::fromStdString(sensor.rs485_path()));
    manager.set_serial_port_232(QString::fromStdString(sensor.uart_path()));
    QVERIFY(bench.Connect());
    manager.ZeltoSetStandby(1);
    QCOMPARE(bench.NextError(), "lidar is not connected, or lidar is upgrade");
    QCOMPARE(manager.connectType(), 2);  // hosts rely on the switch, also when the function is refused
    manager.SendCommand("02", "0A 01");  // the serial number
    QVERIFY2(bench.errors.isEmpty(), qPrintable(bench.errors.join('\n')));
    QVERIFY(manager.getSendKtcCommandReturnHeader().startsWith("24 4C 44 43 4D 44 2C "));
    manager.Stop();
    QCOMPARE(manager.connectType(), 1);
    QVERIFY(bench.Connect());
  }
};

const RegisterTest<SmallSensorLinesTest> registered;

}  // namespace

#include "small_sensor_lines_test.moc"
