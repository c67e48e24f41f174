// A settings file of any bytes: the engine starts or says why not; values are read, written and read again.
#include <fstream>

#include "engine/process.h"
#include "fuzz/support.h"

namespace {

const std::string& File() {
  static const std::string path = [] {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillon-fuzz-XXXXXX").string();
    fuzz::Claim(mkdtemp(pattern.data()) != nullptr, "there is room for a directory");
    return pattern + "/QUILLON.INI";
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::ofstream(File(), std::ios::binary).write(reinterpret_cast<const char*>(data), static_cast<long>(size));
  if (EngInitWithConfig(File().c_str()) != 0) return 0;
  char value[256];
  for (const char* key : {"Directory", "UserName", "EDITIMP1", "$VQ"}) {
    const std::uint16_t length = EngEnvGetString(key, value, sizeof value);
    fuzz::Claim(length < sizeof value && value[length] == 0, "a value ends in its buffer");
    EngEnvGetInt(key);
  }
  INTLFORMAT international;
  EngIntlGet(&international);
  fuzz::Claim(EngEnvSetString("Fuzz", "kept") == 0, "a value can be written");
  EngEnvGetString("Fuzz", value, sizeof value);
  fuzz::Claim(std::string(value) == "kept", "what was written is there");
  EngTerm();
  return 0;
}
