// The platform's character set where it is not UTF-8.
#ifndef QUILLON_QCORE_TEXT_CHARSET_H
#define QUILLON_QCORE_TEXT_CHARSET_H

#include <memory>
#include <string>

#include "qcore/text/utf8.h"

struct UConverter;

namespace qcore::text {

class Charset {
 public:
  // Null for a set that is unknown or does not contain ASCII.
  static std::unique_ptr<Charset> Open(const std::string& name);

  // Bytes that are no character become U+FFFD. At most `limit` bytes of whole characters, as in FromStore.
  std::string ToStore(Text platform, std::size_t limit) const;
  // What the set lacks becomes '?'.
  std::string FromStore(Text store, std::size_t limit) const;

 private:
  struct Close {
    void operator()(UConverter* converter) const;
  };
  using Converter = std::unique_ptr<UConverter, Close>;

  explicit Charset(std::string name) : name_(std::move(name)) {}
  static Converter OpenConverter(const std::string& name);

  std::string name_;
};

}  // namespace qcore::text

#endif
