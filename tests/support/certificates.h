#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace quarn::test {

/// What certificates.sh makes.
class Certificates {
 public:
#ifdef VARKEL_CERTIFICATES
  Certificates() : folder_(VARKEL_CERTIFICATES) {}  // made beforehand, by a system that has a shell
#else
  Certificates() : folder_(testing::TempDir() + "varkel-certificates-XXXXXX") {
    if (mkdtemp(folder_.data()) == nullptr ||
        std::system(("'" VARKEL_CERTIFICATES_SCRIPT "' '" + folder_ + "'").c_str()) != 0) {
      throw std::runtime_error("No certificates in " + folder_);
    }
  }
  ~Certificates() {
    std::filesystem::remove_all(folder_);
  }
  Certificates(const Certificates&) = delete;
  Certificates& operator=(const Certificates&) = delete;
#endif

  std::string operator/(const std::string& name) const {
    return folder_ + "/" + name;
  }

 private:
  std::string folder_;
};

/// The path of one of them; they are made once for all tests of the program.
inline std::string Certificate(const std::string& name) {
  static const Certificates made;
  return made / name;
}

}  // namespace quarn::test
