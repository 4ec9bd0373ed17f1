#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "VarkelCore/src/state/snapshot_folder.h"
#include "VarkelCore/src/state/state_file.h"
#include "tests/state/state_rig.h"
#include "tests/support/qt_files.h"

namespace varkel {
namespace {

constexpr char kValueLine[] =
    R"({"id": "1-1", "name": "A", "page": "P", "group": "G", "unit": "", "value": "5", "raw": "05"})";

QByteArray FileText(const std::string& format, const std::string& values) {
  return QByteArray::fromStdString(
      "{\"format\": " + format +
      ", \"tool\": \"\", \"time\": \"\", \"model\": \"\", \"table\": \"\", \"pn\": \"\",\n \"sn\": \"\", "
      "\"versions\": [], \"values\": " +
      values + ", \"failed\": []}");
}

TEST(Snapshot, ContainsWhatTheSensorReports) {
  test::StateRig rig;
  rig.sensor.AddFault("0x0C=error:9");
  const auto [state, end] = rig.Read();
  EXPECT_EQ(end, ReadEnd::kComplete);
  EXPECT_EQ(state.sn, "QU64A2419C0087");
  EXPECT_EQ(state.versions.front(),
            std::pair(std::string("Hardware Version"), std::string("QMB-A 2.1.0.3 (1187)")));
  ASSERT_EQ(state.failed.size(), 1U);
  EXPECT_EQ(state.failed.front().reason, "the sensor refused with code 9");
  EXPECT_EQ(state.failed.front().ids.size(), 6U);
  EXPECT_EQ(state.values.size() + 6, StateVars(*rig.model.catalogue).size());
  EXPECT_EQ(rig.sensor.restarts(), 0U) << "commands of actions are not read";

  const std::string json = FormatState(state);
  const auto again = ParseState(QByteArray::fromStdString(json));
  ASSERT_TRUE(again) << again.error();
  EXPECT_EQ(FormatState(*again), json);
  EXPECT_NE(json.find("\n    {\"id\": \"4-1\", \"name\": \"Input Voltage\", \"page\": \"Status\", \"group\": "
                      "\"Power\", \"unit\": \"V\", \"value\": "),
            std::string::npos);
}

TEST(Snapshot, AnyTextSurvivesAFile) {
  SensorState state;
  state.values.push_back({"1-1", "quote\" back\\slash", "line\nend", "tab\t", "\xC2\xB0", "\x01\x7F", ""});
  const auto again = ParseState(QByteArray::fromStdString(FormatState(state)));
  ASSERT_TRUE(again) << again.error();
  EXPECT_EQ(FormatState(*again), FormatState(state));
}

TEST(Snapshot, SaysWhereAFileIsWrong) {
  const std::string value = kValueLine;
  std::string wrong_type = value;
  wrong_type.replace(wrong_type.find("\"5\""), 3, "5");
  const struct {
    QByteArray text;
    const char* error;
  } cases[] = {
      {"", "no JSON at line 1, column 1: illegal value"},
      {"[1]", "not a snapshot: it is not an object"},
      {"{}", "not a snapshot: format is not a number"},
      {FileText("2", "[]"), "not a snapshot: format is 2, newer than this program reads (1)"},
      {FileText("1e99", "[]"), "not a snapshot: format is not a 32-bit integer"},
      {FileText("1", "{}"), "not a snapshot: values is not a list"},
      {FileText("1", "[7]"), "not a snapshot: values[0] is not an object"},
      {FileText("1", "[" + wrong_type + "]"), "not a snapshot: values[0].value is not a text"},
      {FileText("1", "[" + value + ", " + value + "]"), "not a snapshot: values[1].id is 1-1 again"},
      {FileText("1", "[" + value).chopped(20), "no JSON at line 2"},
      {QByteArray(100000, '['), "no JSON at line 1"},
  };
  for (const auto& [text, error] : cases) {
    const auto state = ParseState(text);
    ASSERT_FALSE(state) << error;
    EXPECT_EQ(state.error().substr(0, std::string(error).size()), error);
  }
  const QByteArray whole = FileText("1", "[" + value + "]");
  ASSERT_TRUE(ParseState(whole));
  for (int size = 0; size < whole.size(); ++size) EXPECT_FALSE(ParseState(whole.left(size))) << size;
}

TEST(Snapshot, LargeFilesAndFoldersAreNotRead) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("large.json");
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(100LL * 1024 * 1024));
  EXPECT_EQ(LoadState(path).error(), path.toStdString() + ": larger than 32 MiB, not a snapshot.");
  EXPECT_FALSE(LoadState(folder.path()));
  EXPECT_FALSE(SaveState({}, folder.filePath("missing/file.json")).empty());
}

TEST(Snapshot, TheNewestOfEachSensorAreKept) {
  const QTemporaryDir root;
  const SnapshotFolder folder(root.path());
  SensorState state;
  state.sn = "../SN/1";
  QString last;
  for (int i = 0; i < SnapshotFolder::kMaxKept + 2; ++i) {
    const auto entry = folder.Save(state);
    ASSERT_TRUE(entry) << entry.error();
    EXPECT_GT(entry->id, last);
    last = entry->id;
  }
  EXPECT_EQ(Files(root.path()), QStringList{"_._SN_1"}) << "a serial number can't lead to another folder";
  Put(root.filePath("_._SN_1/mine.json"), "{}");
  ASSERT_TRUE(folder.Save(state));
  EXPECT_EQ(folder.List(state.sn).size(), std::size_t{SnapshotFolder::kMaxKept});
  EXPECT_TRUE(QFile::exists(root.filePath("_._SN_1/mine.json")));
  EXPECT_TRUE(folder.Find(state.sn, last));
  EXPECT_FALSE(folder.Find(state.sn, "../mine"));
  EXPECT_FALSE(folder.Find("another", {}));
}

}  // namespace
}  // namespace varkel
