// VQFormField: a field of a form, an element of the form's rich text. VQKeywordsField and VQNamesField are kinds of it.
//
// Every property is read from the stored record when it is asked for, and a setter writes the record, so that it is
// part of the form's body at once. A setter that is refused leaves the record as it was. A shared field carries only
// its name: every operation then works on its definition (VQSharedField), and fails with VQERR_NO_SHARED_FIELD when
// that is gone. The form's Save stores a definition that was changed through one of its fields.
//
// A null handle gives VQERR_OBJECT_NOT_INITIALIZED, a record whose lengths lie VQERR_CORRUPTED, properties that stand
// in the extension record VQERR_EDITED_BY_OLDER when that does not belong to the field as it is, and a field that would
// pass 65,535 bytes VQERR_FIELD_TOO_LARGE; thrown where the result is no status. Formulas are copied both ways; a null
// one takes the formula away, and a getter gives VQWARN_NOT_FOUND, its output untouched, where there is none.
// Enumerations: a value that is none of theirs gives VQERR_INVALID_PARAMETER.
#ifndef QUILLON_VQ_FORMS_VQFIELD_H
#define QUILLON_VQ_FORMS_VQFIELD_H

#include <memory>
#include <string>
#include <string_view>

#include "engine/records.h"
#include "vq/forms/vqsharfl.h"
#include "vq/richtext/vqrtbase.h"
#include "vq/richtext/vqrtobj.h"

class VQDatetimeFormat;
class VQFontStyle;
class VQFormFieldBody;
class VQFormula;
class VQNumberFormat;
class VQText;

namespace vq {
class RecordBytes;
struct FieldExtensionView;
struct FieldView;
}  // namespace vq

enum VQCOMPUTEOPTION : unsigned int {
  VQCOMPUTEOPTION_EDITABLE = 0,
  VQCOMPUTEOPTION_WHEN_COMPOSED = 1,  // once, when the document is made; of a rich text field: computed
  VQCOMPUTEOPTION_COMPUTED = 2,
  VQCOMPUTEOPTION_FOR_DISPLAY = 3,  // never stored
};

// Between the entries of a list.
enum VQVALUESEPARATOR : unsigned int {
  VQVALUESEPARATOR_NONE = 0,
  VQVALUESEPARATOR_SPACE = 1,
  VQVALUESEPARATOR_COMMA = 2,
  VQVALUESEPARATOR_SEMICOLON = 4,
  VQVALUESEPARATOR_NEW_LINE = 8,
  VQVALUESEPARATOR_BLANK_LINE = 16,
};

// Security flags.
inline constexpr unsigned short VQFIELDSECURITY_PROTECTED = 0x0400;
inline constexpr unsigned short VQFIELDSECURITY_SIGN = 0x1000;
inline constexpr unsigned short VQFIELDSECURITY_SEAL = 0x2000;

// Where choices come from.
enum VQCHOICESOPTION : unsigned int {
  VQCHOICESOPTION_NONE = 0,  // of names fields
  VQCHOICESOPTION_LIST = 1,  // of keywords fields, as the two below; their default
  VQCHOICESOPTION_FORMULA = 2,
  VQCHOICESOPTION_VIEW = 3,
};

enum VQINTERFACEOPTION : unsigned int {
  VQINTERFACEOPTION_DIALOG_LIST = 0,
  VQINTERFACEOPTION_CHECK_BOXES = 1,
  VQINTERFACEOPTION_RADIO_BUTTONS = 2,
};

enum VQINTERFACEFRAMEOPTION : unsigned int {
  VQINTERFACEFRAMEOPTION_NONE = 0,
  VQINTERFACEFRAMEOPTION_SINGLE = 1,
  VQINTERFACEFRAMEOPTION_INSET = 2,
};

class VQ_API VQFormField : public VQRTElement {
 public:
  VQFormField() = default;
  // A field that stands alone, of type VQRTTYPE_FORM_FIELD (a text field) or below, else VQERR_INVALID_PARAMETER. It
  // computes for display until told otherwise. Names have 1 to 32 bytes (VQERR_NULL_STRING, VQERR_OUT_OF_RANGE) of
  // letters, digits,
  // "$", "." and "_", no digit first: VQERR_FIELD_NAME_CHARACTERS. All thrown.
  VQFormField(const VQString& name, VQRTTYPE type);
  VQFormField(const VQRTObject& object);
  VQFormField(const VQFormField& other) : VQRTElement(other) {}
  explicit VQFormField(VQFormFieldBody* body);
  using VQRTObject::operator=;
  VQFormField& operator=(const VQFormField& other) = default;
  VQCLASSID GetClassID() const override;

  VQString GetName() const;
  // VQERR_FIELD_EXISTS when another field of the form has the name.
  VQSTATUS SetName(const VQString& name);
  // The value's item type. An addition to the system's own properties.
  unsigned short GetDataType() const;
  int GetAllowMultiValues() const;
  // VQERR_INAPPROPRIATE for rich text.
  VQSTATUS SetAllowMultiValues(int flag);
  int GetComputeAfterValidation() const;
  VQSTATUS SetComputeAfterValidation(int flag);
  // Rich text fields are editable or computed: VQERR_INVALID_PARAMETER for the other two.
  VQCOMPUTEOPTION GetComputeOption() const;
  VQSTATUS SetComputeOption(VQCOMPUTEOPTION option);
  // The default value of an editable field, the value of a computed one.
  VQSTATUS GetValueFormula(VQFormula* formula) const;
  VQSTATUS SetValueFormula(const VQFormula& formula);
  VQVALUESEPARATOR GetDisplayValueSeparator() const;
  // A value that is no separator gives VQVALUESEPARATOR_NONE.
  VQSTATUS SetDisplayValueSeparator(VQVALUESEPARATOR separator);
  // VQVALUESEPARATOR bits; others are dropped.
  unsigned short GetInputValueSeparators() const;
  VQSTATUS SetInputValueSeparators(unsigned short separators);
  // A copy. A null style gives VQERR_UNINITIALIZED_ARGUMENT; a face of its own goes into the slate's font table.
  VQSTATUS GetFontStyle(VQFontStyle* style) const;
  VQSTATUS SetFontStyle(const VQFontStyle& style);
  int GetGiveDefaultFocus() const;
  VQSTATUS SetGiveDefaultFocus(int flag);
  // At most 255 bytes, else VQERR_OUT_OF_RANGE.
  VQString GetHelpDescription() const;
  VQSTATUS SetHelpDescription(const VQString& description);
  VQSTATUS GetHTMLAttributesFormula(VQFormula* formula) const;
  VQSTATUS SetHTMLAttributesFormula(const VQFormula& formula);
  VQSTATUS GetInputTranslationFormula(VQFormula* formula) const;
  VQSTATUS SetInputTranslationFormula(const VQFormula& formula);
  VQSTATUS GetInputValidationFormula(VQFormula* formula) const;
  VQSTATUS SetInputValidationFormula(const VQFormula& formula);
  VQNumberFormat GetNumberFormat() const;  // every field has this one and the next
  VQSTATUS SetNumberFormat(const VQNumberFormat& format);
  VQDatetimeFormat GetDatetimeFormat() const;
  VQSTATUS SetDatetimeFormat(const VQDatetimeFormat& format);
  // VQFIELDSECURITY bits; VQERR_INVALID_PARAMETER for others.
  unsigned short GetSecurityFlags() const;
  VQSTATUS SetSecurityFlags(unsigned short flags);

  // Of the field itself.
  int IsShared() const;
  // Makes a shared field of this design in the form's database, which this field then points at. VQWARN_FIELD_SHARED,
  // VQERR_SHARED_FIELD_EXISTS, VQERR_WRONG_SITUATION for a field that stands in no slate.
  VQSTATUS Share();
  // The definition's design becomes the field's own. VQWARN_FIELD_NOT_SHARED.
  VQSTATUS Unshare();
  // Points the field at a stored shared field of the form's database, whose name it takes:
  // VQERR_SHARED_FIELD_OTHER_DATABASE.
  VQSTATUS SetSharedField(const VQSharedField& shared);
  // The definition's field, opened at need; failures are thrown.
  VQFormFieldBody* GetSharedFormFieldBody() const;
  // What a form's Save asks of each field: VQERR_NO_COMPUTED_FORMULA, VQERR_NO_CHOICES_FORMULA,
  // VQERR_NO_CHOICES_LIST, VQERR_FIELD_TOO_LARGE, VQERR_NO_SHARED_FIELD, VQERR_FIELD_NAME_CHARACTERS for a stored name
  // that no item can have.
  VQSTATUS Validate() const;

  VQFormFieldBody* GetFormFieldBody() const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;

  using View = vq::FieldExtensionView;

  // The body whose record properties are read from; it must be of the type that has the property, else
  // VQERR_INAPPROPRIATE.
  [[nodiscard]] VQSTATUS Resolve(VQFormFieldBody** body, VQRTTYPE type) const;
  // Families of properties.
  template <typename Value, typename Read>
  Value Get(VQRTTYPE type, Read read) const;
  template <typename Edit>
  VQSTATUS Set(VQRTTYPE type, Edit edit);
  template <typename Value, typename Read>
  Value GetExtended(VQRTTYPE type, Read read) const;
  template <typename Edit>
  VQSTATUS SetExtended(VQRTTYPE type, Edit edit);
  VQSTATUS GetFormula(unsigned part, VQFormula* formula) const;
  VQSTATUS SetFormula(unsigned part, const VQFormula& formula);
  // `none` is the status where there is no formula.
  VQSTATUS GetExtensionFormula(VQRTTYPE type, unsigned part, VQSTATUS none, VQFormula* formula) const;
  int GetExtendedBit(VQRTTYPE type, unsigned long mask) const;
  VQSTATUS SetExtendedBit(VQRTTYPE type, unsigned long mask, int flag);

  // What keywords and names fields have in common.
  int GetListBit(VQRTTYPE type) const;
  VQSTATUS SetListBit(VQRTTYPE type, int flag);
  VQCHOICESOPTION GetChoices(VQRTTYPE type) const;
  // VQERR_INVALID_PARAMETER for one that is not `legal`.
  VQSTATUS SetChoices(VQRTTYPE type, VQCHOICESOPTION option, bool legal);
  VQString GetChoicesText(VQRTTYPE type, unsigned part) const;
  VQSTATUS SetChoicesText(VQRTTYPE type, unsigned part, const VQString& text);
  unsigned long GetChoicesColumn(VQRTTYPE type) const;
  VQSTATUS SetChoicesColumn(VQRTTYPE type, unsigned long column);
};

// A field whose values are chosen from a list, a formula's result or a view's column; setting one of them, other than
// to nothing, takes the others away. Properties of another kind of field give VQERR_INAPPROPRIATE.
class VQ_API VQKeywordsField : public VQFormField {
 public:
  VQKeywordsField() = default;
  // A field that stands alone; `type` is VQRTTYPE_KEYWORDS_FIELD.
  VQKeywordsField(const VQString& name, VQRTTYPE type);
  VQKeywordsField(const VQRTObject& object);
  VQKeywordsField(const VQKeywordsField& other) : VQFormField(other) {}
  explicit VQKeywordsField(VQFormFieldBody* body);
  using VQRTObject::operator=;
  VQKeywordsField& operator=(const VQKeywordsField& other) = default;
  VQCLASSID GetClassID() const override;

  // Stored in the two bits of the interface option: setting one overwrites what the other said.
  int GetAllowValuesNotInList() const;
  VQSTATUS SetAllowValuesNotInList(int flag);
  VQINTERFACEOPTION GetInterfaceOption() const;
  VQSTATUS SetInterfaceOption(VQINTERFACEOPTION option);
  VQCHOICESOPTION GetChoicesOption() const;
  // Drops choices of another source.
  VQSTATUS SetChoicesOption(VQCHOICESOPTION option);
  // VQERR_NO_CHOICES_LIST, VQERR_NO_CHOICES_FORMULA.
  VQSTATUS GetChoicesList(VQText* choices) const;
  VQSTATUS SetChoicesList(const VQText& choices);
  VQSTATUS GetChoicesFormula(VQFormula* formula) const;
  VQSTATUS SetChoicesFormula(const VQFormula& formula);
  // At most 130 bytes, else VQERR_OUT_OF_RANGE. An empty database is the form's own.
  VQString GetChoicesView() const;
  VQSTATUS SetChoicesView(const VQString& view);
  VQString GetChoicesViewDatabase() const;
  VQSTATUS SetChoicesViewDatabase(const VQString& path);
  // Up to 65,535, else VQERR_OUT_OF_RANGE.
  unsigned long GetChoicesViewColumnNumber() const;
  VQSTATUS SetChoicesViewColumnNumber(unsigned long column);
  int GetDontDisplayHelperButton() const;
  VQSTATUS SetDontDisplayHelperButton(int flag);
  // 1 to 8, else VQERR_OUT_OF_RANGE.
  unsigned long GetInterfaceColumnCount() const;
  VQSTATUS SetInterfaceColumnCount(unsigned long count);
  // VQERR_INVALID_PARAMETER, thrown, for a stored value that is none.
  VQINTERFACEFRAMEOPTION GetInterfaceFrameOption() const;
  VQSTATUS SetInterfaceFrameOption(VQINTERFACEFRAMEOPTION option);
  int GetLookUpNames() const;
  VQSTATUS SetLookUpNames(int flag);
  int GetRefreshChoicesOnDocRefresh() const;
  VQSTATUS SetRefreshChoicesOnDocRefresh(int flag);
  int GetRefreshFieldsOnChange() const;
  VQSTATUS SetRefreshFieldsOnChange(int flag);

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// A field of people's names; authors and readers fields are kinds of it. Its choices, if it has any, are a view's
// column: VQERR_INVALID_PARAMETER for lists and formulas.
class VQ_API VQNamesField : public VQFormField {
 public:
  VQNamesField() = default;
  // `type` is VQRTTYPE_NAMES_FIELD or below.
  VQNamesField(const VQString& name, VQRTTYPE type);
  VQNamesField(const VQRTObject& object);
  VQNamesField(const VQNamesField& other) : VQFormField(other) {}
  explicit VQNamesField(VQFormFieldBody* body);
  using VQRTObject::operator=;
  VQNamesField& operator=(const VQNamesField& other) = default;
  VQCLASSID GetClassID() const override;

  int GetAllowValuesNotInList() const;
  VQSTATUS SetAllowValuesNotInList(int flag);
  VQCHOICESOPTION GetChoicesOption() const;
  VQSTATUS SetChoicesOption(VQCHOICESOPTION option);
  int GetLookUpNames() const;
  VQSTATUS SetLookUpNames(int flag);
  VQString GetChoicesViewDatabase() const;
  VQSTATUS SetChoicesViewDatabase(const VQString& path);
  VQString GetChoicesView() const;
  VQSTATUS SetChoicesView(const VQString& view);
  unsigned long GetChoicesViewColumnNumber() const;
  VQSTATUS SetChoicesViewColumnNumber(unsigned long column);
  int GetDontDisplayHelperButton() const;
  VQSTATUS SetDontDisplayHelperButton(int flag);

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// The element. Operations are about its own record, shared or not, and leave the throw rule to the handles.
class VQ_API VQFormFieldBody : public VQRTElementBody {
 public:
  // In a loaded block.
  VQFormFieldBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  // Without a record, for copies.
  explicit VQFormFieldBody(VQRTTYPE type);
  ~VQFormFieldBody() override;

  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;
  VQSTATUS ConvertFonts(VQItem* table) override;
  VQSTATUS FindTableFont(VQFontStyle* style) override;
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  VQRTObjectBody* MakeSame() const override;
  // As VQFormField::Validate.
  virtual VQSTATUS Validate();

  // A new record, by the name alone.
  [[nodiscard]] VQSTATUS Create(std::string_view name);
  // Run with a view of the record that is good for the call: vq/forms/fieldedit.h.
  template <typename Read>
  [[nodiscard]] VQSTATUS WithField(Read read) const;
  // The view is empty where there is no extension.
  template <typename Read>
  [[nodiscard]] VQSTATUS WithExtension(Read read) const;
  // `edit` changes the view and gives a status; on success the record is put together from the view.
  template <typename Edit>
  [[nodiscard]] VQSTATUS EditField(Edit edit);
  // The extension is made when there is none.
  template <typename Edit>
  [[nodiscard]] VQSTATUS EditExtension(Edit edit);
  [[nodiscard]] VQSTATUS ReadName(std::string* name) const;
  [[nodiscard]] VQSTATUS ReadDataType(unsigned short* type) const;
  [[nodiscard]] VQSTATUS GetFont(VQFontStyle* style) const;
  [[nodiscard]] VQSTATUS SetFont(const VQFontStyle& style);
  [[nodiscard]] VQSTATUS SetName(std::string_view name);
  // Of a shared field: the definition's name, and with it the one by which this field knows it.
  // VQERR_SHARED_FIELD_EXISTS.
  [[nodiscard]] VQSTATUS Rename(std::string_view name);
  [[nodiscard]] VQSTATUS GetChoicesOption(VQCHOICESOPTION* option) const;
  // Makes it the option, and drops what belongs to the others.
  [[nodiscard]] VQSTATUS SelectChoices(VQCHOICESOPTION option);
  bool IsSharedField() const;
  [[nodiscard]] VQSTATUS Share();
  [[nodiscard]] VQSTATUS Unshare();
  [[nodiscard]] VQSTATUS PointAt(const VQSharedField& shared);
  // The field that has the design: this one, or that of the definition.
  [[nodiscard]] VQSTATUS Resolve(VQFormFieldBody** body);
  // For a form's Save: validates, and gives the name and the value's type.
  [[nodiscard]] VQSTATUS PrepareSave(std::string* name, unsigned short* type);
  // Of the definition that was opened or given; null before.
  const VQDatabaseBody* GetSharedDatabase() const {
    return SharedField.IsNull() ? nullptr : SharedField.GetDatabaseBody();
  }
  // The definition that was changed through this field; null for none.
  VQSlateBody* GetChangedDefinition() const;
  // Whether somebody else has stored the definition since it was opened here.
  bool HasStaleDefinition() const;
  // The records of another field, as one that is not shared.
  [[nodiscard]] VQSTATUS TakeDesign(const VQFormFieldBody& source);
  // Null when there is none.
  VQRTObjectBody* FindExtension() const;

 private:
  // What a record says of a field that is about to be saved.
  struct Facts {
    std::string Name;
    unsigned short Type = 0;
    bool Shared = false;
    bool HasValue = false;
    bool HasList = false;
    bool Computed = false;
  };
  [[nodiscard]] VQSTATUS ReadFacts(Facts* facts) const;
  [[nodiscard]] VQSTATUS Check(const Facts& facts) const;
  [[nodiscard]] VQSTATUS ReadOwnRecord(const vq::RecordBytes& bytes, vq::FieldView* field) const;
  // An empty one where there is none; VQERR_EDITED_BY_OLDER.
  [[nodiscard]] VQSTATUS ReadOwnExtension(const vq::RecordBytes* bytes, std::uint32_t field_length,
                                          vq::FieldExtensionView* extension) const;
  // The edited record, and the extension that goes with it, empty where there is none or where it is another program's
  // already.
  [[nodiscard]] VQSTATUS BuildRecords(const vq::FieldView& field, const vq::FieldView& edited, std::string* record,
                                      std::string* extension) const;
  [[nodiscard]] VQSTATUS StoreRecords(const std::string& record, const std::string& extension);
  [[nodiscard]] VQSTATUS StoreExtension(const std::string& record);
  // Keeps the record to its name, and drops the extension.
  [[nodiscard]] VQSTATUS CutToName();
  [[nodiscard]] VQSTATUS CheckNewName(std::string_view name) const;
  [[nodiscard]] VQSTATUS OpenDefinition();
  VQDatabaseBody* GetDatabaseBody() const;

  VQSharedField SharedField;
  std::unique_ptr<VQFontStyle> FontStyle;  // with the face of a table, on the way from one rich text into another
};

#endif
