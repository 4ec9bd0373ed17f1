#include <QHash>
#include <QMetaMethod>

#include "tests/core/core_test.h"

namespace {

class ControllerContractTest : public QObject {
  Q_OBJECT
 private slots:
  // Hosts address signals and invokables by number: one that is added, removed or moved shifts those after
  // it.
  void MethodsKeepTheirNumbers() {
    const std::pair<int, const char*> numbers[] = {{0, "isConnectedChanged()"},
                                                   {7, "sendCommandHistoryChanged()"},
                                                   {13, "sendLogMessage(QString,QString)"},
                                                   {15, "downloadOperationLogFinished(bool)"},
                                                   {21, "myTimerMapChanged()"},
                                                   {100, "InitConfigFileParser(QString)"},
                                                   {104, "Run(int)"},
                                                   {110, "SendCommand(QString,QString)"},
                                                   {115, "UpgradeLidar(QUrl,int,int,int)"},
                                                   {120, "DownloadLog(QUrl,QString)"},
                                                   {126, "CheckModuleVarsWithinRange(int)"},
                                                   {136, "setModuleIndexUse(int)"},
                                                   {146, "ZeltoSetDestinationIPandPort(QString,int)"},
                                                   {150, "isTimerUpdate(int,int,int)"}};
    const QMetaObject& meta = VarkelManager::staticMetaObject;
    QHash<int, QByteArray> methods;  // signals from 0 on, invokables from 100
    int next[] = {0, 100};
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
      const QMetaMethod method = meta.method(i);
      const bool is_signal = method.methodType() == QMetaMethod::Signal;
      methods[next[is_signal ? 0 : 1]++] = method.methodSignature();
    }
    for (const auto& [number, signature] : numbers) QCOMPARE(methods[number], QByteArray(signature));
  }
};

const RegisterTest<ControllerContractTest> registered;

}  // namespace

#include "controller_contract_test.moc"
