#include "tests/catalogue/field_bytes.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace varkel::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

void Append(Bytes& bytes, std::uint64_t value, std::size_t size) {
  for (std::size_t i = size; i-- > 0;) {
    bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }
}

// All numbers of a text that is cut by one of `separators`.
Bytes Pieces(const std::string& text, const char* separators, int base) {
  Bytes bytes;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(begin, end - begin), nullptr, base)));
    begin = end + 1;
  }
  return bytes;
}

Bytes Version(const std::string& text, bool hardware) {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  unsigned first = 0;
  unsigned month = 0;
  unsigned day = 0;
  char name[9] = {};
  const char* layout = hardware ? "%8s %u.%u.%u.%u (%u)" : "%u.%u.%u.%u (%u-%u-%u)";
  Bytes bytes;
  if (hardware) {
    std::sscanf(text.c_str(), layout, name, &a, &b, &c, &d, &first);  // NOLINT(cert-err34-c)
    bytes.assign(name, name + 8);
  } else {
    std::sscanf(text.c_str(), layout, &a, &b, &c, &d, &first, &month, &day);  // NOLINT(cert-err34-c)
  }
  for (const unsigned number : {a, b, c, d}) {
    Append(bytes, number, 1);
  }
  Append(bytes, first, hardware ? 4 : 2);
  if (!hardware) {
    Append(bytes, month, 1);
    Append(bytes, day, 1);
  }
  return bytes;
}

Bytes Number(const VarInfo& var, const std::string& text) {
  Bytes bytes;
  const double raw = std::strtod(text.c_str(), nullptr) / static_cast<double>(var.coefficient);
  if (var.var_type == "float32") {
    Append(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(raw)), 4);
  } else if (var.var_type == "double") {
    Append(bytes, std::bit_cast<std::uint64_t>(raw), 8);
  } else {
    Append(bytes, static_cast<std::uint64_t>(std::llround(raw)), var.var_len);
  }
  return bytes;
}

}  // namespace

std::optional<Bytes> DefaultBytes(const VarInfo& var) {
  const std::string& text = var.default_val;
  if (var.var_type == "IP") {
    return Pieces(text, ".", 10);
  }
  if (var.var_type == "MAC") {
    return Pieces(text, ":", 16);
  }
  if (var.var_type == "HWVER" || var.var_type == "SWVER_YMD") {
    return Version(text, var.var_type == "HWVER");
  }
  if (var.var_type == "DT") {
    unsigned long hours = 0;
    unsigned long minutes = 0;
    unsigned long seconds = 0;
    std::sscanf(text.c_str(), "%lu h %lu min %lu s", &hours, &minutes, &seconds);  // NOLINT(cert-err34-c)
    Bytes bytes;
    Append(bytes, hours * 3600 + minutes * 60 + seconds, var.var_len);
    return bytes;
  }
  if (var.var_type == "string") {
    Bytes bytes(text.begin(), text.end());
    if (bytes.size() > var.var_len) {
      return std::nullopt;
    }
    bytes.resize(var.var_len);
    return bytes;
  }
  return Number(var, text);
}

}  // namespace varkel::test
