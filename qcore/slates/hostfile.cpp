#include "qcore/slates/hostfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "engine/records.h"
#include "qcore/settings/platform.h"
#include "qcore/store/openfiles.h"
#include "qcore/time/moment.h"

namespace qcore {

namespace {

constexpr std::int64_t kEpochDay = 2440588;  // Julian day of 1970-01-01
constexpr long kNanosecondsPerTick = 10000000;

TIMEDATE MomentOf(std::int64_t seconds, std::uint32_t nanoseconds) {
  constexpr std::int64_t kLatest = 1LL << 40;  // far past every date that a moment holds
  if (seconds > kLatest || seconds < -kLatest) return {ENG_TIME_WILD, ENG_TIME_WILD};
  const std::int64_t ticks =
      kEpochDay * time::kTicksPerDay + seconds * time::kTicksPerSecond + nanoseconds / kNanosecondsPerTick;
  return time::MomentOf(ticks).value_or(TIMEDATE{ENG_TIME_WILD, ENG_TIME_WILD});
}

// A moment that a file cannot have leaves the time as it is.
timespec FileTime(const TIMEDATE& moment) {
  if (!time::HasDate(moment) || !time::HasTime(moment)) return {0, UTIME_OMIT};
  const std::optional<std::int64_t> ticks = time::TicksOf(moment);
  if (!ticks) return {0, UTIME_OMIT};
  const std::int64_t since = *ticks - kEpochDay * time::kTicksPerDay;
  std::int64_t seconds = since / time::kTicksPerSecond;
  std::int64_t rest = since % time::kTicksPerSecond;
  if (rest < 0) {
    --seconds;
    rest += time::kTicksPerSecond;
  }
  return {static_cast<time_t>(seconds), static_cast<long>(rest) * kNanosecondsPerTick};
}

std::uint16_t AttributesOf(unsigned mode) {
  std::uint16_t attributes = 0;
  if ((mode & 0222) == 0) attributes |= FILEATTRIBUTE_READ_ONLY;
  if ((mode & 0077) == 0) attributes |= FILEATTRIBUTE_PRIVATE;
  return attributes;
}

// A folder, device or pipe, or a link to one: no plain file is to take its place.
bool IsPlaceOfOther(const std::string& path) {
  struct stat present {};
  return stat(path.c_str(), &present) == 0 && !S_ISREG(present.st_mode);
}

// For the name beside the place, which a long name of the place itself must not make too long.
std::string BesideOf(const std::string& path) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::array<std::uint8_t, 8> random;
  CurrentPlatform().Random(random);
  std::string name = ".quillon-";
  for (std::uint8_t byte : random) (name += kDigits[byte >> 4]) += kDigits[byte & 15];
  const std::size_t slash = path.rfind('/');
  return (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + name;
}

}  // namespace

HostFileReader::~HostFileReader() {
  if (fd_ >= 0) close(fd_);
}

ENGSTATUS HostFileReader::Open(const std::string& path) {
  if (IsOfOpenStore(path)) return ENG_ERR_FILE_OPEN;
  fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct statx info {};
  constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
  if (fd_ < 0 || statx(fd_, "", AT_EMPTY_PATH, kWanted, &info) != 0 || !S_ISREG(info.stx_mode)) {
    return ENG_ERR_FILE_OPEN;
  }
  facts_.size = info.stx_size;
  facts_.modified = MomentOf(info.stx_mtime.tv_sec, info.stx_mtime.tv_nsec);
  const statx_timestamp& birth = (info.stx_mask & STATX_BTIME) != 0 ? info.stx_btime : info.stx_mtime;
  facts_.created = MomentOf(birth.tv_sec, birth.tv_nsec);
  facts_.attributes = AttributesOf(info.stx_mode);
  return ENG_OK;
}

ENGSTATUS HostFileReader::Read(std::span<std::uint8_t> buffer, std::size_t* count) {
  *count = 0;
  while (*count < buffer.size()) {
    const ssize_t got = read(fd_, buffer.data() + *count, buffer.size() - *count);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return ENG_ERR_FILE_READ;
    if (got == 0) break;
    *count += static_cast<std::size_t>(got);
  }
  return ENG_OK;
}

HostFileWriter::~HostFileWriter() {
  if (fd_ >= 0) close(fd_);
  if (!beside_.empty()) unlink(beside_.c_str());
}

ENGSTATUS HostFileWriter::Open(const std::string& path, std::uint16_t attributes) {
  struct stat present {};
  const bool taken = lstat(path.c_str(), &present) == 0;
  if (path.empty() || path.back() == '/') return ENG_ERR_FILE_OPEN;
  if (taken && (IsPlaceOfOther(path) || IsOfOpenStore(path))) return ENG_ERR_FILE_OPEN;
  replaces_ = taken;
  path_ = path;
  const std::string beside = BesideOf(path);
  const mode_t mode = (attributes & FILEATTRIBUTE_PRIVATE) != 0 ? 0600 : 0666;
  fd_ = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (fd_ < 0) return ENG_ERR_FILE_OPEN;
  beside_ = beside;
  return ENG_OK;
}

ENGSTATUS HostFileWriter::Write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t put = write(fd_, bytes.data(), bytes.size());
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return ENG_ERR_FILE_WRITE;
    bytes = bytes.subspan(static_cast<std::size_t>(put));
  }
  return ENG_OK;
}

ENGSTATUS HostFileWriter::Finish(const HostFileFacts& facts) {
  const timespec times[2] = {{0, UTIME_OMIT}, FileTime(facts.modified)};
  struct stat present {};
  if (futimens(fd_, times) != 0 || fstat(fd_, &present) != 0) return ENG_ERR_FILE_WRITE;
  const bool read_only = (facts.attributes & FILEATTRIBUTE_READ_ONLY) != 0;
  if (read_only && fchmod(fd_, present.st_mode & 0555) != 0) return ENG_ERR_FILE_WRITE;
  // What is replaced goes only for bytes that a power cut leaves there.
  if (replaces_ && fsync(fd_) != 0) return ENG_ERR_FILE_WRITE;
  const int closed = close(fd_);
  fd_ = -1;
  if (closed != 0 || rename(beside_.c_str(), path_.c_str()) != 0) return ENG_ERR_FILE_WRITE;
  beside_.clear();
  return ENG_OK;
}

}  // namespace qcore
