// A store without a log in a directory where this user can make none: it is read as it lies.
#ifndef QUILLON_QCORE_STORE_FROZEN_H
#define QUILLON_QCORE_STORE_FROZEN_H

#include <sys/stat.h>

#include <optional>
#include <string>

namespace qcore {

// SQLite shares a file in log mode through the log and its index beside it. Where these stand it needs only to read
// them; where they do not and cannot be made, it opens the file only as one that never changes, without a lock. That
// holds while nobody who may write there opens the store: whoever does makes the log first, and changes the file
// itself no earlier than that. So the absence of a log and the file's own facts tell, before and after each read,
// whether what was read is one state of the store.
class FrozenFile {
 public:
  // Nothing when the store has a log, or can get one.
  static std::optional<FrozenFile> Find(const std::string& file);

  // What SQLite opens it by.
  std::string Uri() const;
  bool IsUnchanged() const;

 private:
  FrozenFile(const std::string& file, const struct stat& facts) : file_(file), facts_(facts) {}

  std::string file_;
  struct stat facts_;
};

}  // namespace qcore

#endif
