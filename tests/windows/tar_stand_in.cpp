// Windows has a tar, Wine has none: tar -cvf ARCHIVE FILE... and tar -tf ARCHIVE, as the tool and its tests
// call it.
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

constexpr std::size_t kBlock = 512;
using Header = std::array<char, kBlock>;

void Put(Header& header, std::size_t offset, const std::string& text) {
  std::memcpy(header.data() + offset, text.data(), text.size());
}

std::string Octal(std::size_t value, int digits) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%0*zo", digits, value);
  return text.data();
}

Header HeaderOf(const std::string& name, std::size_t size) {
  Header header{};
  Put(header, 0, name.substr(0, 99));
  Put(header, 100, Octal(0644, 7));
  Put(header, 124, Octal(size, 11));
  Put(header, 136, Octal(0, 11));
  Put(header, 148, std::string(8, ' '));  // counts so in its own sum
  Put(header, 156, "0");
  Put(header, 257, "ustar");
  Put(header, 263, "00");
  std::size_t sum = 0;
  for (const char byte : header) sum += static_cast<unsigned char>(byte);
  Put(header, 148, Octal(sum, 6) + '\0');
  return header;
}

std::size_t Padding(std::size_t size) {
  return (kBlock - size % kBlock) % kBlock;
}

bool Pack(const std::filesystem::path& path, int count, char** names) {
  std::ofstream archive(path, std::ios::binary);
  for (int i = 0; i < count; ++i) {
    std::ifstream file(names[i], std::ios::binary);
    if (!file) return false;
    const std::string content(std::istreambuf_iterator<char>(file), {});
    const Header header = HeaderOf(names[i], content.size());
    archive.write(header.data(), kBlock);
    archive << content << std::string(Padding(content.size()), '\0');
  }
  archive << std::string(2 * kBlock, '\0');
  archive.close();
  return archive.good();
}

bool List(const std::filesystem::path& path) {
  std::ifstream archive(path, std::ios::binary);
  Header header{};
  while (archive.read(header.data(), kBlock) && header[0] != '\0') {
    std::puts(header.data());
    const std::size_t size = std::stoul(std::string(header.data() + 124, 11), nullptr, 8);
    archive.ignore(static_cast<std::streamsize>(size + Padding(size)));
  }
  return archive.good();  // an archive that is whole ends in zeros
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 2 ? argv[1] : "";
  if (what == "-cvf") return Pack(argv[2], argc - 3, argv + 3) ? 0 : 1;
  if (what == "-tf") return List(argv[2]) ? 0 : 1;
  return 2;
}
