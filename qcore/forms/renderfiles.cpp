// Attachments that rendered records show.
#include <algorithm>
#include <optional>

#include "engine/records.h"
#include "qcore/forms/fixed.h"
#include "qcore/forms/render.h"
#include "qcore/records/layouts.h"
#include "qcore/slates/attachment.h"
#include "qcore/store/wire.h"

namespace qcore::forms {

namespace {

constexpr std::uint16_t kObject = 3;
constexpr std::uint16_t kAttachmentHotspot = 4;
constexpr std::size_t kMostData = 65000;  // of a hotspot

std::string_view View(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

// The data of an attachment's hotspot: its name and its path, each with a NUL behind it.
std::optional<Bytes> ShownNames(Bytes record) {
  CDHOTSPOTBEGIN begin{};
  if (!ReadFixed(ODS_CDHOTSPOTBEGIN, record, &begin)) return std::nullopt;
  const Bytes rest = record.subspan(records::Find(ODS_CDHOTSPOTBEGIN)->length);
  if (begin.Type != kAttachmentHotspot || begin.DataLength > rest.size()) return std::nullopt;
  return rest.first(begin.DataLength);
}

// A path that does not fit beside the name is left out.
std::vector<std::uint8_t> WithName(Bytes record, std::string_view name, std::string_view path) {
  const records::Layout& layout = *records::Find(ODS_CDHOTSPOTBEGIN);
  if (name.size() + path.size() > kMostData) path = {};
  CDHOTSPOTBEGIN begin{};
  records::Read(layout, reinterpret_cast<const std::byte*>(record.data()), &begin, 1);
  begin.DataLength = static_cast<std::uint16_t>(name.size() + path.size());
  begin.Header.Length = static_cast<std::uint16_t>(layout.length + begin.DataLength);
  std::vector<std::uint8_t> made(layout.length);
  records::Write(layout, &begin, reinterpret_cast<std::byte*>(made.data()), 1);
  for (const std::string_view part : {name, path}) made.insert(made.end(), part.begin(), part.end());
  return made;
}

// With a number in front of the ending where the name is in use.
std::string UnusedName(const std::string& name, const std::set<std::string>& used) {
  constexpr std::size_t kNumber = 16;
  const std::string base = name.size() + kNumber <= kMostData ? name : std::string();
  const std::size_t dot = base.rfind('.');
  const std::size_t ending = dot == std::string::npos || dot == 0 ? base.size() : dot;
  std::string made = name;
  for (unsigned number = 1; used.contains(made); ++number) {
    made = base.substr(0, ending) + "(" + std::to_string(number) + ")" + base.substr(ending);
  }
  return made;
}

}  // namespace

ENGSTATUS RenderTarget::CarryFile(std::vector<std::uint8_t>& record, Source& source) {
  const std::optional<Bytes> shown = ShownNames(record);
  if (!shown) return ENG_OK;
  const std::string_view data = View(*shown);
  const std::size_t end = std::min(data.find('\0'), data.size());
  const std::string name(data.substr(0, end));
  if (name.empty()) return ENG_OK;
  auto [known, first] = source.files.try_emplace(name);
  if (first) {
    known->second = UnusedName(name, files_);
    files_.insert(known->second);
    if (ENGSTATUS status = AppendFile(name, known->second, source.slate); status != ENG_OK) return status;
  }
  if (known->second != name) record = WithName(record, known->second, data.substr(end));
  return ENG_OK;
}

// One that is gone, and one whose object is, leave a record that shows nothing.
ENGSTATUS RenderTarget::AppendFile(const std::string& name, const std::string& made, Slate& from) {
  for (std::uint32_t i = 0; i < from.ItemCount(); ++i) {
    Slate::Slot slot = 0;
    Bytes value;
    ENGSTATUS status = from.ItemAt(i, &slot);
    if (status != ENG_OK || from.FactsOf(slot).type != kObject) continue;
    status = from.GetBytes(slot, &value);
    if (status != ENG_OK) return status;
    FILEOBJECT file{};
    if (DecodeFileValue(value, &file) != ENG_OK) continue;
    const std::string_view text = View(value.subspan(kSmallestValue + records::Find(ODS_FILEOBJECT)->length));
    if (text.substr(0, file.FileNameLength) != name) continue;
    ENGFILEDESCRIPTOR descriptor{};
    const std::string words = made + std::string(text.substr(file.FileNameLength));
    file.FileNameLength = static_cast<std::uint16_t>(made.size());
    descriptor.File = file;
    descriptor.Text = reinterpret_cast<const ENGCHAR*>(words.data());
    descriptor.TextLength = static_cast<std::uint32_t>(words.size());
    std::vector<std::uint8_t> record;
    status = EncodeFileValue(descriptor, &record);
    if (status != ENG_OK) return status;
    return Slate::Find(slate_)->AppendForeign(from.NameOf(slot), record, from.ObjectsOf(slot), &slot);
  }
  return ENG_OK;
}

}  // namespace qcore::forms
