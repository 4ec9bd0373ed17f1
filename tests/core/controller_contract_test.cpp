#include <QMetaMethod>

#include "tests/core/core_test.h"

namespace {

// What hosts rely on: the controller's signals by number and its invokables in their order.
constexpr char kSignals[] =
    "isConnectedChanged() lidarModelChanged() lidarClearModel() lidarShowModel() myMapChanged() "
    "fovConfigChanged() isUpgradingChanged() sendCommandHistoryChanged() errorMessageChanged() "
    "successMessageChanged() isDownloadLogChanged() lidarModelListChanged() "
    "isResetAllSettingsVisibleChanged() sendLogMessage(QString,QString) downloadFinished() "
    "downloadOperationLogFinished(bool) someVarOutOfRange(QString) connectTypeChanged() "
    "zeltoLidarInfoChanged() isGetPBLVersionChanged() initInfoChanged() myTimerMapChanged()";
constexpr char kInvokables[] =
    "void InitConfigFileParser(QString);void InitConfigFileParser();bool ConnectLidar();"
    "bool CheckLidarConnection();void Run(int);void Stop();void SetText(int,int,int,int,QString);"
    "void ClearSetMap();int getSetMapSize();void StartGetConfigFile();void SendCommand(QString,QString);"
    "QString getSendKtcCommandReturnHeader();QString getSendKtcCommandReturnPayload();int Restart();"
    "int Reset();int UpgradeLidar(QUrl,int,int,int);int ZeltoUpgradeLidar(QUrl);int MarvoUpgradeLidar(QUrl);"
    "int DownloadOperationLog(QUrl);int DownloadOperationLogThread(QUrl);int DownloadLog(QUrl,QString);"
    "void GetLidarModuleInfo(int);bool UpdateSingleVarInfo(QString,QString);bool "
    "UpdateSingleVarInfo(QString);"
    "bool CheckVarIsWithinRange(QString,QString);bool CheckVarIsWithinRange(QString);"
    "bool CheckModuleVarsWithinRange(int);void SetMultiFovConfig(int,QString);void UpdateUI();"
    "void setErrorMsg(QString);void setSuccessMsg(QString);void SetLogBytesFlowStatus(bool);"
    "bool GetIsConnectingLidar();bool CheckVarExistsInConfigFileByName(QString);QString getLidarSN();"
    "QString getLidarPN();void setModuleIndexUse(int);void ZeltoSetStandby(int);void ZeltoSetSpinRate(int);"
    "void ZeltoSetReturnMode(int);int ZeltoGetCorrection(QString);"
    "QVariantList ZeltoGetLidarFunctionSafety();QString ZeltoGetBaudRate();"
    "void ZeltoSetBaudRateFromUI(QString);QVariantList ZeltoGetDestinationConfig(bool);"
    "QVariantList ZeltoGetDestinationConfig();bool ZeltoSetDestinationIPandPort(QString,int);"
    "void ZeltoSetUpgradeMode(int);void MarvoSetIMURange(int,int);QString getVMNowName();"
    "bool isTimerUpdate(int,int,int);";

class ControllerContractTest : public QObject {
  Q_OBJECT
 private slots:
  void MethodsKeepTheirOrder() {
    const QMetaObject& meta = VarkelManager::staticMetaObject;
    QCOMPARE(meta.className(), "VarkelManager");
    int number = meta.methodOffset();
    for (const QByteArray& signature : QByteArray(kSignals).split(' ')) {
      QCOMPARE(meta.method(number).methodType(), QMetaMethod::Signal);
      QCOMPARE(meta.method(number++).methodSignature(), signature);
    }
    QByteArray invokables;
    for (; number < meta.methodCount(); ++number) {
      const QMetaMethod method = meta.method(number);
      if (method.methodType() != QMetaMethod::Method) continue;
      invokables += QByteArray(method.typeName()) + ' ' + method.methodSignature() + ';';
    }
    QCOMPARE(invokables.left(int{sizeof(kInvokables) - 1}), QByteArray(kInvokables));
  }
};

const RegisterTest<ControllerContractTest> registered;

}  // namespace

#include "controller_contract_test.moc"
