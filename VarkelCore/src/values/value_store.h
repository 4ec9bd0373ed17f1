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
  kVerified,  ///< saved and read back as it was sent
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

/// A set command that went out.
struct SentCommand {
  std::string set_cmd;
  std::vector<SentField> fields;
  std::optional<FovAngles> fov;  ///< for the field-of-view command
};

/// The values of one catalogue: what the sensor reported, what the user made of it, what was sent.
///
/// One function for each event that changes values; nobody else writes `VarInfo::current_val`. The user's
/// edits are kept apart from what the sensor reports: a reading never replaces an edited text, and cancelling
/// gives back the last reported one. State is kept only for variables that an event has touched.
///
/// Thread-safe; the catalogue's value lock guards everything. The listener is called without it.
class ValueStore {
 public:
  using Time = std::chrono::system_clock::time_point;
  /// A point in the order of events.
  using Moment = std::uint64_t;
  using Listener = std::function<void()>;

  /// `listener` is called on the thread of the event when the first change comes after TakeChanges.
  explicit ValueStore(std::shared_ptr<ConfigParser> catalogue, Listener listener = {});

  // Events

  /// The sensor reported these fields in answer to a request made at `asked`. Fields that were sent after
  /// that moment, and everything from before the last change of sensor, are out of date and dropped.
  void Read(std::vector<Reading> readings, Moment asked, Time time = std::chrono::system_clock::now());
  /// The sensor reported the field of view, its first `sectors`; the other angles are those from before.
  void ReadFov(const FovAngles& angles, Moment asked, std::size_t sectors = kFovSectors);
  /// The user changed a text. A text equal to the present one is no edit.
  void Edit(VarInfo& var, const std::string& text);
  /// The user changed one angle of the field of view; `index` is below 10.
  void EditFov(std::size_t index, float degrees);
  /// One edit goes back to what the sensor reported last, or to the table's default.
  void TakeBack(VarInfo& var);
  void TakeBackFov(std::size_t index);
  /// All edits go back like that. True when angles of the field of view are among them.
  bool Cancel();
  /// The command went out whole in a request made at `asked`. Its edits stay pending until the save ends.
  void Sent(const SentCommand& command, Moment asked);
  /// A save ended well: what it sent is no longer pending, unless it was edited again meanwhile.
  void Saved(std::span<const SentCommand> commands);
  /// The sensor refused the command, or did not answer it. Its edits show the code until they change.
  void Refused(const std::string& set_cmd, int code);
  /// Another sensor may answer from now on: what was read so far is not known to be its value.
  void SensorChanged();
  /// Cancel, SensorChanged, and the first four start angles become 0.
  void Disconnected();
  /// The texts of all variables named "SN" become "xxxxxxxx".
  void SerialNumberUnknown();

  // Queries

  Moment Now() const;
  /// Whether this sensor reported the variable, since `moment` at that.
  bool IsRead(const VarInfo& var, Moment moment = 0) const;
  bool IsFovRead() const;
  /// How many sectors this sensor reported last, since `moment` at that.
  std::size_t FovSectorsRead(Moment moment = 0) const;
  bool IsEdited(const VarInfo& var) const;
  /// In no particular order; without the angles of the field of view.
  std::vector<const VarInfo*> EditedVars() const;
  bool IsFovEdited() const;
  /// Whether an edit waits for this set command.
  bool IsPending(const std::string& set_cmd) const;
  /// The number of set commands with edits.
  std::size_t pending_count() const;
  /// The angles as shown, and as the sensor reported them last.
  FovAngles Fov() const;
  FovAngles ReportedFov() const;

  /// The bytes with which the sensor reported the present text; empty for an edited text and for one that
  /// the sensor did not report.
  struct Field {
    std::string text;
    std::vector<std::uint8_t> raw;
  };
  Field FieldToSend(const VarInfo& var) const;

  /// What a row shows of the variable.
  struct Shown {
    std::string text;
    std::string switch_text;     ///< the text of the variable's switch, if it has one
    std::string held;            ///< what an edited text goes back to
    std::optional<int> refusal;  ///< why the last save of this edit failed
    ValueOrigin origin = ValueOrigin::kDefault;
    bool edited = false;  ///< the variable, its switch or, for the field of view, its angles
    bool stale = false;   ///< read, but not from the sensor that is connected now
    std::optional<Time> read_time;
    std::vector<std::uint8_t> raw;  ///< the field's bytes in the last reply
    std::uint32_t set_start_pos = 0;
    std::uint32_t length = 0;
  };
  Shown Show(const VarInfo& var) const;

  /// What was sent last, and what the sensor has reported since.
  struct Verification {
    std::string sent;
    std::optional<std::string> read_back;
    bool equal = false;  ///< read back as it was sent
  };
  /// nullopt if the variable was not sent to this sensor.
  std::optional<Verification> Verify(const VarInfo& var) const;
  /// The start angles that were sent last, and what the sensor has reported since.
  std::optional<Verification> VerifyFov() const;

  /// The variables that events have touched since the last call, each once.
  std::vector<const VarInfo*> TakeChanges();

 private:
  struct State {
    std::string reported;           // what the text goes back to when an edit is cancelled
    std::vector<std::uint8_t> raw;  // the field's bytes that belong to it; empty: not read, or sent since
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
