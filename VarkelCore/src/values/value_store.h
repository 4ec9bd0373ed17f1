#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/values/fov_angles.h"

namespace varkel {

/// Where the text of a variable comes from.
enum class ValueOrigin {
  kDefault,   ///< the model table, or a placeholder
  kRead,      ///< the sensor
  kEdited,    ///< the user, not saved yet
  kSent,      ///< saved, not read back yet
  kVerified,  ///< saved, and read back as sent
  kDiffers,   ///< saved, but the sensor reports another value
};

/// "default", "read", "edited", "sent", "verified", "differs".
const char* OriginName(ValueOrigin origin);

/// A field of a reply.
struct Reading {
  VarInfo* var = nullptr;
  std::string text;
  std::vector<std::uint8_t> raw;  ///< its bytes as the sensor sent them; may be empty
};

/// A field of a set payload.
struct SentField {
  VarInfo* var = nullptr;
  std::string text;
  std::vector<std::uint8_t> bytes;
};

/// A set command that was sent.
struct SentCommand {
  std::string set_cmd;
  std::vector<SentField> fields;
  std::optional<FovAngles> fov;  ///< for the field-of-view command
};

/// The values of one catalogue: those the sensor reported, the user's edits, and those that were sent.
///
/// There is one function for each event that changes values; no other code writes `VarInfo::current_val`. The
/// user's edits are kept apart from what the sensor reports: a reading never replaces an edited text, and
/// cancelling restores the last reported one. State is kept only for variables that an event has changed.
///
/// Thread-safe; the catalogue's value lock guards everything. The listener is called without holding it.
class ValueStore {
 public:
  using Time = std::chrono::system_clock::time_point;
  /// A position in the sequence of events.
  using Moment = std::uint64_t;
  using Listener = std::function<void()>;

  /// `listener` is called on the event's thread for the first change after each TakeChanges.
  explicit ValueStore(std::shared_ptr<ConfigParser> catalogue, Listener listener = {});

  // Events

  /// The sensor reported these fields in answer to a request made at `asked`. Readings of fields that were
  /// sent after that moment, and all readings from before the last change of sensor, are out of date and
  /// dropped.
  void Read(std::vector<Reading> readings, Moment asked, Time time = std::chrono::system_clock::now());
  /// The sensor reported the first `sectors` sectors of the field of view; the other angles keep their
  /// values.
  void ReadFov(const FovAngles& angles, Moment asked, std::size_t sectors = kFovSectors);
  /// The user changed a text. A text equal to the current one is not an edit.
  void Edit(VarInfo& var, const std::string& text);
  /// The user changed one angle of the field of view; `index` is below 10.
  void EditFov(std::size_t index, float degrees);
  /// Reverts one edit to what the sensor last reported, or to the table's default.
  void TakeBack(VarInfo& var);
  void TakeBackFov(std::size_t index);
  /// Reverts all edits. True if angles of the field of view are among them.
  bool Cancel();
  /// The command was sent completely in a request made at `asked`. Its edits stay pending until the save
  /// ends.
  void Sent(const SentCommand& command, Moment asked);
  /// A save succeeded: its edits are no longer pending, except those edited again meanwhile.
  void Saved(std::span<const SentCommand> commands);
  /// The sensor refused the command, or did not answer it. Its edits show the code until they are changed.
  void Refused(const std::string& set_cmd, int code);
  /// Another sensor may answer from now on: earlier readings need not be its values.
  void SensorChanged();
  /// Like Cancel and SensorChanged; also sets the first four start angles to 0.
  void Disconnected();
  /// The texts of all variables named "SN" become "xxxxxxxx".
  void SerialNumberUnknown();

  // Queries

  Moment Now() const;
  /// Whether this sensor has reported the variable since `moment`.
  bool IsRead(const VarInfo& var, Moment moment = 0) const;
  bool IsFovRead() const;
  /// The number of sectors in this sensor's last report, if that came after `moment`; otherwise 0.
  std::size_t FovSectorsRead(Moment moment = 0) const;
  bool IsEdited(const VarInfo& var) const;
  /// In no particular order; not including the angles of the field of view.
  std::vector<const VarInfo*> EditedVars() const;
  bool IsFovEdited() const;
  /// Whether this set command has pending edits.
  bool IsPending(const std::string& set_cmd) const;
  /// The number of set commands with pending edits.
  std::size_t pending_count() const;
  /// The angles as shown, and as the sensor last reported them.
  FovAngles Fov() const;
  FovAngles ReportedFov() const;

  /// The current text and the bytes with which the sensor reported it; no bytes if the text was edited or not
  /// reported by the sensor.
  struct Field {
    std::string text;
    std::vector<std::uint8_t> raw;
  };
  Field FieldToSend(const VarInfo& var) const;

  /// What a row shows of the variable.
  struct Shown {
    std::string text;
    std::string switch_text;     ///< the text of the variable's switch, if it has one
    std::string held;            ///< the text that reverting the edit restores
    std::optional<int> refusal;  ///< why the last save of this edit failed
    ValueOrigin origin = ValueOrigin::kDefault;
    bool edited = false;  ///< the variable, its switch or, for the field of view, its angles
    bool stale = false;   ///< read, but not from the currently connected sensor
    std::optional<Time> read_time;
    std::vector<std::uint8_t> raw;  ///< the field's bytes in the last reply
    std::uint32_t set_start_pos = 0;
    std::uint32_t length = 0;
  };
  Shown Show(const VarInfo& var) const;

  /// The last text sent, and what the sensor has reported since.
  struct Verification {
    std::string sent;
    std::optional<std::string> read_back;
    bool equal = false;  ///< read back as it was sent
  };
  /// nullopt if the variable was not sent to this sensor.
  std::optional<Verification> Verify(const VarInfo& var) const;
  /// The last start angles sent, and what the sensor has reported since.
  std::optional<Verification> VerifyFov() const;

  /// The variables that events have changed since the last call, each once.
  std::vector<const VarInfo*> TakeChanges();

 private:
  struct State {
    std::string reported;           // the text that cancelling an edit restores
    std::vector<std::uint8_t> raw;  // the field's bytes for that text; empty: not read, or sent since
    ValueOrigin origin = ValueOrigin::kDefault;  // of `reported`
    std::optional<Time> read_time;
    Moment read_at = 0;
    Moment sent_at = 0;
    std::optional<SentField> sent;  // to this sensor
    std::optional<int> refusal;     // of the present edit
    bool edited = false;
    bool changed = false;  // is listed in changed_
  };

  template <typename Change>
  void Apply(const Change& change);

  // With the value lock held.
  State& StateOf(const VarInfo& var);
  const State* FindState(const VarInfo& var) const;
  State& Touch(const VarInfo& var);
  void TouchFov();
  void Store(Reading& reading, Time time);
  void ForgetEdit(VarInfo& var, State& state);
  bool CancelAll();
  void ForgetSensor();
  bool IsPendingLocked(const std::string& set_cmd) const;
  bool IsReadLocked(const State& state) const { return state.read_at > sensor_since_; }

  const std::shared_ptr<ConfigParser> catalogue_;
  const Listener listener_;

  // Guarded by the catalogue's value lock.
  Moment moment_ = 0;
  Moment sensor_since_ = 0;  // the last change of sensor
  std::unordered_map<const VarInfo*, State> states_;
  std::map<std::string, std::size_t> pending_;  // set command -> edited variables
  std::vector<const VarInfo*> changed_;
  FovAngles fov_ = kDefaultFov;
  FovAngles reported_fov_ = kDefaultFov;
  bool fov_edited_ = false;
  std::size_t fov_sectors_ = 0;  // of the last reading
  Moment fov_read_at_ = 0;
  Moment fov_sent_at_ = 0;
  std::optional<FovAngles> sent_fov_;  // to this sensor
};

}  // namespace varkel
