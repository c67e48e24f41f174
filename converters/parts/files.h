// The frame of a converter's entry point: opens and replaces files around the conversion itself.
#ifndef QUILLON_CONVERTERS_PARTS_FILES_H
#define QUILLON_CONVERTERS_PARTS_FILES_H

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "engine/converter.h"
#include "engine/types.h"

namespace conv {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// The whole file. ENG_ERR_FILE_READ.
ENGSTATUS ReadAll(std::FILE* file, std::string* bytes);

// A composite file as it lies in memory: it is the caller's own, and nobody changes it meanwhile.
class Composite {
 public:
  Composite() = default;
  ~Composite();
  Composite(const Composite&) = delete;
  Composite& operator=(const Composite&) = delete;

  // ENG_ERR_FILE_READ.
  ENGSTATUS Open(std::FILE* file);
  std::string_view Bytes() const { return {Mapped ? static_cast<const char*>(Mapped) : Read.data(), Size}; }

 private:
  void* Mapped = nullptr;
  std::string Read;  // of what cannot be mapped
  std::size_t Size = 0;
};

// What one converter does between files that are open.
class Conversion {
 public:
  virtual ~Conversion() = default;
  virtual ENGSTATUS Import(std::FILE* source, std::FILE* composite, std::uint32_t font, std::uint32_t options) = 0;
  // `name` is that of the file to be written.
  virtual ENGSTATUS Export(std::FILE* composite, std::FILE* target, const std::string& name, std::uint32_t options) = 0;
  // What could not be carried, a line each; empty when all was.
  virtual std::string Report() const { return {}; }
};

ENGSTATUS RunConversion(Conversion& conversion, ENGCONVERTERBUFFER* buffer, std::uint16_t mode, std::uint32_t flags,
                        const char* file, std::uint32_t options);

}  // namespace conv

#endif
