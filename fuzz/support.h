// One session for the whole run, in a directory that goes with it; and a claim that ends the run when it fails.
#ifndef QUILLON_FUZZ_SUPPORT_H
#define QUILLON_FUZZ_SUPPORT_H

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/claim.h"
#include "vq/vq.h"

namespace fuzz {

class World {
 public:
  static World& Get() {
    static World world;
    return world;
  }
  const std::string& folder() const { return folder_; }
  // A new document, open and never saved.
  VQDocument& document() {
    if (!document_.IsOpen()) {
      session_.CreateDatabase((folder_ + "/fuzz.vlt").c_str(), &database_, VQCreateDatabaseOptions());
      Claim(database_.CreateDocument(&document_) == VQ_OK, "a document can be made");
    }
    return document_;
  }

 private:
  World() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillon-fuzz-XXXXXX").string();
    Claim(mkdtemp(pattern.data()) != nullptr, "there is room for a directory");
    folder_ = pattern;
    std::ofstream(folder_ + "/QUILLON.INI") << "UserName=Fuzz\n";
    Claim(session_.Init(folder_.c_str()) == VQ_OK, "the session starts");
  }
  ~World() {
    document_.Close();
    database_.Close();
    session_.Term();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::string folder_;
  VQQuillonSession session_;
  VQDatabase database_;
  VQDocument document_;
};

}  // namespace fuzz

#endif
