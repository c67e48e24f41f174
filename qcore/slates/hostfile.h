// Files of the host that attachments come from and go to.
#ifndef QUILLON_QCORE_SLATES_HOSTFILE_H
#define QUILLON_QCORE_SLATES_HOSTFILE_H

#include <cstdint>
#include <span>
#include <string>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore {

struct HostFileFacts {
  std::uint64_t size = 0;
  TIMEDATE created{};
  TIMEDATE modified{};
  std::uint16_t attributes = 0;  // FILEATTRIBUTE_...
};

// A regular file, read from its start to its end. A store that this process has open is none.
class HostFileReader {
 public:
  HostFileReader() = default;
  HostFileReader(const HostFileReader&) = delete;
  HostFileReader& operator=(const HostFileReader&) = delete;
  ~HostFileReader();

  // ENG_ERR_FILE_OPEN.
  [[nodiscard]] ENGSTATUS Open(const std::string& path);
  const HostFileFacts& facts() const { return facts_; }
  // Fills the buffer unless the file ends before. ENG_ERR_FILE_READ.
  [[nodiscard]] ENGSTATUS Read(std::span<std::uint8_t> buffer, std::size_t* count);

 private:
  int fd_ = -1;
  HostFileFacts facts_;
};

// A file that comes to its place whole: it is written beside it, under a name that starts with a dot, and goes again
// unless Finish has put it there. A regular file in the place is replaced; a link there is, too, and not followed.
class HostFileWriter {
 public:
  HostFileWriter() = default;
  HostFileWriter(const HostFileWriter&) = delete;
  HostFileWriter& operator=(const HostFileWriter&) = delete;
  ~HostFileWriter();

  // ENG_ERR_FILE_OPEN, also for a place that a folder, a device, a link to one or a store that is open here has. Nobody
  // else ever reads a private file.
  [[nodiscard]] ENGSTATUS Open(const std::string& path, std::uint16_t attributes);
  // ENG_ERR_FILE_WRITE.
  [[nodiscard]] ENGSTATUS Write(std::span<const std::uint8_t> bytes);
  // The size plays no part.
  [[nodiscard]] ENGSTATUS Finish(const HostFileFacts& facts);

 private:
  int fd_ = -1;
  bool replaces_ = false;
  std::string path_;
  std::string beside_;
};

}  // namespace qcore

#endif
