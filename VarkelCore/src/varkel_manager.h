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

/// The one controller that QML talks to: a thin facade over the classes that connect, read, write and load.
///
/// Lives on the window's thread, which makes all calls. Workers run on their own threads; their reports reach
/// this object through an event queue, so every signal is emitted on the window's thread, in the order in
/// which the workers raised it. The destructor interrupts and joins all workers, including those waiting for
/// a silent sensor, within a fraction of a second.
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
  /// True while ReadPageInBackground reads a page.
  Q_PROPERTY(bool isReadingPage READ isReadingPage NOTIFY isReadingPageChanged)
  /// True while another background call is running.
  Q_PROPERTY(bool isWorking READ isWorking NOTIFY isWorkingChanged)
  /// The functions of small sensors as calls that never block (varkel::BackgroundFunctions).
  Q_PROPERTY(QObject* smallSensor READ smallSensor CONSTANT)
  /// The search over all pages (varkel::SearchModel).
  Q_PROPERTY(QObject* search READ search CONSTANT)
  /// The readings of live variables since the model was selected (varkel::LiveHistory).
  Q_PROPERTY(QObject* history READ history CONSTANT)
  /// The unsaved edits of all pages (varkel::UserEdits).
  Q_PROPERTY(QObject* edits READ edits CONSTANT)
  /// Snapshots of the connected sensor (varkel::Snapshots).
  Q_PROPERTY(QObject* snapshots READ snapshots CONSTANT)
  /// Whether a sensor comes back after its upgrade (varkel::SensorReturn).
  Q_PROPERTY(QObject* sensorReturn READ sensorReturn CONSTANT)
  /// Faults of the selected model's table (varkel::TableFindings).
  Q_PROPERTY(QObject* findings READ findings CONSTANT)
  /// The console's last reply decoded with the model's table, for a monospaced font; empty without one.
  Q_PROPERTY(QString decodedReply READ decodedReply NOTIFY sendCommandHistoryChanged)
  /// True while exchanges are being recorded.
  Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
  /// The addresses of recent successful connections (varkel::RecentAddresses).
  Q_PROPERTY(QObject* recentAddresses READ recentAddresses CONSTANT)

 public:
  /// The process's controller, created by the first call; the arguments of later calls are ignored.
  /// The caller that shows the window deletes it.
  static VarkelManager* GetInstance(bool flag, const std::string& config_path);

  /// Reads the settings file; neither connects nor loads a table. Use GetInstance outside tests.
  VarkelManager(bool flag, const std::string& config_path);
  ~VarkelManager() override;

  /// Selects the model that the program was started for. An unknown name is ignored.
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
  QObject* smallSensor() const;
  QObject* search() const;
  QObject* history() const;
  QObject* edits() const;
  QObject* snapshots() const;
  QObject* sensorReturn() const;
  QObject* findings() const;
  QString decodedReply() const;
  bool isRecording() const;
  QObject* recentAddresses() const;

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
  // New signals are added at the end: hosts address the ones above by number.
  void isReadingPageChanged();
  /// A read started by ReadPageInBackground ended (also when it was refused or a disconnect ended it).
  void pageReadFinished(int module);
  void connectionCheckFinished(bool alive);
  void isWorkingChanged();
  /// A save started by RunInBackground ended; its outcome has been reported as a notice.
  void pageWriteFinished(int module);
  /// An edit was made, saved or reverted: "edited" in the variable maps and getSetMapSize may have changed.
  void editsChanged();
  /// The values written by a background save have been read back, as far as possible; `differs` is true if
  /// the sensor holds other values. The outcome is also logged.
  void saveReadBack(int module, QString outcome, bool differs);
  void isRecordingChanged();

 public:
  // Hosts address the calls below by number: new ones are added at the end. All are called on the window's
  // thread. Calls that exchange data with the sensor block, up to 5 s if it is silent; the window uses the
  // calls at the end, which never block. Failures are reported through errorMessage and sendLogMessage.

  // Model and connection

  /// Selects a model and loads its table; pending edits of the previous model are dropped.
  /// zeltoLidarInfoChanged, connectTypeChanged, lidarClearModel, lidarModelChanged and lidarShowModel follow
  /// at once, in this order. A table that can't be loaded is reported, and there are no pages.
  Q_INVOKABLE void InitConfigFileParser(const QString& model_name = QStringLiteral("Quenta"));
  /// Starts connecting with the current settings, which are saved. False while an attempt is running.
  /// isConnectedChanged follows on success, errorMessageChanged on failure.
  Q_INVOKABLE bool ConnectLidar();
  /// Checks with up to two exchanges whether the sensor answers. Changes nothing.
  Q_INVOKABLE bool CheckLidarConnection();

  // Writing

  /// Saves the edits of a page by sending each pending set command once, the address command last.
  /// successMessageChanged or errorMessageChanged, editsChanged, myMapChanged and sendCommandHistoryChanged
  /// follow.
  Q_INVOKABLE void Run(int module);
  /// Disconnects, or ends a running attempt: page edits are dropped, and calls waiting for the sensor return.
  /// isConnectedChanged follows, then myMapChanged and fovConfigChanged, or zeltoLidarInfoChanged for a small
  /// sensor.
  Q_INVOKABLE void Stop();
  /// Edits the variable at [level1 page][level2 group][level3 index]. `type` 1: `text` is its value, 2: the
  /// value of its switch, 3: the index of one of its options. Nothing is sent. editsChanged follows.
  Q_INVOKABLE void SetText(int type, int level1, int level2, int level3, const QString& text);
  /// Reverts all edits: their variables show what the sensor last reported. editsChanged follows, and
  /// fovConfigChanged if angles were reverted.
  Q_INVOKABLE void ClearSetMap();
  /// The number of set commands with unsaved edits.
  Q_INVOKABLE int getSetMapSize();

  // Commands to the sensor

  /// Requests the sensor's configuration file on a worker; the outcome is written to standard output.
  Q_INVOKABLE void StartGetConfigFile();
  /// Sends a command typed in hexadecimal: one command byte, and payload bytes separated by spaces.
  /// sendCommandHistoryChanged follows, unless a text can't be read.
  Q_INVOKABLE void SendCommand(const QString& cmd_qs, const QString& payload_qs);
  /// The last reply's header in hexadecimal; empty when the last command failed.
  Q_INVOKABLE QString getSendKtcCommandReturnHeader() const;
  /// The last reply's payload in hexadecimal, its first 1024 bytes.
  Q_INVOKABLE QString getSendKtcCommandReturnPayload() const;
  /// Restarts the sensor. Returns 0, and the connection ends; -1 without a connection, during an upgrade or a
  /// download, or if the table has no such command; otherwise the sensor's code.
  Q_INVOKABLE int Restart();
  /// Resets all settings of the sensor; same results as Restart, but the connection is kept.
  Q_INVOKABLE int Reset();

  // Upgrades: each sends the package on a worker. isUpgradingChanged follows at once and at the end, while
  // upgradeProgress advances in between; then successMessageChanged or errorMessageChanged.

  /// Uses the upgrade row at [level1][level2][level3]. Returns 0 if the upgrade was started, and also if the
  /// file can't be used or the row has no command; -1 without a connection or during an upgrade or a
  /// download. The sensor is restarted 10 s after success.
  Q_INVOKABLE int UpgradeLidar(const QUrl& fileUrl, int level1, int level2, int level3);
  /// Upgrades a small sensor in the mode set by ZeltoSetUpgradeMode. Returns 0 if the upgrade was started or
  /// the file can't be used; -1 if refused.
  Q_INVOKABLE int ZeltoUpgradeLidar(const QUrl& fileUrl);
  /// Upgrades a Marvo sensor. Returns 0 if the upgrade was started, otherwise -1.
  Q_INVOKABLE int MarvoUpgradeLidar(const QUrl& fileUrl);

  // Log downloads. isDownloadLogChanged follows at once and at the end.

  /// Downloads the operation log into the archive `fileUrl` on a worker. Returns 0, or -1 without a
  /// connection or during an upgrade or a download. downloadOperationLogFinished follows if it was started.
  Q_INVOKABLE int DownloadOperationLog(const QUrl& fileUrl);
  /// The same on the calling thread.
  Q_INVOKABLE int DownloadOperationLogThread(const QUrl& fileUrl);
  /// Downloads the log of the variable named `type` into the folder `fileUrl` on a worker; same results as
  /// DownloadOperationLog. downloadFinished follows if it was started.
  Q_INVOKABLE int DownloadLog(const QUrl& fileUrl, const QString& type);

  // Reading

  /// Reads a page of a network sensor, one exchange for each get command; myMapChanged follows. Does nothing
  /// without a connection, during an upgrade or a download, or for a page that does not exist.
  Q_INVOKABLE void GetLidarModuleInfo(int module);
  /// Reads one variable, looked up by "var_name" or "name", "var_id" or "id"; true if its value was
  /// refreshed.
  Q_INVOKABLE bool UpdateSingleVarInfo(const QString& qs_var_info,
                                       const QString& search_type = QStringLiteral("var_name"));

  // Checks

  /// Whether the variable's value is within its range; true if it has no range or does not exist.
  Q_INVOKABLE bool CheckVarIsWithinRange(const QString& qs_var_info,
                                         const QString& search_type = QStringLiteral("var_name"));
  /// Whether all values of the page can be sent. someVarOutOfRange and a log line follow for each that can't.
  Q_INVOKABLE bool CheckModuleVarsWithinRange(int module);
  /// Edits one angle of the field of view, in degrees: indices 0 to 4 are start angles, 5 to 9 end angles;
  /// others are ignored. editsChanged follows; if the text is not a number from 0 to 360, errorMessageChanged
  /// and fovConfigChanged follow instead.
  Q_INVOKABLE void SetMultiFovConfig(int index, const QString& fov);

  // Notices and state

  /// Emits myMapChanged.
  Q_INVOKABLE void UpdateUI();
  /// Sets errorMessage; errorMessageChanged follows unless it is empty.
  Q_INVOKABLE void setErrorMsg(const QString& str);
  /// Sets successMessage; successMessageChanged follows unless it is empty.
  Q_INVOKABLE void setSuccessMsg(const QString& str);
  /// Whether the bytes of exchanges are logged (sendLogMessage with the type "BYTES").
  Q_INVOKABLE void SetLogBytesFlowStatus(bool flag);
  /// Whether a connection attempt is running.
  Q_INVOKABLE bool GetIsConnectingLidar();
  /// Whether the table has a variable of this name, capitalised or in lower case.
  Q_INVOKABLE bool CheckVarExistsInConfigFileByName(const QString& qs_var_info);
  /// The text of the variable "SN" on the pages; empty if there is none.
  Q_INVOKABLE QString getLidarSN();
  /// The text of the variable "PN" on the pages; empty if there is none.
  Q_INVOKABLE QString getLidarPN();
  /// Sets the page that is shown; its live variables are read continuously while connected.
  Q_INVOKABLE void setModuleIndexUse(int module);

  // Small sensors. The first five set the connection type to 2, whatever the model; the others are refused
  // with any other connection type.

  Q_INVOKABLE void ZeltoSetStandby(int standby);  ///< any number but 0 is standby
  Q_INVOKABLE void ZeltoSetSpinRate(int rate);    ///< its low byte is sent
  Q_INVOKABLE void ZeltoSetReturnMode(int mode);  ///< 0 strongest, else last
  /// Writes the correction data to the file `path`. Returns 0, -1 if refused or not written, otherwise the
  /// sensor's code.
  Q_INVOKABLE int ZeltoGetCorrection(const QString& path);
  /// The text of the state, then the fault codes as "0x" and four digits; empty on failure.
  Q_INVOKABLE QVariantList ZeltoGetLidarFunctionSafety();
  /// The baud rate of the serial line in decimal; empty on failure.
  Q_INVOKABLE QString ZeltoGetBaudRate();
  /// Sets the baud rate from decimal text; successMessageChanged follows.
  Q_INVOKABLE void ZeltoSetBaudRateFromUI(const QString& baudRateStr);
  /// The address and port that the sensor sends its points to, as texts; empty on failure. `silent` keeps the
  /// exchange out of the byte log.
  Q_INVOKABLE QVariantList ZeltoGetDestinationConfig(bool silent = false);
  /// Sets them. Returns true, and successMessageChanged follows, if the sensor accepted them.
  Q_INVOKABLE bool ZeltoSetDestinationIPandPort(const QString& ip, int port);
  /// What ZeltoUpgradeLidar replaces: 0 application and FPGA, 1 PBL, 2 junction box.
  Q_INVOKABLE void ZeltoSetUpgradeMode(int mode);
  /// Takes indices into the page's lists, 0 to 5 and 0 to 3; successMessageChanged follows.
  Q_INVOKABLE void MarvoSetIMURange(int angularRangeIndex, int accelRangeIndex);

  /// The model that the program was started for; empty if there is none.
  Q_INVOKABLE QString getVMNowName();
  /// Whether the variable at [page i][group j][index k] is read continuously while its page is shown.
  Q_INVOKABLE bool isTimerUpdate(int i, int j, int k);

  // The window's own calls, which never block.

  /// GetLidarModuleInfo on a worker; pageReadFinished follows. Of the pages requested while a read is
  /// running, the last one is read next.
  Q_INVOKABLE void ReadPageInBackground(int module);
  /// CheckLidarConnection on a worker; connectionCheckFinished follows. Does nothing while a check is
  /// running.
  Q_INVOKABLE void CheckConnectionInBackground();
  /// Run on a worker; pageWriteFinished follows, even if refused.
  Q_INVOKABLE void RunInBackground(int module);
  /// SendCommand on a worker.
  Q_INVOKABLE void SendCommandInBackground(const QString& cmd_qs, const QString& payload_qs);
  /// Restart on a worker.
  Q_INVOKABLE void RestartInBackground();
  /// Reset on a worker.
  Q_INVOKABLE void ResetInBackground();
  /// The map of one variable, the same as myMap[module][group][index]; empty if there is none.
  Q_INVOKABLE QVariantMap variableMap(int module, int group, int index) const;
  /// Names of the fields that saving the page would write although they were neither edited nor ever read
  /// from this sensor; the user should be asked about these first.
  Q_INVOKABLE QStringList unreadFields(int module) const;
  /// The rows of a page as a list model (PageModel); null if there is no such page. Owned by this object;
  /// selecting another model replaces it.
  Q_INVOKABLE QObject* pageModel(int module);
  /// The details of one variable, as maps of "caption" and "text"; empty if there is no such variable.
  Q_INVOKABLE QVariantList variableDetails(int module, int group, int index) const;
  /// The firmware versions shown on the pages, as maps with "label" and "value".
  Q_INVOKABLE QVariantList installedVersions() const;
  /// The size of a firmware package in bytes; -1 if the file can't be used.
  Q_INVOKABLE double packageSize(const QUrl& fileUrl) const;
  /// Records all exchanges to a pcap file, across reconnects, until StopRecording or until the recording ends
  /// by itself, which is reported. Returns an empty text, or a sentence saying why it can't record.
  Q_INVOKABLE QString StartRecording(const QUrl& fileUrl);
  Q_INVOKABLE void StopRecording();
  /// Decodes two lines of the byte log, a request and its reply or failure, with the model's table; either
  /// may be empty.
  Q_INVOKABLE QString decodedLogLines(const QString& sent, const QString& received) const;

 private:
  struct Parts;

  std::unique_ptr<Parts> d_;
};
