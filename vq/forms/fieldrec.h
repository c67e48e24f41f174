// The record of a field and its extension, taken apart into views of their bytes and put together again.
#ifndef QUILLON_VQ_FORMS_FIELDREC_H
#define QUILLON_VQ_FORMS_FIELDREC_H

#include <array>
#include <string>
#include <string_view>

#include "engine/records.h"
#include "vq/frame/vqcommon.h"

namespace vq {

// Variable parts, as they are stored.
enum FieldPart : unsigned {
  kFieldValue,
  kFieldTranslation,
  kFieldValidation,
  kFieldName,
  kFieldDescription,
  kFieldTextValue,
  kFieldParts
};
enum FieldExtensionPart : unsigned {
  kExtensionHTMLAttributes,
  kExtensionDatabase,
  kExtensionView,
  kExtensionChoicesFormula,
  kExtensionParts
};

// Views into the bytes that were read, or into others that take their place. Tail is what a newer release put behind
// the parts. Lengths in the fixed part are set from the parts when the record is put together.
struct FieldView {
  FieldRecord Fixed;
  std::array<std::string_view, kFieldParts> Parts;
  std::string_view Tail;
};
struct FieldExtensionView {
  FieldExtensionRecord Fixed;
  std::array<std::string_view, kExtensionParts> Parts;
  std::string_view Tail;
};

// `size` bytes are there. VQERR_CORRUPTED for a record that is shorter than its lengths say.
[[nodiscard]] VQSTATUS ReadField(const unsigned char* bytes, std::size_t size, FieldView* field);
[[nodiscard]] VQSTATUS ReadExtension(const unsigned char* bytes, std::size_t size, FieldExtensionView* extension);
// VQERR_FIELD_TOO_LARGE for a record above 65,535 bytes.
[[nodiscard]] VQSTATUS BuildField(const FieldView& field, std::string* bytes);
[[nodiscard]] VQSTATUS BuildExtension(const FieldExtensionView& extension, std::string* bytes);

// Flags1 of an extension.
inline constexpr std::uint32_t kExtensionChoices = 0x00000003;  // a VQCHOICESOPTION, where none is there
inline constexpr std::uint32_t kExtensionLookUpNames = 0x00010000;
inline constexpr std::uint32_t kExtensionRefreshFields = 0x00020000;
inline constexpr std::uint32_t kExtensionNoHelper = 0x00040000;
inline constexpr std::uint32_t kExtensionComputeLate = FIELDEXTENSION_COMPUTE_LATE;
inline constexpr std::uint32_t kExtensionDefaultFocus = 0x00100000;
inline constexpr std::uint32_t kExtensionColumns = 0x0E000000;
inline constexpr unsigned kExtensionColumnShift = 25;
inline constexpr std::uint32_t kExtensionFrame = 0x30000000;
inline constexpr std::uint32_t kExtensionFrameInset = 0x10000000;
inline constexpr std::uint32_t kExtensionFrameNone = 0x20000000;
// Flags2.
inline constexpr std::uint32_t kExtensionRefreshChoices = 0x00000001;

// Flags of a field.
inline constexpr unsigned kFieldInterface = 0xC000;
inline constexpr unsigned kFieldInterface1 = 0x4000;
inline constexpr unsigned kFieldInterface2 = 0x8000;
inline constexpr unsigned kFieldSecurity = FIELD_PROTECTED | FIELD_SIGN | FIELD_SEAL;

// VQERR_NULL_STRING, VQERR_OUT_OF_RANGE above 32 bytes, VQERR_FIELD_NAME_CHARACTERS.
[[nodiscard]] VQSTATUS CheckFieldName(std::string_view name);

}  // namespace vq

#endif
