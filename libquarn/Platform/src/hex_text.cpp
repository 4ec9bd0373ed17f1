#include "libquarn/Platform/src/hex_text.h"

#include <array>
#include <cstddef>
#include <cstring>

#if defined(__GNUC__) && defined(__x86_64__)
#define QUARN_HEX_SSSE3
#include <tmmintrin.h>
#endif

namespace quarn::lidar {
namespace {

constexpr std::size_t kCharactersPerByte = 3;
constexpr std::array<char, 16> kDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                          '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};

// Four characters an entry, so that one machine word is copied; the fourth is overwritten by the next byte.
using Entry = std::array<char, 4>;

constexpr std::array<Entry, 256> MakeTable() {
  std::array<Entry, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = {kDigits[i >> 4U], kDigits[i & 0x0FU], ' ', ' '};
  }
  return table;
}

constexpr std::array<Entry, 256> kTable = MakeTable();

#ifdef QUARN_HEX_SSSE3

constexpr std::size_t kLane = 16;

// Which digit stands at each of the 48 characters of sixteen bytes, counted within the half of the digits
// that the lane is filled from; kNone (which the shuffle turns into 0) for blanks and for the other half's
// digits.
constexpr char kNone = -1;
using Places = std::array<char, kLane>;

constexpr Places MakePlaces(std::size_t lane, std::size_t half) {
  Places places{};
  for (std::size_t i = 0; i < kLane; ++i) {
    const std::size_t character = lane * kLane + i;
    const std::size_t column = character % kCharactersPerByte;
    const std::size_t digit = character / kCharactersPerByte * 2 + column;
    const bool within = column < 2 && digit / kLane == half;
    places[i] = within ? static_cast<char>(digit % kLane) : kNone;
  }
  return places;
}

constexpr Places MakeBlanks(std::size_t lane) {
  Places blanks{};
  for (std::size_t i = 0; i < kLane; ++i) {
    blanks[i] = (lane * kLane + i) % kCharactersPerByte == 2 ? ' ' : '\0';
  }
  return blanks;
}

[[gnu::target("ssse3")]] __m128i Load(const void* bytes) {
  return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

[[gnu::target("ssse3")]] __m128i Placed(__m128i digits, const Places& places) {
  return _mm_shuffle_epi8(digits, Load(places.data()));
}

[[gnu::target("ssse3")]] void Store(char* out, __m128i digits, const Places& blanks) {
  const __m128i text = _mm_or_si128(digits, Load(blanks.data()));
  std::memcpy(out, &text, sizeof(text));
}

// Sixteen bytes at a time, on processors with the byte shuffle; gives back how many it has written.
[[gnu::target("ssse3")]] std::size_t WriteSixteens(std::span<const std::uint8_t> bytes, char* out) {
  static constexpr Places kFirst = MakePlaces(0, 0);
  static constexpr Places kMiddleFirst = MakePlaces(1, 0);
  static constexpr Places kMiddleSecond = MakePlaces(1, 1);
  static constexpr Places kLast = MakePlaces(2, 1);
  static constexpr std::array<Places, 3> kBlanks = {MakeBlanks(0), MakeBlanks(1), MakeBlanks(2)};
  const __m128i digits = Load(kDigits.data());
  const __m128i low_half = _mm_set1_epi8(0x0F);
  std::size_t done = 0;
  for (; bytes.size() - done >= kLane; done += kLane) {
    const __m128i block = Load(bytes.data() + done);
    const __m128i high = _mm_shuffle_epi8(digits, _mm_and_si128(_mm_srli_epi16(block, 4), low_half));
    const __m128i low = _mm_shuffle_epi8(digits, _mm_and_si128(block, low_half));
    const __m128i first = _mm_unpacklo_epi8(high, low);
    const __m128i second = _mm_unpackhi_epi8(high, low);
    Store(out, Placed(first, kFirst), kBlanks[0]);
    Store(out + kLane, _mm_or_si128(Placed(first, kMiddleFirst), Placed(second, kMiddleSecond)), kBlanks[1]);
    Store(out + 2 * kLane, Placed(second, kLast), kBlanks[2]);
    out += kCharactersPerByte * kLane;
  }
  return done;
}

std::size_t WriteBlocks(std::span<const std::uint8_t> bytes, char* out) {
  static const bool has_shuffle = __builtin_cpu_supports("ssse3") != 0;
  return has_shuffle ? WriteSixteens(bytes, out) : 0;
}

#else

std::size_t WriteBlocks(std::span<const std::uint8_t> /*bytes*/, char* /*out*/) {
  return 0;
}

#endif

}  // namespace

std::string HexLine(std::span<const std::uint8_t> bytes) {
  std::string text(bytes.size() * kCharactersPerByte, ' ');
  const std::size_t done = WriteBlocks(bytes, text.data());
  char* out = text.data() + done * kCharactersPerByte;
  bytes = bytes.subspan(done);
  if (bytes.empty()) {
    return text;
  }
  for (const std::uint8_t byte : bytes.first(bytes.size() - 1)) {
    std::memcpy(out, kTable[byte].data(), sizeof(Entry));
    out += kCharactersPerByte;
  }
  std::memcpy(out, kTable[bytes.back()].data(), kCharactersPerByte);
  return text;
}

}  // namespace quarn::lidar
