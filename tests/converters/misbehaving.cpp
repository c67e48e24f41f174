// A converter that breaks the contract in the way that the name of the imported file says.
#include <cstdio>
#include <cstring>
#include <string>

#include "engine/converter.h"

namespace {

ENGSTATUS WriteComposite(ENGCONVERTERBUFFER* buffer, const char* source, const void* bytes, std::size_t size) {
  const std::string path = std::string(source) + ".cd";
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr || path.size() >= sizeof buffer->FileName) return 1;
  std::fwrite(bytes, 1, size, file);
  std::fclose(file);
  std::strcpy(buffer->FileName, path.c_str());
  return 0;
}

}  // namespace

extern "C" ENG_API ENGSTATUS ConverterMain(ENGCONVERTERBUFFER* buffer, uint16_t, uint32_t, const char* file, uint32_t) {
  const std::string name = file;
  if (name.find("refuses") != std::string::npos) return 777;
  if (name.find("source") != std::string::npos) std::strncpy(buffer->FileName, file, sizeof buffer->FileName - 1);
  if (name.find("garbage") != std::string::npos) return WriteComposite(buffer, file, "\1\0\x85\xFF\xFF\xFFno", 8);
  if (name.find("cut") != std::string::npos) return WriteComposite(buffer, file, "\1\0\x85\xFF\x40\0\1\0", 8);
  if (name.find("default") != std::string::npos) {
    std::FILE* composite = std::fopen(buffer->FileName, "wb");
    if (composite != nullptr) std::fwrite("\1\0\x85\xFF\x0A\0\1\0\0\x0Aok", 1, 12, composite);
    return composite != nullptr && std::fclose(composite) == 0 ? 0 : 1;
  }
  if (name.find("empty") != std::string::npos) return WriteComposite(buffer, file, "", 0);
  return 0;
}
