// Files as objects of slates: the record in the item, the bytes in the object.
#ifndef QUILLON_QCORE_SLATES_ATTACHMENT_H
#define QUILLON_QCORE_SLATES_ATTACHMENT_H

#include <string>
#include <string_view>

#include "engine/slate.h"
#include "qcore/slates/slate.h"

namespace qcore {

// The bytes behind the type word. ENG_ERR_ARGUMENT for lengths that do not fit.
[[nodiscard]] ENGSTATUS EncodeFileValue(const ENGFILEDESCRIPTOR& descriptor, std::vector<std::uint8_t>* data);
// The record in an item's value. ENG_ERR_ITEM_DAMAGED for one that holds no file, or less than the name.
[[nodiscard]] ENGSTATUS DecodeFileValue(Bytes value, FILEOBJECT* file);

[[nodiscard]] ENGSTATUS AppendObjectItem(Slate& slate, std::string_view item_name, const ENGFILEDESCRIPTOR& descriptor);
// See EngSlateAttachFile and EngItemExtractFile. `path` is platform text.
[[nodiscard]] ENGSTATUS AttachFile(Slate& slate, std::string_view item_name, std::string_view name,
                                   const std::string& path, std::uint16_t flags, Slate::Slot* slot);
[[nodiscard]] ENGSTATUS CheckFile(Slate& slate, Slate::Slot slot);
[[nodiscard]] ENGSTATUS CopyObjectOf(Slate& slate, Slate::Slot slot, Database& target, std::uint32_t* copy);
[[nodiscard]] ENGSTATUS ExtractFile(Slate& slate, Slate::Slot slot, const std::string& path);

}  // namespace qcore

#endif
