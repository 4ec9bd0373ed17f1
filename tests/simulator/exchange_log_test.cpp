#include "simulator/src/exchange_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

namespace varkel::sim {
namespace {

TEST(ExchangeLog, KeepsTheNewestAndCountsAll) {
  ExchangeLog log;
  for (std::size_t i = 0; i <= ExchangeLog::kCapacity; ++i) {
    log.Add({1, i == 0 ? std::uint8_t{0x07} : std::uint8_t{0x08}, {}});
  }
  EXPECT_EQ(log.All().size(), ExchangeLog::kCapacity);
  EXPECT_EQ(log.Count(), ExchangeLog::kCapacity + 1);
  EXPECT_TRUE(log.Of(0x07).empty()) << "the oldest goes first";
  EXPECT_TRUE(log.WaitFor(0x08, ExchangeLog::kCapacity, std::chrono::milliseconds(0)));
  EXPECT_FALSE(log.WaitFor(0x07, 1, std::chrono::milliseconds(1)));
}

}  // namespace
}  // namespace varkel::sim
