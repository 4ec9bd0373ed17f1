#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#include <memory>
#include <string>

/// The one controller that QML talks to: a thin face over the classes that connect, read, write and load.
///
/// Lives on the user interface's thread, which calls everything here. Workers run on threads of their own;
/// whatever they have to say reaches this object through an event queue, so every signal is emitted on the
/// user interface's thread, in the order in which it was raised. The destructor interrupts and joins all
/// workers, also those that wait for a silent sensor, within a fraction of a second.
class VarkelManager : public QObject {
  Q_OBJECT

  Q_PROPERTY(QVariantList myMap READ myMap NOTIFY myMapChanged)
  Q_PROPERTY(QString ip_address READ ip_address WRITE set_ip_address NOTIFY initInfoChanged)
  Q_PROPERTY(QString udpPort READ udpPort WRITE setUdpPort NOTIFY initInfoChanged)
  Q_PROPERTY(QString port READ port WRITE set_port NOTIFY initInfoChanged)
  Q_PROPERTY(QString serial_port_485 READ serial_port_485 WRITE set_serial_port_485 NOTIFY initInfoChanged)
  Q_PROPERTY(QString serial_port_232 READ serial_port_232 WRITE set_serial_port_232 NOTIFY initInfoChanged)
  Q_PROPERTY(QString baud_rate READ baud_rate WRITE set_baud_rate NOTIFY initInfoChanged)
  Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
  Q_PROPERTY(QString successMessage READ successMessage NOTIFY successMessageChanged)
  Q_PROPERTY(
      QString SendKtcCommandReturnHeader READ getSendKtcCommandReturnHeader NOTIFY sendCommandHistoryChanged)
  Q_PROPERTY(QString SendKtcCommandReturnPayload READ getSendKtcCommandReturnPayload NOTIFY
                 sendCommandHistoryChanged)
  Q_PROPERTY(int CommandLogCnt READ CommandLogCnt NOTIFY sendCommandHistoryChanged)
  Q_PROPERTY(QVariantList SendCommandHistory READ SendCommandHistory NOTIFY sendCommandHistoryChanged)
  Q_PROPERTY(bool IsConnected READ IsConnected NOTIFY isConnectedChanged)
  Q_PROPERTY(QVariantList FovList READ FovList NOTIFY fovConfigChanged)
  Q_PROPERTY(bool IsUpgrading READ IsUpgrading NOTIFY isUpgradingChanged)
  Q_PROPERTY(bool IsDownloadLog READ IsDownloadLog WRITE setIsDownloadLog NOTIFY isDownloadLogChanged)
  Q_PROPERTY(QVariantList LidarModelList READ LidarModelList NOTIFY lidarModelListChanged)
  Q_PROPERTY(int upgradeProgress READ upgradeProgress)
  Q_PROPERTY(int upgradeProgressTotalLen READ upgradeProgressTotalLen)
  Q_PROPERTY(int connectType READ connectType NOTIFY connectTypeChanged)
  Q_PROPERTY(QVariantList level1List READ level1List NOTIFY lidarModelChanged)
  Q_PROPERTY(QVariantList level2List READ level2List NOTIFY lidarModelChanged)
  Q_PROPERTY(QVariantList ZeltoLidarInfo READ ZeltoLidarInfo NOTIFY zeltoLidarInfoChanged)
  Q_PROPERTY(QVariantList ZeltoLidarVersionInfo READ ZeltoLidarVersionInfo NOTIFY zeltoLidarInfoChanged)
  Q_PROPERTY(bool isGetPBLVersion READ isGetPBLVersion NOTIFY isGetPBLVersionChanged)
  Q_PROPERTY(QVariantList logRepeaterModel READ logRepeaterModel NOTIFY lidarModelChanged)
  /// True while ReadPageInBackground works.
  Q_PROPERTY(bool isReadingPage READ isReadingPage NOTIFY isReadingPageChanged)
  /// True while one of the other calls in the background works.
  Q_PROPERTY(bool isWorking READ isWorking NOTIFY isWorkingChanged)

 public:
  /// The process's controller, created by the first call; the arguments of later calls are ignored.
  /// The caller that shows the window deletes it.
  static VarkelManager* GetInstance(bool flag, const std::string& config_path);

  /// Reads the settings file; neither connects nor loads a table. Use GetInstance outside tests.
  VarkelManager(bool flag, const std::string& config_path);
  ~VarkelManager() override;

  /// Selects the model that the program was started for. A name that is no model is ignored.
  void SetVMNowName(const QString& name);

  QVariantList myMap() const;
  QString ip_address() const;
  void set_ip_address(const QString& text);
  QString udpPort() const;
  void setUdpPort(const QString& text);
  QString port() const;
  void set_port(const QString& text);
  QString serial_port_485() const;
  void set_serial_port_485(const QString& text);
  QString serial_port_232() const;
  void set_serial_port_232(const QString& text);
  QString baud_rate() const;
  void set_baud_rate(const QString& text);
  QString errorMessage() const;
  QString successMessage() const;
  int CommandLogCnt() const;
  QVariantList SendCommandHistory() const;
  bool IsConnected() const;
  QVariantList FovList() const;
  bool IsUpgrading() const;
  bool IsDownloadLog() const;
  void setIsDownloadLog(bool running);
  QVariantList LidarModelList() const;
  int upgradeProgress() const;
  int upgradeProgressTotalLen() const;
  int connectType() const;
  QVariantList level1List() const;
  QVariantList level2List() const;
  QVariantList ZeltoLidarInfo() const;
  QVariantList ZeltoLidarVersionInfo() const;
  bool isGetPBLVersion() const;
  QVariantList logRepeaterModel() const;
  bool isReadingPage() const;
  bool isWorking() const;

 signals:
  void isConnectedChanged();
  void lidarModelChanged();
  void lidarClearModel();
  void lidarShowModel();
  void myMapChanged();
  void fovConfigChanged();
  void isUpgradingChanged();
  void sendCommandHistoryChanged();
  void errorMessageChanged();
  void successMessageChanged();
  void isDownloadLogChanged();
  void lidarModelListChanged();
  void isResetAllSettingsVisibleChanged();
  void sendLogMessage(QString msg, QString type);
  void downloadFinished();
  void downloadOperationLogFinished(bool result);
  void someVarOutOfRange(QString var_name);
  void connectTypeChanged();
  void zeltoLidarInfoChanged();
  void isGetPBLVersionChanged();
  void initInfoChanged();
  void myTimerMapChanged();
  // New signals go behind the others: hosts address the ones above by number.
  void isReadingPageChanged();
  /// A read started by ReadPageInBackground ended (also when a guard or a disconnect ended it).
  void pageReadFinished(int module);
  void connectionCheckFinished(bool alive);
  void isWorkingChanged();
  /// A save started by RunInBackground ended; its outcome came as a notice.
  void pageWriteFinished(int module);
  /// A call made with CallInBackground ended with this result.
  void callFinished(QString operation, QVariant result);
  /// An edit was made, saved or taken back: "edited" of the variable maps and getSetMapSize may differ.
  void editsChanged();

 public:
  Q_INVOKABLE void InitConfigFileParser(const QString& model_name = QStringLiteral("Quenta"));
  Q_INVOKABLE bool ConnectLidar();
  Q_INVOKABLE bool CheckLidarConnection();
  Q_INVOKABLE void Run(int module);
  Q_INVOKABLE void Stop();
  Q_INVOKABLE void SetText(int type, int level1, int level2, int level3, const QString& text);
  Q_INVOKABLE void ClearSetMap();
  Q_INVOKABLE int getSetMapSize();
  Q_INVOKABLE void StartGetConfigFile();
  Q_INVOKABLE void SendCommand(const QString& cmd_qs, const QString& payload_qs);
  Q_INVOKABLE QString getSendKtcCommandReturnHeader() const;
  Q_INVOKABLE QString getSendKtcCommandReturnPayload() const;
  Q_INVOKABLE int Restart();
  Q_INVOKABLE int Reset();
  Q_INVOKABLE int UpgradeLidar(const QUrl& fileUrl, int level1, int level2, int level3);
  Q_INVOKABLE int ZeltoUpgradeLidar(const QUrl& fileUrl);
  Q_INVOKABLE int MarvoUpgradeLidar(const QUrl& fileUrl);
  Q_INVOKABLE int DownloadOperationLog(const QUrl& fileUrl);
  Q_INVOKABLE int DownloadOperationLogThread(const QUrl& fileUrl);
  Q_INVOKABLE int DownloadLog(const QUrl& fileUrl, const QString& type);
  Q_INVOKABLE void GetLidarModuleInfo(int module);
  Q_INVOKABLE bool UpdateSingleVarInfo(const QString& qs_var_info,
                                       const QString& search_type = QStringLiteral("var_name"));
  Q_INVOKABLE bool CheckVarIsWithinRange(const QString& qs_var_info,
                                         const QString& search_type = QStringLiteral("var_name"));
  Q_INVOKABLE bool CheckModuleVarsWithinRange(int module);
  Q_INVOKABLE void SetMultiFovConfig(int index, const QString& fov);
  Q_INVOKABLE void UpdateUI();
  Q_INVOKABLE void setErrorMsg(const QString& str);
  Q_INVOKABLE void setSuccessMsg(const QString& str);
  Q_INVOKABLE void SetLogBytesFlowStatus(bool flag);
  Q_INVOKABLE bool GetIsConnectingLidar();
  Q_INVOKABLE bool CheckVarExistsInConfigFileByName(const QString& qs_var_info);
  Q_INVOKABLE QString getLidarSN();
  Q_INVOKABLE QString getLidarPN();
  Q_INVOKABLE void setModuleIndexUse(int module);
  Q_INVOKABLE void ZeltoSetStandby(int standby);
  Q_INVOKABLE void ZeltoSetSpinRate(int rate);
  Q_INVOKABLE void ZeltoSetReturnMode(int mode);
  Q_INVOKABLE int ZeltoGetCorrection(const QString& path);
  Q_INVOKABLE QVariantList ZeltoGetLidarFunctionSafety();
  Q_INVOKABLE QString ZeltoGetBaudRate();
  Q_INVOKABLE void ZeltoSetBaudRateFromUI(const QString& baudRateStr);
  Q_INVOKABLE QVariantList ZeltoGetDestinationConfig(bool silent = false);
  Q_INVOKABLE bool ZeltoSetDestinationIPandPort(const QString& ip, int port);
  Q_INVOKABLE void ZeltoSetUpgradeMode(int mode);
  Q_INVOKABLE void MarvoSetIMURange(int angularRangeIndex, int accelRangeIndex);
  Q_INVOKABLE QString getVMNowName();
  Q_INVOKABLE bool isTimerUpdate(int i, int j, int k);

  // The window's own calls, which never wait for the sensor. New ones go behind the others.

  /// GetLidarModuleInfo on a worker thread; pageReadFinished follows. While a read runs, a further one for
  /// another page is remembered (the last wins) and done next.
  Q_INVOKABLE void ReadPageInBackground(int module);
  /// CheckLidarConnection on a worker thread; connectionCheckFinished follows. Does nothing while one runs.
  Q_INVOKABLE void CheckConnectionInBackground();
  /// Run on a worker thread; pageWriteFinished follows, also after a refusal.
  Q_INVOKABLE void RunInBackground(int module);
  /// SendCommand on a worker thread; sendCommandHistoryChanged follows a sent command.
  Q_INVOKABLE void SendCommandInBackground(const QString& cmd_qs, const QString& payload_qs);
  Q_INVOKABLE void RestartInBackground();
  Q_INVOKABLE void ResetInBackground();
  /// One of the small sensors' functions above by its name, on a worker thread; callFinished follows with
  /// what it returns. An unknown name answers at once with an invalid result.
  Q_INVOKABLE void CallInBackground(const QString& operation, const QVariantList& arguments);
  /// The map of one variable, the same as myMap[module][group][index]; empty when there is none.
  Q_INVOKABLE QVariantMap variableMap(int module, int group, int index) const;
  /// The values in that map, as one text: a row whose mark is the same has nothing new to show.
  Q_INVOKABLE QString valueMark(int module, int group, int index) const;
  /// Names of the fields that saving the page would write although they were neither edited nor ever read
  /// from this sensor: what the user should be asked about first.
  Q_INVOKABLE QStringList unreadFields(int module) const;
  /// The rows of a page as a list model (PageModel); null when there is no such page. This object owns it; it
  /// is another one after another model has been selected.
  Q_INVOKABLE QObject* pageModel(int module);

 private:
  struct Private;
  std::unique_ptr<Private> d_;
};
