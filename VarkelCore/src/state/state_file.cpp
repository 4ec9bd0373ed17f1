#include "VarkelCore/src/state/state_file.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <span>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "VarkelCore/src/state/json_text.h"
#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel {

namespace {

constexpr int kElementIndent = 4;

std::string FormatVersion(const std::pair<std::string, std::string>& version) {
  return JsonObject().Text("name", version.first).Text("value", version.second).str();
}

std::string FormatFailure(const ReadFailure& failure) {
  return JsonObject()
      .Text("get", failure.get)
      .Text("payload", failure.payload)
      .Number("code", failure.code)
      .Text("reason", failure.reason)
      .Raw("ids", JsonList(failure.ids, [](const std::string& id) { return JsonText(id); }))
      .str();
}

/// Reads the members of one object; raises std::runtime_error with the member's location on a fault.
class Members {
 public:
  Members(const QJsonValue& value, std::string place) : object_(value.toObject()), place_(std::move(place)) {
    if (!value.isObject()) throw std::runtime_error(place_ + " is not an object");
  }

  std::string Text(const char* key) const {
    const QJsonValue value = object_.value(QLatin1String(key));
    if (!value.isString()) Fail(key, "is not a text");
    return value.toString().toStdString();
  }
  int Number(const char* key) const {
    const QJsonValue value = object_.value(QLatin1String(key));
    if (!value.isDouble()) Fail(key, "is not a number");
    const double number = value.toDouble();
    if (number != value.toInt()) Fail(key, "is not a 32-bit integer");
    return value.toInt();
  }
  /// Empty if there is no such member.
  std::string TextIfPresent(const char* key) const {
    return object_.contains(QLatin1String(key)) ? Text(key) : std::string();
  }
  /// False if there is no such member.
  bool Flag(const char* key) const {
    const QJsonValue value = object_.value(QLatin1String(key));
    if (!value.isBool() && !value.isUndefined()) Fail(key, "is neither true nor false");
    return value.toBool();
  }
  template <typename Read>
  void EachOf(const char* key, const Read& read) const {
    const QJsonValue value = object_.value(QLatin1String(key));
    if (!value.isArray()) Fail(key, "is not a list");
    int index = 0;
    for (const QJsonValue element : value.toArray()) {
      read(element, Place(key) + "[" + std::to_string(index++) + "]");
    }
  }
  [[noreturn]] void Fail(const char* key, const std::string& fault) const {
    throw std::runtime_error(Place(key) + " " + fault);
  }

 private:
  std::string Place(const char* key) const { return place_.empty() ? key : place_ + "." + key; }

  const QJsonObject object_;
  const std::string place_;
};

StateValue ReadValue(const QJsonValue& json, const std::string& place) {
  const Members members(json, place);
  return {members.Text("id"),   members.Text("name"),  members.Text("page"), members.Text("group"),
          members.Text("unit"), members.Text("value"), members.Text("raw"),  members.Flag("live")};
}

ReadFailure ReadFailureOf(const QJsonValue& json, const std::string& place) {
  const Members members(json, place);
  ReadFailure failure{
      members.Text("get"), members.Text("payload"), members.Number("code"), members.Text("reason"), {}};
  members.EachOf("ids", [&](const QJsonValue& id, const std::string& id_place) {
    if (!id.isString()) throw std::runtime_error(id_place + " is not a text");
    failure.ids.push_back(id.toString().toStdString());
  });
  return failure;
}

SensorState ReadState(const QJsonDocument& document) {
  if (!document.isObject()) throw std::runtime_error("it is not an object");
  const Members top(QJsonValue(document.object()), "");
  const int format = top.Number("format");
  if (format > kStateFormat) {
    top.Fail("format", "is " + std::to_string(format) + ", newer than this program reads (" +
                           std::to_string(kStateFormat) + ")");
  }
  if (format < 1) top.Fail("format", "is " + std::to_string(format) + ", which never existed");
  SensorState state;
  state.tool = top.Text("tool");
  state.time = top.Text("time");
  state.reason = top.TextIfPresent("reason");
  state.model = top.Text("model");
  state.table = top.Text("table");
  state.pn = top.Text("pn");
  state.sn = top.Text("sn");
  top.EachOf("versions", [&](const QJsonValue& json, const std::string& place) {
    const Members version(json, place);
    state.versions.emplace_back(version.Text("name"), version.Text("value"));
  });
  std::unordered_set<std::string> ids;
  top.EachOf("values", [&](const QJsonValue& json, const std::string& place) {
    state.values.push_back(ReadValue(json, place));
    const std::string& id = state.values.back().id;
    if (!ids.insert(id).second) throw std::runtime_error(place + ".id is " + id + " again");
  });
  top.EachOf("failed", [&](const QJsonValue& json, const std::string& place) {
    state.failed.push_back(ReadFailureOf(json, place));
  });
  return state;
}

std::string LineAndColumn(const QByteArray& json, int offset) {
  const QByteArray before = json.left(offset);
  const int line = before.count('\n') + 1;
  const int column = static_cast<int>(before.size()) - before.lastIndexOf('\n');
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace

std::string FormatValue(const StateValue& value) {
  JsonObject object;
  object.Text("id", value.id).Text("name", value.name).Text("page", value.page).Text("group", value.group);
  object.Text("unit", value.unit).Text("value", value.text).Text("raw", value.raw);
  if (value.live) object.Bool("live", true);
  return object.str();
}

std::string FormatState(const SensorState& state) {
  const auto line = [](const char* key, const std::string& json, const char* end = ",\n") {
    return "  " + JsonText(key) + ": " + json + end;
  };
  return "{\n" + line("format", std::to_string(kStateFormat)) + line("tool", JsonText(state.tool)) +
         line("time", JsonText(state.time)) +
         (state.reason.empty() ? std::string() : line("reason", JsonText(state.reason))) +
         line("model", JsonText(state.model)) + line("table", JsonText(state.table)) +
         line("pn", JsonText(state.pn)) + line("sn", JsonText(state.sn)) +
         line("versions", JsonList(state.versions, FormatVersion, kElementIndent)) +
         line("values", JsonList(state.values, FormatValue, kElementIndent)) +
         line("failed", JsonList(state.failed, FormatFailure, kElementIndent), "\n") + "}\n";
}

tl::expected<SensorState, std::string> ParseState(const QByteArray& json) {
  QJsonParseError error{};
  const QJsonDocument document = QJsonDocument::fromJson(json, &error);
  if (error.error != QJsonParseError::NoError) {
    return tl::unexpected("no JSON at " + LineAndColumn(json, error.offset) + ": " +
                          error.errorString().toStdString());
  }
  try {
    return ReadState(document);
  } catch (const std::runtime_error& fault) {
    return tl::unexpected(std::string("not a snapshot: ") + fault.what());
  }
}

std::string SaveState(const SensorState& state, const QString& path) {
  const std::string json = FormatState(state);
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(json.data()), json.size());
  switch (WriteAtomically(path, bytes)) {
    case WriteResult::kWritten:
      return {};
    case WriteResult::kNotOpened:
      return path.toStdString() + ": can't be opened for writing.";
    case WriteResult::kNotWritten:
      break;
  }
  return path.toStdString() + ": can't be written.";
}

tl::expected<SensorState, std::string> LoadState(const QString& path) {
  const std::string name = path.toStdString();
  const QFileInfo info(path);
  if (!info.isFile()) return tl::unexpected(name + ": no such file.");
  QFile file(path);
  if (info.size() > kLargestStateFile) {
    return tl::unexpected(name + ": larger than " + std::to_string(kLargestStateFile / 1024 / 1024) +
                          " MiB, not a snapshot.");
  }
  if (!file.open(QIODevice::ReadOnly)) return tl::unexpected(name + ": can't be opened.");
  auto state = ParseState(file.read(kLargestStateFile));
  if (!state) return tl::unexpected(name + ": " + state.error() + ".");
  return state;
}

}  // namespace varkel
