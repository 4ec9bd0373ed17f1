// Windows has a tar, Wine does not: tar -cvf ARCHIVE FILE... and tar -tf ARCHIVE, as the tool and its tests
// call it. Each file is preceded by a line with its name and size.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

bool Pack(const char* path, int count, char** names) {
  std::ofstream archive(path, std::ios::binary);
  for (int i = 0; i < count; ++i) {
    std::ifstream file(names[i], std::ios::binary);
    if (!file) return false;
    const std::string content(std::istreambuf_iterator<char>(file), {});
    archive << names[i] << ' ' << content.size() << '\n' << content;
  }
  return archive.flush().good();
}

bool List(const char* path) {
  std::ifstream archive(path, std::ios::binary);
  std::string name;
  std::streamsize size = 0;
  while (archive >> name >> size) {
    std::puts(name.c_str());
    archive.ignore(size + 1);
  }
  return archive.eof();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 2 ? argv[1] : "";
  if (what == "-cvf") return Pack(argv[2], argc - 3, argv + 3) ? 0 : 1;
  if (what == "-tf") return List(argv[2]) ? 0 : 1;
  return 2;
}
