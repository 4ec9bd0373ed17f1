#include <QMetaMethod>
#include <QMetaProperty>
#include <QTest>

#include "tests/core/core_test.h"

namespace {

/// What hosts and QML rely on: the controller's signals by number, and every property with its notifier.
class ControllerContractTest : public QObject {
  Q_OBJECT
 private slots:
  void SignalsKeepTheirNumbers();
  void PropertiesKeepTheirNotifiers();
  void InvokablesKeepTheirOrder();
};

void ControllerContractTest::SignalsKeepTheirNumbers() {
  const char* const expected[] = {"isConnectedChanged()",
                                  "lidarModelChanged()",
                                  "lidarClearModel()",
                                  "lidarShowModel()",
                                  "myMapChanged()",
                                  "fovConfigChanged()",
                                  "isUpgradingChanged()",
                                  "sendCommandHistoryChanged()",
                                  "errorMessageChanged()",
                                  "successMessageChanged()",
                                  "isDownloadLogChanged()",
                                  "lidarModelListChanged()",
                                  "isResetAllSettingsVisibleChanged()",
                                  "sendLogMessage(QString,QString)",
                                  "downloadFinished()",
                                  "downloadOperationLogFinished(bool)",
                                  "someVarOutOfRange(QString)",
                                  "connectTypeChanged()",
                                  "zeltoLidarInfoChanged()",
                                  "isGetPBLVersionChanged()",
                                  "initInfoChanged()",
                                  "myTimerMapChanged()"};
  const QMetaObject& meta = VarkelManager::staticMetaObject;
  QCOMPARE(meta.className(), "VarkelManager");
  int number = meta.methodOffset();
  for (const char* signature : expected) {
    QCOMPARE(meta.method(number).methodType(), QMetaMethod::Signal);
    QCOMPARE(meta.method(number++).methodSignature(), QByteArray(signature));
  }
}

void ControllerContractTest::PropertiesKeepTheirNotifiers() {
  struct Property {
    const char* name;
    const char* type;
    bool writable;
    const char* notifier;
  };
  const Property expected[] = {{"myMap", "QVariantList", false, "myMapChanged"},
                               {"ip_address", "QString", true, "initInfoChanged"},
                               {"udpPort", "QString", true, "initInfoChanged"},
                               {"port", "QString", true, "initInfoChanged"},
                               {"serial_port_485", "QString", true, "initInfoChanged"},
                               {"serial_port_232", "QString", true, "initInfoChanged"},
                               {"baud_rate", "QString", true, "initInfoChanged"},
                               {"errorMessage", "QString", false, "errorMessageChanged"},
                               {"successMessage", "QString", false, "successMessageChanged"},
                               {"SendKtcCommandReturnHeader", "QString", false, "sendCommandHistoryChanged"},
                               {"SendKtcCommandReturnPayload", "QString", false, "sendCommandHistoryChanged"},
                               {"CommandLogCnt", "int", false, "sendCommandHistoryChanged"},
                               {"SendCommandHistory", "QVariantList", false, "sendCommandHistoryChanged"},
                               {"IsConnected", "bool", false, "isConnectedChanged"},
                               {"FovList", "QVariantList", false, "fovConfigChanged"},
                               {"IsUpgrading", "bool", false, "isUpgradingChanged"},
                               {"IsDownloadLog", "bool", true, "isDownloadLogChanged"},
                               {"LidarModelList", "QVariantList", false, "lidarModelListChanged"},
                               {"upgradeProgress", "int", false, ""},
                               {"upgradeProgressTotalLen", "int", false, ""},
                               {"connectType", "int", false, "connectTypeChanged"},
                               {"level1List", "QVariantList", false, "lidarModelChanged"},
                               {"level2List", "QVariantList", false, "lidarModelChanged"},
                               {"ZeltoLidarInfo", "QVariantList", false, "zeltoLidarInfoChanged"},
                               {"ZeltoLidarVersionInfo", "QVariantList", false, "zeltoLidarInfoChanged"},
                               {"isGetPBLVersion", "bool", false, "isGetPBLVersionChanged"},
                               {"logRepeaterModel", "QVariantList", false, "lidarModelChanged"}};
  const QMetaObject& meta = VarkelManager::staticMetaObject;
  for (const Property& wanted : expected) {
    const QMetaProperty property = meta.property(meta.indexOfProperty(wanted.name));
    QVERIFY2(property.isReadable(), wanted.name);
    QCOMPARE(property.typeName(), wanted.type);
    QCOMPARE(property.isWritable(), wanted.writable);
    QCOMPARE(property.notifySignal().name(), QByteArray(wanted.notifier));
  }
}

void ControllerContractTest::InvokablesKeepTheirOrder() {
  const QByteArrayList expected = {"void InitConfigFileParser(QString)",
                                   "void InitConfigFileParser()",
                                   "bool ConnectLidar()",
                                   "bool CheckLidarConnection()",
                                   "void Run(int)",
                                   "void Stop()",
                                   "void SetText(int,int,int,int,QString)",
                                   "void ClearSetMap()",
                                   "int getSetMapSize()",
                                   "void StartGetConfigFile()",
                                   "void SendCommand(QString,QString)",
                                   "QString getSendKtcCommandReturnHeader()",
                                   "QString getSendKtcCommandReturnPayload()",
                                   "int Restart()",
                                   "int Reset()",
                                   "int UpgradeLidar(QUrl,int,int,int)",
                                   "int ZeltoUpgradeLidar(QUrl)",
                                   "int MarvoUpgradeLidar(QUrl)",
                                   "int DownloadOperationLog(QUrl)",
                                   "int DownloadOperationLogThread(QUrl)",
                                   "int DownloadLog(QUrl,QString)",
                                   "void GetLidarModuleInfo(int)",
                                   "bool UpdateSingleVarInfo(QString,QString)",
                                   "bool UpdateSingleVarInfo(QString)",
                                   "bool CheckVarIsWithinRange(QString,QString)",
                                   "bool CheckVarIsWithinRange(QString)",
                                   "bool CheckModuleVarsWithinRange(int)",
                                   "void SetMultiFovConfig(int,QString)",
                                   "void UpdateUI()",
                                   "void setErrorMsg(QString)",
                                   "void setSuccessMsg(QString)",
                                   "void SetLogBytesFlowStatus(bool)",
                                   "bool GetIsConnectingLidar()",
                                   "bool CheckVarExistsInConfigFileByName(QString)",
                                   "QString getLidarSN()",
                                   "QString getLidarPN()",
                                   "void setModuleIndexUse(int)",
                                   "void ZeltoSetStandby(int)",
                                   "void ZeltoSetSpinRate(int)",
                                   "void ZeltoSetReturnMode(int)",
                                   "int ZeltoGetCorrection(QString)",
                                   "QVariantList ZeltoGetLidarFunctionSafety()",
                                   "QString ZeltoGetBaudRate()",
                                   "void ZeltoSetBaudRateFromUI(QString)",
                                   "QVariantList ZeltoGetDestinationConfig(bool)",
                                   "QVariantList ZeltoGetDestinationConfig()",
                                   "bool ZeltoSetDestinationIPandPort(QString,int)",
                                   "void ZeltoSetUpgradeMode(int)",
                                   "void MarvoSetIMURange(int,int)",
                                   "QString getVMNowName()",
                                   "bool isTimerUpdate(int,int,int)"};
  const QMetaObject& meta = VarkelManager::staticMetaObject;
  QByteArrayList found;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    const QMetaMethod method = meta.method(i);
    if (method.methodType() == QMetaMethod::Method) {
      found.append(QByteArray(method.typeName()) + ' ' + method.methodSignature());
    }
  }
  QCOMPARE(found.mid(0, expected.size()), expected);
}

const RegisterTest<ControllerContractTest> registered;

}  // namespace

#include "controller_contract_test.moc"
