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
/// Lives on the window's thread, which calls everything here. Workers run on threads of their own; their
/// reports reach this object through an event queue, so every signal is emitted on the window's thread, in
/// the order in which it was raised. The destructor interrupts and joins all workers, also those that wait
/// for a silent sensor, within a fraction of a second.
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
  /// The functions of small sensors for calls that never wait (varkel::BackgroundFunctions).
  Q_PROPERTY(QObject* smallSensor READ smallSensor CONSTANT)
  /// A search through all pages (varkel::SearchModel).
  Q_PROPERTY(QObject* search READ search CONSTANT)
  /// What live variables were since the model was selected (varkel::LiveHistory).
  Q_PROPERTY(QObject* history READ history CONSTANT)
  /// The edits of all pages that are not saved (varkel::UserEdits).
  Q_PROPERTY(QObject* edits READ edits CONSTANT)
  /// Snapshots of the connected sensor (varkel::Snapshots).
  Q_PROPERTY(QObject* snapshots READ snapshots CONSTANT)
  /// What becomes of a sensor after its upgrade (varkel::SensorReturn).
  Q_PROPERTY(QObject* sensorReturn READ sensorReturn CONSTANT)
  /// Faults of the selected model's table (varkel::TableFindings).
  Q_PROPERTY(QObject* findings READ findings CONSTANT)
  /// The console's last reply by the model's table, for a monospaced font; empty without one.
  Q_PROPERTY(QString decodedReply READ decodedReply NOTIFY sendCommandHistoryChanged)
  /// True while all exchanges are recorded.
  Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
  /// The addresses that connected last (varkel::RecentAddresses).
  Q_PROPERTY(QObject* recentAddresses READ recentAddresses CONSTANT)

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
  /// A read started by ReadPageInBackground ended (also when a guard or a disconnect ended it).
  void pageReadFinished(int module);
  void connectionCheckFinished(bool alive);
  void isWorkingChanged();
  /// A save started by RunInBackground ended; its outcome came as a notice.
  void pageWriteFinished(int module);
  /// An edit was made, saved or taken back: "edited" of the variable maps and getSetMapSize may differ.
  void editsChanged();
  /// What a save in the background sent has been read back, as far as it could be; `differs` when the sensor
  /// holds something else. The outcome is in the log as well.
  void saveReadBack(int module, QString outcome, bool differs);
  void isRecordingChanged();

 public:
  // Hosts address what follows by number: new ones are added at the end. All are called on the window's
  // thread. Those that exchange something with the sensor wait for it, up to 5 s with a silent one; the
  // window uses the calls at the end, which never wait. Failures are reported as errorMessage and
  // sendLogMessage.

  // Model and connection

  /// Selects a model and loads its table; pending edits of the model before are dropped.
  /// zeltoLidarInfoChanged, connectTypeChanged, lidarClearModel, lidarModelChanged and lidarShowModel follow
  /// at once, in this order. A table that can't be loaded leaves no pages and is reported.
  Q_INVOKABLE void InitConfigFileParser(const QString& model_name = QStringLiteral("Quenta"));
  /// Starts to connect with the present settings, which are saved. False while an attempt runs.
  /// isConnectedChanged follows a success, errorMessageChanged a failure.
  Q_INVOKABLE bool ConnectLidar();
  /// Asks the sensor whether it answers, with up to two exchanges. Changes nothing.
  Q_INVOKABLE bool CheckLidarConnection();

  // Writing

  /// Saves the edits of a page with one command for each that is pending; the address command is the last.
  /// successMessageChanged or errorMessageChanged, editsChanged, myMapChanged and sendCommandHistoryChanged
  /// follow.
  Q_INVOKABLE void Run(int module);
  /// Disconnects, or ends the attempt that runs: edits of pages are dropped, whoever waits for the sensor
  /// returns. isConnectedChanged follows, then myMapChanged and fovConfigChanged, or zeltoLidarInfoChanged
  /// for a small sensor.
  Q_INVOKABLE void Stop();
  /// Edits the variable at [level1 page][level2 group][level3 index]. `type` 1: `text` is its value, 2: the
  /// value of its switch, 3: the index of one of its options. Nothing is sent. editsChanged follows.
  Q_INVOKABLE void SetText(int type, int level1, int level2, int level3, const QString& text);
  /// Takes all edits back: their variables show what the sensor reported last. editsChanged follows, and
  /// fovConfigChanged when angles went back.
  Q_INVOKABLE void ClearSetMap();
  /// The number of set commands with edits that are not saved.
  Q_INVOKABLE int getSetMapSize();

  // Commands to the sensor

  /// Asks for the sensor's configuration file on a worker; the outcome goes to standard output.
  Q_INVOKABLE void StartGetConfigFile();
  /// Sends a command that was typed in hexadecimal, one byte and a payload of bytes separated by spaces.
  /// sendCommandHistoryChanged follows, unless a text can't be read.
  Q_INVOKABLE void SendCommand(const QString& cmd_qs, const QString& payload_qs);
  /// The last reply's header in hexadecimal; empty when the last command failed.
  Q_INVOKABLE QString getSendKtcCommandReturnHeader() const;
  /// The last reply's payload in hexadecimal, its first 1024 bytes.
  Q_INVOKABLE QString getSendKtcCommandReturnPayload() const;
  /// Restarts the sensor: 0, and the connection is ended; -1 without a connection, beside an upgrade or a
  /// download, or when the table has no such command; else the sensor's code.
  Q_INVOKABLE int Restart();
  /// Resets all settings of the sensor; results as Restart, but the connection stays.
  Q_INVOKABLE int Reset();

  // Upgrades: each sends the package from a worker. isUpgradingChanged follows at once and at the end, with
  // upgradeProgress in between; then successMessageChanged or errorMessageChanged.

  /// By the upgrade row at [level1][level2][level3]. 0 when it was started, or when the file can't be used or
  /// the row has no command; -1 without a connection or beside an upgrade or a download. The sensor is
  /// restarted 10 s after success.
  Q_INVOKABLE int UpgradeLidar(const QUrl& fileUrl, int level1, int level2, int level3);
  /// A small sensor, in the mode of ZeltoSetUpgradeMode. 0 when it was started or the file can't be used; -1
  /// when refused.
  Q_INVOKABLE int ZeltoUpgradeLidar(const QUrl& fileUrl);
  /// A Marvo sensor: 0 when it was started, else -1.
  Q_INVOKABLE int MarvoUpgradeLidar(const QUrl& fileUrl);

  // Log downloads. isDownloadLogChanged follows at once and at the end.

  /// The operation log, packed into the archive `fileUrl`, on a worker: 0, or -1 without a connection or
  /// beside an upgrade or a download. downloadOperationLogFinished follows a started one.
  Q_INVOKABLE int DownloadOperationLog(const QUrl& fileUrl);
  /// The same on the calling thread.
  Q_INVOKABLE int DownloadOperationLogThread(const QUrl& fileUrl);
  /// The log of the variable named `type` into the folder `fileUrl`, on a worker; results as
  /// DownloadOperationLog. downloadFinished follows a started one.
  Q_INVOKABLE int DownloadLog(const QUrl& fileUrl, const QString& type);

  // Reading

  /// Reads a page of a network sensor, one exchange for each get command; myMapChanged follows. Does nothing
  /// without a connection, beside an upgrade or a download, or for a page that does not exist.
  Q_INVOKABLE void GetLidarModuleInfo(int module);
  /// Reads one variable, found by "var_name" or "name", "var_id" or "id"; true when its value was refreshed.
  Q_INVOKABLE bool UpdateSingleVarInfo(const QString& qs_var_info,
                                       const QString& search_type = QStringLiteral("var_name"));

  // Checks

  /// Whether the variable's value is within its range; true for one without a range and for one that does not
  /// exist.
  Q_INVOKABLE bool CheckVarIsWithinRange(const QString& qs_var_info,
                                         const QString& search_type = QStringLiteral("var_name"));
  /// Whether all values of the page may be sent. someVarOutOfRange and a log line follow for each that may
  /// not.
  Q_INVOKABLE bool CheckModuleVarsWithinRange(int module);
  /// Edits one angle of the field of view in degrees: index 0 to 4 starts, 5 to 9 ends; others are ignored.
  /// editsChanged follows; for a text that is no number from 0 to 360 errorMessageChanged and
  /// fovConfigChanged.
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
  /// Whether an attempt to connect runs.
  Q_INVOKABLE bool GetIsConnectingLidar();
  /// Whether the table has a variable of this name, capitalised or in lower case.
  Q_INVOKABLE bool CheckVarExistsInConfigFileByName(const QString& qs_var_info);
  /// The text of the variable "SN" on the pages; empty without one.
  Q_INVOKABLE QString getLidarSN();
  /// The text of the variable "PN" on the pages; empty without one.
  Q_INVOKABLE QString getLidarPN();
  /// The page that is shown: its live variables are read continuously while connected.
  Q_INVOKABLE void setModuleIndexUse(int module);

  // Small sensors. The first five make the connection type 2, whatever the model; the others refuse with
  // another one.

  Q_INVOKABLE void ZeltoSetStandby(int standby);  ///< any number but 0 is standby
  Q_INVOKABLE void ZeltoSetSpinRate(int rate);    ///< its low byte is sent
  Q_INVOKABLE void ZeltoSetReturnMode(int mode);  ///< 0 strongest, else last
  /// Writes the correction data to the file `path`: 0, -1 when refused or not written, else the sensor's
  /// code.
  Q_INVOKABLE int ZeltoGetCorrection(const QString& path);
  /// The state's text, then fault codes as "0x" and four digits; empty after a failure.
  Q_INVOKABLE QVariantList ZeltoGetLidarFunctionSafety();
  /// The serial line's rate in decimal; empty after a failure.
  Q_INVOKABLE QString ZeltoGetBaudRate();
  /// Sets it from decimal text; successMessageChanged follows.
  Q_INVOKABLE void ZeltoSetBaudRateFromUI(const QString& baudRateStr);
  /// Address and port that the sensor sends its points to, as texts; empty after a failure. `silent` keeps
  /// the exchange out of the byte log.
  Q_INVOKABLE QVariantList ZeltoGetDestinationConfig(bool silent = false);
  /// Sets them; true, and successMessageChanged follows, when the sensor took them.
  Q_INVOKABLE bool ZeltoSetDestinationIPandPort(const QString& ip, int port);
  /// What ZeltoUpgradeLidar replaces: 0 application and FPGA, 1 PBL, 2 junction box.
  Q_INVOKABLE void ZeltoSetUpgradeMode(int mode);
  /// Indices of the page's lists: 0 to 5 and 0 to 3; successMessageChanged follows.
  Q_INVOKABLE void MarvoSetIMURange(int angularRangeIndex, int accelRangeIndex);

  /// The model that the program was started for; empty without one.
  Q_INVOKABLE QString getVMNowName();
  /// Whether the variable at [page i][group j][index k] is read continuously while its page is shown.
  Q_INVOKABLE bool isTimerUpdate(int i, int j, int k);

  // The window's own calls, which never wait for the sensor.

  /// GetLidarModuleInfo on a worker; pageReadFinished follows. While a read runs, the last request for
  /// another page is remembered and done next.
  Q_INVOKABLE void ReadPageInBackground(int module);
  /// CheckLidarConnection on a worker; connectionCheckFinished follows. Does nothing while one runs.
  Q_INVOKABLE void CheckConnectionInBackground();
  /// Run on a worker; pageWriteFinished follows, also after a refusal.
  Q_INVOKABLE void RunInBackground(int module);
  /// SendCommand on a worker.
  Q_INVOKABLE void SendCommandInBackground(const QString& cmd_qs, const QString& payload_qs);
  /// Restart on a worker.
  Q_INVOKABLE void RestartInBackground();
  /// Reset on a worker.
  Q_INVOKABLE void ResetInBackground();
  /// The map of one variable, the same as myMap[module][group][index]; empty when there is none.
  Q_INVOKABLE QVariantMap variableMap(int module, int group, int index) const;
  /// Names of the fields that saving the page would write although they were neither edited nor ever read
  /// from this sensor: what the user should be asked about first.
  Q_INVOKABLE QStringList unreadFields(int module) const;
  /// The rows of a page as a list model (PageModel); null when there is no such page. This object owns it; it
  /// is another one after another model has been selected.
  Q_INVOKABLE QObject* pageModel(int module);
  /// What there is to know about one variable, as maps of "caption" and "text"; empty when there is none.
  Q_INVOKABLE QVariantList variableDetails(int module, int group, int index) const;
  /// The versions that the pages show: maps with "label" and "value".
  Q_INVOKABLE QVariantList installedVersions() const;
  /// Bytes of a firmware package; -1 when the file can't be used.
  Q_INVOKABLE double packageSize(const QUrl& fileUrl) const;
  /// Records all exchanges to a pcap file, over reconnects too, until StopRecording or an end that is
  /// reported. Empty, or a sentence that says why it can't.
  Q_INVOKABLE QString StartRecording(const QUrl& fileUrl);
  Q_INVOKABLE void StopRecording();
  /// What two lines of the byte flow, a request's and what came of it, mean by the model's table; either may
  /// be empty.
  Q_INVOKABLE QString decodedLogLines(const QString& sent, const QString& received) const;

 private:
  struct Parts;

  void AnnounceSave();
  void CheckSave();

  std::unique_ptr<Parts> d_;
};
