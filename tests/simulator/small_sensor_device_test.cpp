// What a small sensor makes of the bytes, frames and items that reach it.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Source/src/serial_frame.h"
#include "simulator/src/ota_store.h"
#include "simulator/src/serial_request.h"
#include "simulator/src/small_sensor_device.h"

namespace varkel::sim {
namespace {

using quarn::lidar::EncodeCommandFrame;
using quarn::lidar::EncodeOtaFrame;
using quarn::lidar::ReplyKind;
using Bytes = std::vector<std::uint8_t>;

Bytes Joined(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

struct Stream {
  const char* name;
  Bytes bytes;
  std::vector<std::uint8_t> codes;  ///< of the requests in it
};

TEST(SerialRequestReader, FindsEveryGoodFrameInAnyPieces) {
  const Bytes command = EncodeCommandFrame(3, Bytes{10, 20}, 0xDEADBEEF);
  const Bytes longest = EncodeCommandFrame(2, Bytes(254), 1);
  const Bytes data = EncodeOtaFrame(0x12, 7, 8, Bytes(1024, '$'));
  const Bytes stump(command.begin(), command.end() - 3);
  Bytes flipped = command;
  flipped[10] ^= 1U;
  Bytes liar = data;
  liar[19] = 0xFF;
  const Bytes half_tag = {'$', 'L', 'D', '$'};
  const std::vector<Stream> streams = {
      {"two frames", Joined({command, data}), {3, 0x12}},
      {"the longest command", longest, {2}},
      {"noise around", Joined({half_tag, command, half_tag, data}), {3, 0x12}},
      {"a stump ahead", Joined({stump, command, command}), {3, 3}},
      {"a flipped byte", Joined({flipped, command}), {3}},
      {"a length of 4 GB", Joined({liar, command}), {3}},
      {"nothing whole", stump, {}},
  };
  for (const Stream& stream : streams) {
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, stream.bytes.size()}) {
      SCOPED_TRACE(stream.name + std::string(" in pieces of ") + std::to_string(piece));
      SerialRequestReader reader;
      std::vector<std::uint8_t> codes;
      for (std::size_t at = 0; at < stream.bytes.size(); at += piece) {
        const auto rest = std::span(stream.bytes).subspan(at);
        reader.Append(rest.first(std::min(piece, rest.size())));
        while (const auto request = reader.Next()) codes.push_back(request->code);
      }
      EXPECT_EQ(codes, stream.codes);
    }
  }
  const auto request = ParseSerialRequest(data);
  ASSERT_TRUE(request);
  EXPECT_EQ(request->kind, ReplyKind::kOta);
  EXPECT_EQ(request->first, 7U);
  EXPECT_EQ(request->second, 8U);
  EXPECT_EQ(request->payload, Bytes(1024, '$'));
}

struct Step {
  std::uint8_t type;
  std::uint32_t first;
  std::uint32_t second;
  Bytes data;
  OtaStatus status;
};

struct Transfer {
  const char* name;
  std::vector<Step> steps;
  std::size_t received;
};

TEST(OtaStore, TakesFramesOnlyInTheirOrder) {
  const Bytes first(1024, 1);
  const Bytes second(6, 2);
  const Bytes all = Joined({first, second});
  const std::uint32_t crc = quarn::lidar::Crc32Mpeg2(all);
  const Step start{1, 1030, 0, {}, kOtaTaken};
  const Step block0{2, 0, 2, first, kOtaTaken};
  const Step block1{2, 1, 2, second, kOtaTaken};
  const Step end{3, crc, 1030, {}, kOtaTaken};
  const std::vector<Transfer> transfers = {
      {"whole", {start, block0, block1, end}, 1},
      {"each frame twice", {start, start, block0, block0, block1, block1, end, end}, 1},
      {"begun anew", {start, block0, start, block0, block1, end}, 1},
      {"no start", {{2, 0, 2, first, kOtaWrongOrder}}, 0},
      {"no end frame's start", {{3, crc, 1030, {}, kOtaWrongOrder}}, 0},
      {"end too early", {start, block0, {3, crc, 1030, {}, kOtaWrongOrder}}, 0},
      {"the fault ends it", {start, {2, 1, 2, second, kOtaBadBlock}, {2, 0, 2, first, kOtaWrongOrder}}, 0},
      {"a block left out", {start, {2, 1, 2, second, kOtaBadBlock}}, 0},
      {"an earlier block", {start, block0, block1, {2, 0, 2, first, kOtaBadBlock}}, 0},
      {"another block again", {start, block0, {2, 0, 2, Bytes(1024, 9), kOtaBadBlock}}, 0},
      {"another count", {start, {2, 0, 3, first, kOtaBadCount}}, 0},
      {"a short block", {start, {2, 0, 2, second, kOtaBadBlockSize}}, 0},
      {"a long last block", {start, block0, {2, 1, 2, Bytes(7), kOtaBadBlockSize}}, 0},
      {"another checksum", {start, block0, block1, {3, crc + 1, 1030, {}, kOtaBadChecksum}}, 0},
      {"another length", {start, block0, block1, {3, crc, 1031, {}, kOtaBadLength}}, 0},
      {"data after the end", {start, block0, block1, end, {2, 1, 2, second, kOtaWrongOrder}}, 1},
      {"nothing", {{1, 0, 0, {}, kOtaBadLength}}, 0},
      {"4 GB", {{1, 0xFFFFFFFF, 0, {}, kOtaBadLength}}, 0},
      {"no such mode", {{1, 1030, 2, {}, kOtaBadPurpose}}, 0},
      {"no such component", {{0x11, 1030, 4, {}, kOtaBadPurpose}}, 0},
      {"data in the start", {{1, 1030, 0, {1}, kOtaBadBlockSize}}, 0},
      {"frames of the other kind", {start, {0x12, 0, 2, first, kOtaWrongOrder}}, 0},
      {"an unknown frame", {start, {4, 0, 0, {}, kOtaUnknownFrame}}, 0},
  };
  for (const Transfer& transfer : transfers) {
    SCOPED_TRACE(transfer.name);
    OtaStore store;
    std::size_t completed_count = 0;
    for (std::size_t i = 0; i < transfer.steps.size(); ++i) {
      const Step& step = transfer.steps[i];
      std::optional<ReceivedFirmware> completed;
      EXPECT_EQ(store.Receive({ReplyKind::kOta, step.type, step.data, step.first, step.second}, completed),
                step.status)
          << "step " << i;
      completed_count += completed ? 1 : 0;
    }
    EXPECT_EQ(completed_count, transfer.received);
    ASSERT_EQ(store.Received().size(), transfer.received);
    for (const ReceivedFirmware& firmware : store.Received()) EXPECT_EQ(firmware.bytes, all);
  }
}

struct Refusal {
  std::uint8_t code;
  Bytes payload;
  Bytes contents;  ///< of the reply
};

TEST(SmallSensorHandler, RefusesWhatItDoesNotKnow) {
  SmallSensorDevice device;
  Bytes version(27);
  version[0] = 15;
  version[1] = 3;
  const std::vector<Refusal> table = {
      {3, {99, 0}, {99, 0, 1}}, {3, {10}, {10, 0, 2}}, {3, {10, 1, 1}, {10, 0, 2}}, {3, {12, 3}, {12, 3}},
      {3, {}, {0, 0, 2}},       {2, {99}, {99, 1}},    {2, {11, 5, 0}, {11, 3}},    {2, {11, 0, 4}, {11, 3}},
      {2, {11, 0}, {11, 2}},    {2, {15, 0}, {15, 2}}, {2, version, {15, 3}},       {4, {10, 1}, {10, 2}},
  };
  for (const Refusal& row : table) {
    const SerialReply reply = device.handler.Handle({ReplyKind::kCommand, row.code, row.payload, 0, 0});
    EXPECT_EQ(reply.code, row.code);
    EXPECT_EQ(reply.contents, row.contents) << testing::PrintToString(row.payload);
  }
  EXPECT_FALSE(device.state.Items().ready_for_firmware);
  EXPECT_EQ(device.state.Items().spin_rate, SmallSensorItems().spin_rate);
}

TEST(SmallSensorHandler, TakesComponentsOnlyOnceItsModeWasChanged) {
  SmallSensorDevice device;
  const SerialRequest start{ReplyKind::kOta, 0x11, {}, 100, 2};
  EXPECT_EQ(device.handler.Handle(start).contents, Bytes{kOtaNotReady});
  EXPECT_EQ(device.handler.Handle({ReplyKind::kCommand, 3, {12, 4}, 0, 0}).contents, (Bytes{12, 0, 0}));
  EXPECT_EQ(device.handler.Handle(start).contents, Bytes{kOtaTaken});
  device.PowerUp();
  EXPECT_EQ(device.handler.Handle(start).contents, Bytes{kOtaNotReady});
}

}  // namespace
}  // namespace varkel::sim
