#include "vq/richobjects/attachnames.h"

namespace vq {

namespace {

constexpr std::size_t kLongestName = 65534;

// The first bytes, and no part of a character: bytes 10xxxxxx go on with one.
std::string_view FirstBytes(std::string_view name, std::size_t count) {
  while (count > 0 && count < name.size() && (static_cast<unsigned char>(name[count]) & 0xC0) == 0x80) --count;
  return name.substr(0, count);
}

// Where an ending starts, the dot with it; a name that starts with its only dot has none.
std::size_t EndingOf(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? name.size() : dot;
}

}  // namespace

std::string_view LastPart(std::string_view path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

VQSTATUS AttachmentNames::Read(VQSlateBody* slate) {
  return ForEachAttachment(slate, [this](const ItemPlace&, const std::string& name) {
    Names.insert(name);
    return true;
  });
}

std::string AttachmentNames::MakeUnique(const std::string& name) const {
  const std::size_t ending = EndingOf(name);
  std::string made = name;
  for (unsigned number = 1; Names.contains(made) || made.size() > kLongestName; ++number) {
    const std::string tail = "(" + std::to_string(number) + ")" + name.substr(ending);
    made = tail.size() < kLongestName
               ? std::string(FirstBytes(name, std::min(ending, kLongestName - tail.size()))) + tail
               : std::to_string(number);
  }
  return made;
}

}  // namespace vq
