#include "simulator/src/firmware_store.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "simulator/src/firmware_version.h"
#include "tests/simulator/piece_frame.h"

namespace varkel::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kCommand = 0x60;
const Bytes kFull(1024, 0x5A);
const Piece kFirst{.number = 1, .count = 3, .data = kFull};
const Piece kSecond{.number = 2, .count = 3, .data = kFull};
const Piece kThird{.number = 3, .count = 3, .data = {7}};

Bytes Frame(const Piece& piece) {
  return PieceFrame(kCommand, piece);
}

/// The frame of the second piece with one byte changed.
Bytes Changed(std::size_t position, std::uint8_t value) {
  Bytes frame = Frame(kSecond);
  frame[position] = value;
  return frame;
}

Bytes Cut(const Bytes& frame, std::size_t size) {
  return {frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(size)};
}

struct BadPiece {
  std::string what;
  Bytes frame;  ///< in place of the second of three
  ReturnCode code;
};

// A bad second piece is refused with its own code and ends the transfer: the good one comes too late.
TEST(FirmwareStore, RefusesEachKindOfBadPiece) {
  Bytes longer = Frame(kSecond);
  longer.push_back(0);
  const std::vector<BadPiece> cases = {
      {"nothing", {}, kBadPieceFrame},
      {"cut header", Cut(Frame(kSecond), 7), kBadPieceFrame},
      {"first identifier byte", Changed(0, 0x57), kBadPieceFrame},
      {"second identifier byte", Changed(1, 0x75), kBadPieceFrame},
      {"command", Changed(2, 0xFF), kBadPieceFrame},
      {"return code", Changed(3, 1), kBadPieceFrame},
      {"length that wraps", Changed(4, 0xFF), kBadPieceFrame},
      {"byte behind the frame", longer, kBadPieceFrame},
      {"cut frame", Cut(Frame(kSecond), 500), kBadPieceFrame},
      {"frame without a piece header", {0x47, 0x74, kCommand, 0, 0, 0, 0, 1, 0}, kBadPieceFrame},
      {"reserved", Changed(11, 1), kBadPieceReserved},
      {"number 0", Frame({.number = 0, .count = 3, .data = kFull}), kBadPieceNumber},
      {"number left out", Frame({.number = 3, .count = 3, .data = kFull}), kBadPieceNumber},
      {"biggest number", Frame({.number = 0xFFFFFFFF, .count = 3, .data = kFull}), kBadPieceNumber},
      {"other count", Frame({.number = 2, .count = 4, .data = kFull}), kBadPieceCount},
      {"first piece of none", Frame({.number = 1, .count = 0, .data = kFull}), kBadPieceCount},
      {"first piece of too many",
       Frame({.number = 1, .count = FirmwareStore::kMostPieces + 1, .data = kFull}), kBadPieceCount},
      {"short piece", Frame({.number = 2, .count = 3, .data = Bytes(1023)}), kBadPieceSize},
      {"long piece", Frame({.number = 2, .count = 3, .data = Bytes(1025)}), kBadPieceSize},
      {"empty last piece", Frame({.number = 1, .count = 1}), kBadPieceSize},
      {"long last piece", Frame({.number = 1, .count = 1, .data = Bytes(1025)}), kBadPieceSize},
      {"checksum", Frame({.number = 2, .count = 3, .checksum = 0, .data = kFull}), kBadPieceChecksum},
      {"data", Changed(24, 0), kBadPieceChecksum},
  };
  for (const BadPiece& bad : cases) {
    SCOPED_TRACE(bad.what);
    FirmwareStore store;
    ASSERT_EQ(store.Receive(kCommand, Frame(kFirst)), kSuccess);
    EXPECT_EQ(store.Receive(kCommand, bad.frame), bad.code);
    EXPECT_EQ(store.Receive(kCommand, Frame(kSecond)), kBadPieceNumber) << "the transfer goes on";
    EXPECT_TRUE(store.Package().empty());
  }
}

TEST(FirmwareStore, PutsThePiecesTogether) {
  FirmwareStore store;
  ASSERT_EQ(store.Receive(kCommand, Frame(kFirst)), kSuccess);
  ASSERT_EQ(store.Receive(kCommand, Frame(kSecond)), kSuccess);
  // Another first piece begins anew.
  for (const Piece& piece : {kFirst, kSecond}) ASSERT_EQ(store.Receive(kCommand, Frame(piece)), kSuccess);
  EXPECT_TRUE(store.Package().empty());
  ASSERT_EQ(store.Receive(kCommand, Frame(kThird)), kSuccess);
  Bytes whole(2048, 0x5A);
  whole.push_back(7);
  EXPECT_EQ(store.Package(), whole);
  EXPECT_EQ(store.Receive(kCommand, Frame(kThird)), kBadPieceNumber) << "the transfer is over";
  ASSERT_EQ(store.Receive(kCommand, Frame(kFirst)), kSuccess);
  EXPECT_EQ(store.Package(), whole) << "a package stays until the next whole one";
}

TEST(FirmwareStore, RunsTheLastVersionThatAPackageNamed) {
  FirmwareStore store;
  const auto install = [&store](const std::string& content) {
    EXPECT_EQ(store.Receive(kCommand, Frame({.data = Bytes(content.begin(), content.end())})), kSuccess);
    return store.Install().value_or("the first");
  };
  EXPECT_EQ(store.Install(), std::nullopt);
  EXPECT_EQ(install("no version\n"), "the first");
  EXPECT_EQ(install("VARKEL-SIM FIRMWARE 3.5.0.1 2024-11-05\n"), "3.5.0.1 (2024-11-05)");
  EXPECT_EQ(install("no version\n"), "3.5.0.1 (2024-11-05)");
}

TEST(FirmwareVersion, IsReadFromAWellFormedFirstLineOnly) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"VARKEL-SIM FIRMWARE 0.0.255.1 2024-12-31\n", "0.0.255.1 (2024-12-31)"},
      {std::string("VARKEL-SIM FIRMWARE 1.2.3.4 2024-01-01\n\0\xFF", 41), "1.2.3.4 (2024-01-01)"},
      {"VARKEL-SIM FIRMWARE 1.2.3.4 2024-01-01", ""},
      {"VARKEL-SIM FIRMWARE 1.2.3.4 2024-01-01 \n", ""},
      {" VARKEL-SIM FIRMWARE 1.2.3.4 2024-01-01\n", ""},
      {"VARKEL-SIM FIRMWARE 1.2.3 2024-01-01\n", ""},
      {"VARKEL-SIM FIRMWARE 1.2.3.256 2024-01-01\n", ""},
      {"VARKEL-SIM FIRMWARE 1.2.3.99999999999999999999 2024-01-01\n", ""},
      {"VARKEL-SIM FIRMWARE 1.2.3.4 2024-13-01\n", ""},
      {"VARKEL-SIM FIRMWARE 1.2.3.4 2024-01-00\n", ""},
      {"VARKEL-SIM FIRMWARE 1.2.3.4 24-01-01\n", ""},
      {"", ""},
      {std::string(100'000, '1') + "\n", ""},
  };
  for (const auto& [package, version] : cases) {
    EXPECT_EQ(FirmwareVersionIn(Bytes(package.begin(), package.end())).value_or(""), version)
        << package.substr(0, 60);
  }
}

}  // namespace
}  // namespace varkel::sim
