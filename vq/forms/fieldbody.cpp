// VQFormFieldBody: the records of a field.
#include <algorithm>

#include "vq/forms/fieldedit.h"
#include "vq/forms/fieldplaces.h"
#include "vq/forms/vqformb.h"
#include "vq/richtext/font.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/rtedit.h"
#include "vq/store/storetext.h"

namespace {

struct Kind {
  VQRTTYPE Type;
  std::uint16_t DataType;
  std::uint16_t Flags;
};

constexpr Kind kKinds[] = {
    {VQRTTYPE_FORM_FIELD, TYPE_TEXT, 0},
    {VQRTTYPE_TEXT_FIELD, TYPE_TEXT, 0},
    {VQRTTYPE_NUMBER_FIELD, TYPE_NUMBER, 0},
    {VQRTTYPE_DATETIME_FIELD, TYPE_TIME, 0},
    {VQRTTYPE_KEYWORDS_FIELD, TYPE_TEXT, FIELD_KEYWORDS},
    {VQRTTYPE_RICH_TEXT_FIELD, TYPE_COMPOSITE, 0},
    {VQRTTYPE_NAMES_FIELD, TYPE_TEXT, FIELD_NAMES},
    {VQRTTYPE_AUTHORS_FIELD, TYPE_TEXT, FIELD_AUTHORS},
    {VQRTTYPE_READERS_FIELD, TYPE_TEXT, FIELD_READERS},
};

std::size_t LengthOf(const vq::FieldView& field) { return field.Fixed.Header.Length; }

}  // namespace

VQFormFieldBody::VQFormFieldBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTElementBody(type, source, offset, length) {}
VQFormFieldBody::VQFormFieldBody(VQRTTYPE type) : VQRTElementBody(type, static_cast<unsigned short>(0)) {}
VQFormFieldBody::~VQFormFieldBody() = default;

VQSTATUS VQFormFieldBody::Close() {
  if (vq::Edit* edit = vq::Edit::Of(*this)) edit->Sets(*this, SharedField);
  SharedField = static_cast<VQSlateBody*>(nullptr);
  FontStyle.reset();
  return VQRTElementBody::Close();
}

VQCLASSID VQFormFieldBody::GetClassID() const { return VQCLASSID_VQFORMFIELDBODY; }
VQRTObjectBody* VQFormFieldBody::MakeSame() const { return new VQFormFieldBody(GetType()); }

VQSTATUS VQFormFieldBody::Create(std::string_view name) {
  if (VQSTATUS status = vq::CheckFieldName(name)) return status;
  const Kind* kind =
      std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& row) { return row.Type == GetType(); });
  if (kind == std::end(kKinds)) return VQERR_INVALID_PARAMETER;
  vq::FieldView field{};
  field.Fixed.Header.Signature = SIG_CD_FIELD;
  field.Fixed.DataType = kind->DataType;
  field.Fixed.Flags = kind->Flags;
  field.Fixed.FontID = vq::fontid::kDefault;
  field.Parts[vq::kFieldName] = name;
  std::string record;
  if (VQSTATUS status = vq::BuildField(field, &record)) return status;
  return SetRecord(record.data(), static_cast<std::uint32_t>(record.size()));
}

VQRTObjectBody* VQFormFieldBody::FindExtension() const {
  VQRTObjectBody* child = GetFirstChild();
  while (child != nullptr && child->GetType() != VQRTTYPE_FIELD_EXTENSION) child = child->GetNext();
  return child;
}

VQSTATUS VQFormFieldBody::ReadOwnRecord(const vq::RecordBytes& bytes, vq::FieldView* field) const {
  return vq::ReadField(bytes.Get(), bytes.GetSize(), field);
}

VQSTATUS VQFormFieldBody::ReadOwnExtension(const vq::RecordBytes* bytes, std::uint32_t field_length,
                                           vq::FieldExtensionView* extension) const {
  if (bytes == nullptr) {
    *extension = {};
    extension->Fixed.Header.Signature = SIG_CD_FIELD_EXTENSION;
    extension->Fixed.FieldLength = static_cast<std::uint16_t>(field_length);
    return VQ_OK;
  }
  if (VQSTATUS status = vq::ReadExtension(bytes->Get(), bytes->GetSize(), extension)) return status;
  return extension->Fixed.FieldLength == field_length ? VQ_OK : VQERR_EDITED_BY_OLDER;
}

VQSTATUS VQFormFieldBody::BuildRecords(const vq::FieldView& field, const vq::FieldView& edited, std::string* record,
                                       std::string* extension) const {
  if (VQSTATUS status = vq::BuildField(edited, record)) return status;
  const VQRTObjectBody* object = FindExtension();
  if (object == nullptr) return VQ_OK;
  const vq::RecordBytes bytes(*object);
  vq::FieldExtensionView view;
  const VQSTATUS status = vq::ReadExtension(bytes.Get(), bytes.GetSize(), &view);
  if (status != VQ_OK || view.Fixed.FieldLength != LengthOf(field)) return VQ_OK;
  view.Fixed.FieldLength = static_cast<std::uint16_t>(record->size());
  return vq::BuildExtension(view, extension);
}

VQSTATUS VQFormFieldBody::StoreRecords(const std::string& record, const std::string& extension) {
  const VQSTATUS status = SetRecord(record.data(), static_cast<std::uint32_t>(record.size()));
  return status == VQ_OK && !extension.empty() ? StoreExtension(extension) : status;
}

// The extension leads the field in the stream.
VQSTATUS VQFormFieldBody::StoreExtension(const std::string& record) {
  VQRTObjectBody* present = FindExtension();
  VQRTObjectBody* object =
      present != nullptr ? present : new VQRTObjectBody(VQRTTYPE_FIELD_EXTENSION, SIG_CD_FIELD_EXTENSION);
  const VQRTObject hold(object);
  VQSTATUS status = object->SetRecord(record.data(), static_cast<std::uint32_t>(record.size()));
  if (status != VQ_OK || present != nullptr) return status;
  VQRTObjectBody* first = GetFirstChild();
  return first != nullptr ? first->InsertPreviousSibling(object) : Append(object);
}

VQSTATUS VQFormFieldBody::CutToName() {
  if (VQRTObjectBody* extension = FindExtension()) {
    if (VQSTATUS status = extension->Delete()) return status;
  }
  return EditField([](vq::FieldView& field) {
    const std::string_view name = field.Parts[vq::kFieldName];
    field.Parts = {};
    field.Parts[vq::kFieldName] = name;
    field.Tail = {};
    field.Fixed.Flags |= FIELD_REFERENCE;
    return VQ_OK;
  });
}

VQSTATUS VQFormFieldBody::ReadName(std::string* name) const {
  return WithField([&](const vq::FieldView& field) {
    name->assign(field.Parts[vq::kFieldName]);
    return VQ_OK;
  });
}

VQSTATUS VQFormFieldBody::ReadDataType(unsigned short* type) const {
  return WithField([&](const vq::FieldView& field) {
    *type = field.Fixed.DataType;
    return VQ_OK;
  });
}

VQSTATUS VQFormFieldBody::CheckNewName(std::string_view name) const {
  if (VQSTATUS status = vq::CheckFieldName(name)) return status;
  VQRichTextBody* text = GetRichTextBody();
  VQSlateBody* slate = text != nullptr ? text->GetSlateBody() : nullptr;
  if (slate == nullptr) return VQ_OK;
  VQFormBody* form = VQFormBody::ListingFormOf(*this);
  if (slate->GetClassID() == VQCLASSID_VQFORMBODY) {
    form = static_cast<VQFormBody*>(slate);
    const VQSTATUS status = form->IsFormOpen() ? form->BuildFieldList() : VQ_OK;
    if (status != VQ_OK) return status;
  } else if (slate->GetClassID() != VQCLASSID_VQSUBFORMBODY) {
    return VQ_OK;
  }
  return form != nullptr ? form->CheckOthers(name, *this) : vq::CheckFieldNames(*text, name, *this);
}

VQSTATUS VQFormFieldBody::SetName(std::string_view name) {
  if (VQSTATUS status = CheckNewName(name)) return status;
  return EditField([&](vq::FieldView& field) {
    field.Parts[vq::kFieldName] = name;
    return VQ_OK;
  });
}

VQSTATUS VQFormFieldBody::GetFont(VQFontStyle* style) const {
  if (style == nullptr) return VQERR_NULL_POINTER;
  if (FontStyle) return style->Copy(*FontStyle);
  std::uint32_t font = 0;
  VQSTATUS status = WithField([&](const vq::FieldView& field) {
    font = field.Fixed.FontID;
    return VQ_OK;
  });
  if (status != VQ_OK) return status;
  VQFontTable table;
  status = vq::FontTableOf(*this, &table);
  if (VQIsError(status)) return status;
  VQFontStyle made;
  status = made.Assign(font, status == VQ_OK ? &table : nullptr);
  if (!VQIsError(status)) *style = made;
  return status;
}

VQSTATUS VQFormFieldBody::SetFont(const VQFontStyle& style) {
  if (style.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQFontStyle own;
  VQSTATUS status = own.Copy(style);
  const bool from_table = status == VQ_OK && vq::fontid::IsTableFace(own.GetFaceID());
  VQRichTextBody* text = GetRichTextBody();
  if (from_table && text != nullptr) {
    VQRichText target(text);
    status = vq::ConvertFont(own, &target);
  }
  if (status != VQ_OK) return status;
  status = EditField([&](vq::FieldView& field) {
    field.Fixed.FontID = static_cast<std::uint32_t>(own.GetFontID());
    return VQ_OK;
  });
  if (status != VQ_OK) return status;
  FontStyle = from_table && text == nullptr ? std::make_unique<VQFontStyle>(own) : nullptr;
  return VQ_OK;
}

VQSTATUS VQFormFieldBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (VQSTATUS status = VQRTElementBody::Copy(source, options)) return status;
  FontStyle.reset();
  SharedField = static_cast<VQSlateBody*>(nullptr);
  const auto* field = static_cast<VQFormFieldBody*>(source);
  VQFontStyle font;
  // A record that can't be read is copied all the same.
  if (field->GetFont(&font) != VQ_OK || !vq::fontid::IsTableFace(font.GetFaceID())) return VQ_OK;
  FontStyle = std::make_unique<VQFontStyle>(font);
  return VQ_OK;
}

VQSTATUS VQFormFieldBody::FindTableFont(VQFontStyle* style) {
  VQFontStyle font;
  // A record that can't be read goes as it is.
  if (GetFont(&font) != VQ_OK || !vq::fontid::IsTableFace(font.GetFaceID())) return VQWARN_NOT_FOUND;
  *style = font;
  return VQ_OK;
}

VQSTATUS VQFormFieldBody::ConvertFonts(VQItem* table) {
  if (VQSTATUS status = VQRTElementBody::ConvertFonts(table)) return status;
  if (!FontStyle) return VQ_OK;
  if (VQSTATUS status = vq::ConvertFont(*FontStyle, table)) return status;
  const auto font = static_cast<std::uint32_t>(FontStyle->GetFontID());
  FontStyle.reset();
  return EditField([&](vq::FieldView& field) {
    field.Fixed.FontID = font;
    return VQ_OK;
  });
}

VQSTATUS VQFormFieldBody::GetChoicesOption(VQCHOICESOPTION* option) const {
  bool has_list = false;
  VQSTATUS status = WithField([&](const vq::FieldView& field) {
    has_list = !field.Parts[vq::kFieldTextValue].empty();
    return VQ_OK;
  });
  if (status != VQ_OK) return status;
  return WithExtension([&](const vq::FieldExtensionView& extension) {
    const unsigned stored = extension.Fixed.Flags1 & vq::kExtensionChoices;
    if (has_list) {
      *option = VQCHOICESOPTION_LIST;
    } else if (!extension.Parts[vq::kExtensionChoicesFormula].empty()) {
      *option = VQCHOICESOPTION_FORMULA;
    } else if (!extension.Parts[vq::kExtensionView].empty()) {
      *option = VQCHOICESOPTION_VIEW;
    } else if (stored != 0) {
      *option = static_cast<VQCHOICESOPTION>(stored);
    } else {
      *option = IsType(VQRTTYPE_KEYWORDS_FIELD) ? VQCHOICESOPTION_LIST : VQCHOICESOPTION_NONE;
    }
    return VQ_OK;
  });
}

VQSTATUS VQFormFieldBody::SelectChoices(VQCHOICESOPTION option) {
  const bool plain = option == VQCHOICESOPTION_LIST || option == VQCHOICESOPTION_NONE;
  VQSTATUS status = VQ_OK;
  if (!plain || FindExtension() != nullptr) {
    status = EditExtension([&](vq::FieldExtensionView& extension) {
      extension.Fixed.Flags1 = (extension.Fixed.Flags1 & ~vq::kExtensionChoices) | option;
      if (option != VQCHOICESOPTION_FORMULA) extension.Parts[vq::kExtensionChoicesFormula] = {};
      if (option == VQCHOICESOPTION_VIEW) return VQ_OK;
      extension.Parts[vq::kExtensionDatabase] = extension.Parts[vq::kExtensionView] = {};
      extension.Fixed.ChoicesViewColumnNumber = 0;
      return VQ_OK;
    });
  }
  if (status != VQ_OK || option == VQCHOICESOPTION_LIST) return status;
  return EditField([](vq::FieldView& field) {
    field.Parts[vq::kFieldTextValue] = {};
    return VQ_OK;
  });
}
