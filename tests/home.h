// A folder with a settings file, which a client's session finds and which goes away with its object.
#ifndef QUILLON_TESTS_HOME_H
#define QUILLON_TESTS_HOME_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

class ClientHome {
 public:
  ClientHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillon-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch directory");
    Place = pattern;
    std::ofstream(Place / "QUILLON.INI") << "[Quillon]\n";
    ::setenv("QUILLON_HOME", Place.c_str(), 1);
  }
  ~ClientHome() {
    std::error_code ignored;
    std::filesystem::remove_all(Place, ignored);
  }
  ClientHome(const ClientHome&) = delete;
  ClientHome& operator=(const ClientHome&) = delete;

  std::string Path(const std::string& name) const { return Place / name; }

 private:
  std::filesystem::path Place;
};

#endif
