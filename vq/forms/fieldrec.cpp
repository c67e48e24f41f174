#include "vq/forms/fieldrec.h"

#include <algorithm>
#include <iterator>

#include "engine/ods.h"
#include "engine/text.h"
#include "vq/richtext/signature.h"
#include "vq/store/storetext.h"

namespace vq {

namespace {

constexpr std::size_t kMaximumRecord = 0xFFFF;
constexpr std::size_t kMaximumName = 32;

template <typename Record, std::size_t N>
struct Layout {
  unsigned short Code;
  std::array<std::uint16_t Record::*, N> Lengths;  // of the parts
};

constexpr Layout<FieldRecord, kFieldParts> kField = {
    ODS_FIELD,
    {&FieldRecord::DefaultValueLength, &FieldRecord::InputTranslationLength, &FieldRecord::InputValidationLength,
     &FieldRecord::NameLength, &FieldRecord::DescriptionLength, &FieldRecord::TextValueLength}};
constexpr Layout<FieldExtensionRecord, kExtensionParts> kExtension = {
    ODS_FIELDEXTENSION,
    {&FieldExtensionRecord::HTMLAttributesLength, &FieldExtensionRecord::ChoicesDatabaseLength,
     &FieldExtensionRecord::ChoicesViewLength, &FieldExtensionRecord::ChoicesFormulaLength}};

template <typename View, typename Record, std::size_t N>
VQSTATUS Read(const Layout<Record, N>& layout, const unsigned char* bytes, std::size_t size, View* view) {
  const std::size_t fixed = EngOdsLength(layout.Code);
  RecordHeader header;
  if (!ReadRecordHeader(bytes, static_cast<std::uint32_t>(size), &header)) return VQERR_CORRUPTED;
  if (header.Length < fixed || header.Length > size) return VQERR_CORRUPTED;
  void* cursor = const_cast<unsigned char*>(bytes);
  if (VQSTATUS status = FromEngine(EngOdsRead(&cursor, layout.Code, &view->Fixed, 1))) return status;
  std::string_view left(reinterpret_cast<const char*>(bytes) + fixed, header.Length - fixed);
  for (std::size_t i = 0; i < N; ++i) {
    const std::size_t length = view->Fixed.*layout.Lengths[i];
    if (length > left.size()) return VQERR_CORRUPTED;
    view->Parts[i] = left.substr(0, length);
    left.remove_prefix(length);
  }
  view->Tail = left;
  return VQ_OK;
}

template <typename View, typename Record, std::size_t N>
VQSTATUS Build(const Layout<Record, N>& layout, const View& view, std::string* bytes) {
  std::size_t size = EngOdsLength(layout.Code) + view.Tail.size();
  for (const std::string_view part : view.Parts) size += part.size();
  if (size > kMaximumRecord) return VQERR_FIELD_TOO_LARGE;
  Record fixed = view.Fixed;
  fixed.Header.Length = static_cast<std::uint16_t>(size);
  for (std::size_t i = 0; i < N; ++i) fixed.*layout.Lengths[i] = static_cast<std::uint16_t>(view.Parts[i].size());
  bytes->assign(EngOdsLength(layout.Code), '\0');
  bytes->reserve(size);
  void* cursor = bytes->data();
  if (VQSTATUS status = FromEngine(EngOdsWrite(&cursor, layout.Code, &fixed, 1))) return status;
  for (const std::string_view part : view.Parts) *bytes += part;
  *bytes += view.Tail;
  return VQ_OK;
}

}  // namespace

VQSTATUS ReadField(const unsigned char* bytes, std::size_t size, FieldView* field) {
  return Read(kField, bytes, size, field);
}
VQSTATUS ReadExtension(const unsigned char* bytes, std::size_t size, FieldExtensionView* extension) {
  return Read(kExtension, bytes, size, extension);
}
VQSTATUS BuildField(const FieldView& field, std::string* bytes) { return Build(kField, field, bytes); }
VQSTATUS BuildExtension(const FieldExtensionView& extension, std::string* bytes) {
  return Build(kExtension, extension, bytes);
}

VQSTATUS CheckFieldName(std::string_view name) {
  if (name.empty()) return VQERR_NULL_STRING;
  if (name.size() > kMaximumName) return VQERR_OUT_OF_RANGE;
  const ENGHANDLE charset = EngTextCharset();
  // The engine looks at characters that end; the name may not.
  const std::string text(name);
  const ENGCHAR* at = EngineText(text);
  const ENGCHAR* end = at + text.size();
  if (EngCharIsDigit(at, charset) != 0) return VQERR_FIELD_NAME_CHARACTERS;
  while (at < end) {
    const bool legal = *at == '$' || *at == '.' || *at == '_' || EngCharIsAlnum(at, charset) != 0;
    if (!legal || EngTextNextChar(&at, 65535, 0, charset) == 0) return VQERR_FIELD_NAME_CHARACTERS;
  }
  return VQ_OK;
}

}  // namespace vq
