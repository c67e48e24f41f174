// VQForm: the design of a form, as typed properties, and the rich text that holds its fields.
//
// A handle binds like any slate (vq/store/vqslate.h); Open reads the design. Setters change it in memory, and Save
// writes the items that belong to what has changed; all else in the slate stays as it is. Fields are elements of the
// form's rich text (GetFormBody) and are added, changed and removed there; each Save checks them and derives from them
// the list of names that the form carries. A subform that was changed through one of its fields is stored with it, by
// the same flags.
//
// On a handle without an open slate every operation gives VQERR_OBJECT_NOT_INITIALIZED, on a form that is not open
// VQERR_FORM_NOT_OPEN; thrown where the result is no status. Int setters store 0 or 1. Enumerations: a value that is
// none of theirs gives VQERR_INVALID_PARAMETER. Formulas are copied both ways; a null one takes the formula away, and a
// getter gives VQWARN_NOT_FOUND, its output untouched, where there is none.
#ifndef QUILLON_VQ_FORMS_VQFORMB_H
#define QUILLON_VQ_FORMS_VQFORMB_H

#include <deque>
#include <string>
#include <vector>

#include "engine/records.h"
#include "vq/automation/vqformula.h"
#include "vq/forms/vqfield.h"
#include "vq/forms/vqsubfrm.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/store/desflags.h"
#include "vq/store/vqidtab.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqtext.h"

class VQFormBody;
class VQFormFieldArray;
class VQGraphic;

enum VQINCLUDEINMENUOPTION : unsigned int {
  VQINCLUDEINMENUOPTION_CREATE_MENU = 0,
  VQINCLUDEINMENUOPTION_NONE = 1,
  VQINCLUDEINMENUOPTION_OTHER_DIALOG = 2,
};

enum VQFORMTYPE : unsigned int {
  VQFORMTYPE_DOCUMENT = 0,
  VQFORMTYPE_RESPONSE = 1,
  VQFORMTYPE_RESPONSE_TO_RESPONSE = 2,
};

enum VQVERSIONINGOPTION : unsigned int {
  VQVERSIONINGOPTION_NONE = 0,
  VQVERSIONINGOPTION_SIBLINGS = 128,
  VQVERSIONINGOPTION_UPDATES_ARE_RESPONSES = 16384,
  VQVERSIONINGOPTION_PRIORS_ARE_RESPONSES = 32768,
};

enum VQCONTEXTPANEOPTION : unsigned int {
  VQCONTEXTPANEOPTION_NONE = 0,
  VQCONTEXTPANEOPTION_LINK = 1,
  VQCONTEXTPANEOPTION_PARENT = 2,
};

enum VQINHERITDOCOPTION : unsigned int {
  VQINHERITDOCOPTION_NONE = 0,
  VQINHERITDOCOPTION_LINK = 1,
  VQINHERITDOCOPTION_COLLAPSIBLE_RICH_TEXT = 2,
  VQINHERITDOCOPTION_RICH_TEXT = 3,
};

enum VQAUTOLAUNCHOBJECTTYPE : unsigned int {
  VQAUTOLAUNCHOBJECTTYPE_NONE = 0,
  VQAUTOLAUNCHOBJECTTYPE_OLE_OBJECT = 2,
  VQAUTOLAUNCHOBJECTTYPE_4 = 4,
  VQAUTOLAUNCHOBJECTTYPE_8 = 8,
};

enum VQCREATEOBJECTINFIELDOPTION : unsigned int {
  VQCREATEOBJECTINFIELDOPTION_1 = 1,
  VQCREATEOBJECTINFIELDOPTION_FIRST_RICH_TEXT = 2,  // the default
  VQCREATEOBJECTINFIELDOPTION_NAMED_FIELD = 4,
};

// LaunchObjectWhenFlags.
inline constexpr unsigned long VQLAUNCHWHEN_CREATING = 0x01;
inline constexpr unsigned long VQLAUNCHWHEN_EDITING = 0x02;
inline constexpr unsigned long VQLAUNCHWHEN_READING = 0x04;
// HideDocumentWhenFlags: when the document, and when the object in it is closed.
inline constexpr unsigned long VQHIDEWHEN_OPENING_CREATE = 0x01;
inline constexpr unsigned long VQHIDEWHEN_OPENING_EDIT = 0x02;
inline constexpr unsigned long VQHIDEWHEN_OPENING_READ = 0x04;
inline constexpr unsigned long VQHIDEWHEN_CLOSING_CREATE = 0x08;
inline constexpr unsigned long VQHIDEWHEN_CLOSING_EDIT = 0x10;
inline constexpr unsigned long VQHIDEWHEN_CLOSING_READ = 0x20;

class VQ_API VQForm : public VQSlate {
 public:
  VQForm();
  // As Assign; a failure throws.
  VQForm(VQDatabaseBody* database, unsigned long id);
  VQForm(const VQForm& other);
  explicit VQForm(const VQSlate& other);
  explicit VQForm(VQFormBody* body);
  ~VQForm();
  // A slate that is no form throws VQERR_FORM_SLATE_ONLY and changes nothing.
  VQForm& operator=(const VQForm& other);
  VQForm& operator=(const VQSlate& other);
  VQForm& operator=(VQSlateBody* body);
  VQCLASSID GetClassID() const override;

  VQSTATUS Close() override;
  // VQWARN_ALREADY_OPEN. A form whose $Info is missing or is none gives VQERR_NOT_FOUND, one whose records are cut off
  // VQERR_CORRUPTED; it stays closed, and a slate that was open stays open.
  VQSTATUS Open(unsigned long flags = 0) override;
  using VQSlate::Open;
  VQSTATUS CreateSlateBody(unsigned long flags, unsigned long argument, int argument2) override;
  VQSTATUS ValidateSlateType(const VQSlate& other) const override;
  VQSTATUS ValidateSlateType(const VQSlateBody* body) const override;
  VQSTATUS ValidateSlateType(unsigned long type) const override;
  // VQERR_FORM_NAME_REQUIRED, or the first field's status that fails its Validate. Stores the form with all that was
  // changed through its fields in subforms and shared definitions; after a failure (another's save or deletion of one
  // of them too) nothing is stored: what was written stays in the open slates, and what was not stays to be written.
  // Handles on fields of a subform go when somebody else has stored it.
  VQSTATUS Save(unsigned short flags = 0);

  // Name and alias. A name that is split at "|" or ";" sets both; an alias so split is several. VQERR_NULL_STRING for
  // an empty name, VQERR_INVALID_PARAMETER for an empty first part, VQERR_FORM_NAME_TOO_LONG from 130 bytes of name and
  // alias on, VQERR_FORM_EXISTS when another form of the database has one of the names given.
  VQString GetName() const;
  VQSTATUS SetName(const VQString& name);
  VQString GetAlias() const;
  // An empty alias takes it away.
  VQSTATUS SetAlias(const VQString& alias);

  VQSTATUS GetHTMLAttributesFormula(VQFormula* formula) const;
  VQSTATUS SetHTMLAttributesFormula(const VQFormula& formula);
  VQSTATUS GetWebQueryOpenFormula(VQFormula* formula) const;
  VQSTATUS SetWebQueryOpenFormula(const VQFormula& formula);
  VQSTATUS GetWebQuerySaveFormula(VQFormula* formula) const;
  VQSTATUS SetWebQuerySaveFormula(const VQFormula& formula);
  VQSTATUS GetWindowTitleFormula(VQFormula* formula) const;
  VQSTATUS SetWindowTitleFormula(const VQFormula& formula);

  VQINCLUDEINMENUOPTION GetIncludeInMenuOption() const;
  VQSTATUS SetIncludeInMenuOption(VQINCLUDEINMENUOPTION option);
  VQFORMTYPE GetFormType() const;
  VQSTATUS SetFormType(VQFORMTYPE type);
  int GetIncludeInSearchBuilder() const;
  VQSTATUS SetIncludeInSearchBuilder(int flag);
  int GetAllowDesignRefreshToModify() const;
  VQSTATUS SetAllowDesignRefreshToModify(int flag);
  int GetHideFromBrowsers() const;
  VQSTATUS SetHideFromBrowsers(int flag);
  int GetHideFromClients() const;
  VQSTATUS SetHideFromClients(int flag);
  int GetHideFromR4Clients() const;
  VQSTATUS SetHideFromR4Clients(int flag);
  int GetIsAnonymousForm() const;
  VQSTATUS SetIsAnonymousForm(int flag);
  int GetCreateVersionsAutomatically() const;
  VQSTATUS SetCreateVersionsAutomatically(int flag);
  int GetDisableFieldExchange() const;
  VQSTATUS SetDisableFieldExchange(int flag);
  int GetEditOnOpen() const;
  VQSTATUS SetEditOnOpen(int flag);
  int GetMergeReplicationConflicts() const;
  VQSTATUS SetMergeReplicationConflicts(int flag);
  VQVERSIONINGOPTION GetVersioningOption() const;
  VQSTATUS SetVersioningOption(VQVERSIONINGOPTION option);
  int GetRefreshFieldsAutomatically() const;
  VQSTATUS SetRefreshFieldsAutomatically(int flag);
  int GetInheritFormulaValues() const;
  VQSTATUS SetInheritFormulaValues(int flag);
  int GetShowMailSendOnClose() const;
  VQSTATUS SetShowMailSendOnClose(int flag);
  int GetStoreFormInDocument() const;
  VQSTATUS SetStoreFormInDocument(int flag);
  VQCONTEXTPANEOPTION GetContextPaneOption() const;
  VQSTATUS SetContextPaneOption(VQCONTEXTPANEOPTION option);
  VQINHERITDOCOPTION GetInheritDocumentOption() const;
  VQSTATUS SetInheritDocumentOption(VQINHERITDOCOPTION option);
  // At most 230 bytes, else VQERR_STRING_TOO_LONG.
  VQString GetInheritDocumentFieldName() const;
  VQSTATUS SetInheritDocumentFieldName(const VQString& name);
  // Of the slate; takes effect with Save.
  int GetIsDefaultForm() const;
  VQSTATUS SetIsDefaultForm(int flag);
  // At once in $WebFlags. VQERR_INCORRECT_ITEM_TYPE, VQERR_CORRUPTED for one that holds no texts, where 1 is set.
  int GetTreatContentsAsHTML() const;
  VQSTATUS SetTreatContentsAsHTML(int flag);
  // Stored while AllowDesignRefreshToModify is on.
  VQString GetInheritsFromTemplateName() const;
  VQSTATUS SetInheritsFromTemplateName(const VQString& name);

  // The object that opens with a document. Save brings the settings into a state that makes sense: for an OLE object
  // that is launched in place the document is never hidden, for types 4 and 8 all settings are the defaults.
  VQAUTOLAUNCHOBJECTTYPE GetAutoLaunchObjectType() const;
  VQSTATUS SetAutoLaunchObjectType(VQAUTOLAUNCHOBJECTTYPE type);
  // The two exclude each other.
  int GetLaunchOLEObjectInPlace() const;
  VQSTATUS SetLaunchOLEObjectInPlace(int flag);
  int GetPresentDocumentAsDialog() const;
  VQSTATUS SetPresentDocumentAsDialog(int flag);
  // A stored 0 or 3 is read as it stands.
  VQCREATEOBJECTINFIELDOPTION GetCreateObjectInFieldOption() const;
  VQSTATUS SetCreateObjectInFieldOption(VQCREATEOBJECTINFIELDOPTION option);
  // Read back after a Save with VQCREATEOBJECTINFIELDOPTION_NAMED_FIELD. At most 32,767 bytes, else
  // VQERR_STRING_TOO_LONG.
  VQString GetCreateObjectInFieldName() const;
  VQSTATUS SetCreateObjectInFieldName(const VQString& name);
  // VQERR_INVALID_PARAMETER for bits that are none.
  unsigned long GetLaunchObjectWhenFlags() const;
  VQSTATUS SetLaunchObjectWhenFlags(unsigned long flags);
  unsigned long GetHideDocumentWhenFlags() const;
  VQSTATUS SetHideDocumentWhenFlags(unsigned long flags);

  // A colour index below 240, else VQERR_INVALID_PARAMETER.
  unsigned short GetBackgroundColor() const;
  VQSTATUS SetBackgroundColor(unsigned short color);
  // A copy. VQERR_NOT_FOUND when none is set.
  VQSTATUS GetBackgroundGraphic(VQGraphic* graphic) const;
  // VQERR_UNINITIALIZED_ARGUMENT for a null graphic.
  VQSTATUS SetBackgroundGraphic(const VQGraphic& graphic);
  VQSTATUS RemoveBackgroundGraphic();  // 0 also where there is none
  // Saving a form that launches an OLE object sets this bit by the hide-when-reading setting.
  int GetHideBackgroundGraphicIn16ColorMode() const;
  VQSTATUS SetHideBackgroundGraphicIn16ColorMode(int flag);
  int GetUserCanOverrideBackground() const;
  VQSTATUS SetUserCanOverrideBackground(int flag);

  int GetAllowAllAuthors() const;
  VQSTATUS SetAllowAllAuthors(int flag);
  int GetAllowAllReaders() const;
  VQSTATUS SetAllowAllReaders(int flag);
  int GetAllowPublicAccessUsers() const;
  VQSTATUS SetAllowPublicAccessUsers(int flag);
  // Copies, both ways. Authors and readers are stored while all of them are not allowed.
  VQSTATUS GetAuthors(VQText* authors) const;
  VQSTATUS SetAuthors(const VQText& authors);
  VQSTATUS GetReaders(VQText* readers) const;
  VQSTATUS SetReaders(const VQText& readers);
  VQSTATUS GetDefaultEncryptionKeys(VQText* keys) const;
  VQSTATUS SetDefaultEncryptionKeys(const VQText& keys);
  int GetDisablePrintingAndCopying() const;
  VQSTATUS SetDisablePrintingAndCopying(int flag);

  // The rich text with the form's fields, made when there is none.
  VQSTATUS GetFormBody(VQRichText* body) const;
  // The form's fields are those of its rich text, in order, and behind them those of the subforms that it inserts.
  // VQWARN_NOT_FOUND. Names are compared exactly.
  VQSTATUS GetFormField(const VQString& name, VQFormField* field) const;
  int HasFormField(const VQString& name) const;
  // Those of a kind: VQERR_INVALID_PARAMETER for a type that is no field's.
  VQSTATUS GetFormFields(VQFormFieldArray* fields, VQRTTYPE type = VQRTTYPE_FORM_FIELD) const;

  VQFormBody* GetFormSlateBody() const;

 private:
  friend class VQDatabase;

  VQSTATUS CheckForm(VQFormBody** body) const;
  VQFormBody* RequireForm() const;
  // Runs an edit, which gives a status, and sets the mark when it succeeds.
  template <typename Edit>
  VQSTATUS Amend(int VQFormBody::*mark, Edit edit);
  using InfoWord = std::uint16_t FormInfoRecord::*;
  int GetInfoBit(InfoWord word, unsigned mask) const;
  VQSTATUS SetInfoBits(InfoWord word, unsigned clear, unsigned set);
  VQSTATUS SetInfoBit(InfoWord word, unsigned mask, int flag);
  using LaunchWord = std::uint32_t FormAutoLaunchRecord::*;
  VQSTATUS SetLaunchWord(LaunchWord word, unsigned long clear, unsigned long set);
  // Of a form that is open, the status.
  VQSTATUS Refuse(VQSTATUS status);
  int GetLetter(char letter) const;
  VQSTATUS SetLetter(char letter, int flag);
  VQSTATUS SetText(VQString VQFormBody::*text, int VQFormBody::*mark, const VQString& value, unsigned long longest);
  VQSTATUS GetFormula(const VQFormula VQFormBody::*formula, VQFormula* copy) const;
  VQSTATUS SetFormula(VQFormula VQFormBody::*formula, int VQFormBody::*mark, const VQFormula& value);
  VQSTATUS GetTexts(const VQText VQFormBody::*texts, VQText* copy) const;
  VQSTATUS SetTexts(VQText VQFormBody::*texts, int VQFormBody::*mark, const VQText& value);
  VQSTATUS SetFlag(int VQFormBody::*value, int VQFormBody::*mark, int flag);
};

// The open form. Operations return their status and leave the throw rule to the handle.
class VQ_API VQFormBody : public VQSlateBody {
 public:
  // The design is not read before Open.
  VQFormBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);
  ~VQFormBody() override;

  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;
  VQString GetAlias() override;
  VQString GetName() override;
  // Changes of the HTML attributes and the two web query formulas alone do not count, though Save writes them.
  int IsModified() override;
  VQSTATUS Open(unsigned long flags) override;
  // A form whose design nobody has asked for is saved as it stands.
  VQSTATUS Save(unsigned short flags) override;
  VQSTATUS AdmitObjects(VQRichTextBody& text, const VQRTObjectBody& incoming, const VQSlateBody* from) override;
  VQSTATUS FlushDesign() override;

  bool IsFormOpen() const { return FormOpen != 0; }
  // Opens a slate that was never saved.
  [[nodiscard]] VQSTATUS OpenNew();
  // The name of a form that is made: before the design is read.
  void TakeName(const VQString& name) { Name = name; }
  // VQ_OK or what SetName gives; the name's parts, with the present alias behind a name that has none.
  [[nodiscard]] VQSTATUS CheckName(const VQString& name, std::vector<std::string>* parts);
  [[nodiscard]] VQSTATUS SetName(const VQString& name);
  [[nodiscard]] VQSTATUS SetAlias(const VQString& alias);
  [[nodiscard]] VQSTATUS SetIsDefaultForm(int flag);
  int GetTreatContentsAsHTML() const;
  [[nodiscard]] VQSTATUS SetTreatContentsAsHTML(int flag);
  [[nodiscard]] VQSTATUS GetBackgroundGraphic(VQGraphic* graphic);
  [[nodiscard]] VQSTATUS SetBackgroundGraphic(const VQGraphic& graphic);
  [[nodiscard]] VQSTATUS RemoveBackgroundGraphic();
  [[nodiscard]] VQSTATUS GetFormBody(VQRichText* body);
  // Makes the list of fields when it is needed and not made, or when the rich text was changed since.
  [[nodiscard]] VQSTATUS BuildFieldList();
  const VQObjectList& GetFieldList() const { return FieldList; }
  // Another number with each list.
  unsigned long GetListGeneration() const { return ListGeneration; }
  // VQWARN_NOT_FOUND.
  [[nodiscard]] VQSTATUS FindField(const VQString& name, VQFormFieldBody** field);
  // The form whose list has the field, null when there is none.
  static VQFormBody* ListingFormOf(const VQFormFieldBody& field);
  // VQERR_FIELD_EXISTS when a field of the form, or of a subform that brings fields to its list, has the name.
  [[nodiscard]] VQSTATUS CheckOthers(std::string_view name, const VQFormFieldBody& own);
  // The names in $SubForms. A name that is there already, or one that is not there (VQERR_NOT_FOUND), changes nothing.
  // VQERR_UNINITIALIZED_ARGUMENT for a null subform; VQERR_INCORRECT_ITEM_TYPE or VQERR_CORRUPTED where an item of
  // that name holds something else.
  [[nodiscard]] VQSTATUS AddSubform(const VQSubform& subform);
  [[nodiscard]] VQSTATUS RemoveSubform(const VQString& name);

 private:
  friend class VQForm;

  static constexpr std::uint8_t kInfoSignature = 0x86;
  static constexpr unsigned short kSignedSummary = VQITEMFLAGS_SIGN | VQITEMFLAGS_SUMMARY;

  // Records of an item ahead of the one that counts, and behind it.
  struct Surroundings {
    std::string Ahead;
    std::string Behind;
  };

  // Whose fields are in the list, and its rich text as it was then.
  struct ListedSubform {
    VQSubform Slate;
    VQRichTextBody* Text;
    std::uint32_t Structure;
  };

  // Takes its elements away without touching the fields. They are its own, together: a form has many.
  class FieldElements : public VQObjectList {
   public:
    explicit FieldElements(VQFormBody* form) : Form(form) {}
    ~FieldElements() override { RemoveAll(); }
    VQFormBody* GetForm() const { return Form; }
    VQSTATUS AddObject(VQQuillonClass* object) override {
      if (VQSTATUS status = CheckObject(object)) return status;
      AddElement(&Elements.emplace_back(object));
      return VQ_OK;
    }
    void RemoveAll() {
      First = Last = nullptr;
      Count = 0;
      while (!Elements.empty()) Elements.pop_back();
    }

   private:
    VQFormBody* Form;
    std::deque<VQElement> Elements;
  };

  [[nodiscard]] VQSTATUS CheckFree(const std::vector<std::string>& names);
  void Reset();
  void ResetAutoLaunch();
  void ReleaseDesign();
  void ReleaseFieldList();
  // Reading, in formload.cpp.
  [[nodiscard]] VQSTATUS Load();
  [[nodiscard]] VQSTATUS LoadNew();
  [[nodiscard]] VQSTATUS LoadFormula(std::string_view item, VQFormula* formula);
  // The first record of a composite item that has no class, as bytes; VQWARN_NOT_FOUND for no item.
  [[nodiscard]] VQSTATUS ReadRecordOf(std::string_view item, std::string* record, Surroundings* around) const;
  [[nodiscard]] VQSTATUS LoadInfo();
  [[nodiscard]] VQSTATUS LoadAutoLaunch();
  [[nodiscard]] VQSTATUS LoadTexts(std::string_view item, VQText* texts, int* absent);
  [[nodiscard]] VQSTATUS LoadRest();
  [[nodiscard]] VQSTATUS ReadItem(std::string_view item, unsigned short* type, std::string* value) const;
  bool HasItem(std::string_view item) const { return PlaceOf(item, nullptr) == VQ_OK; }
  // Writing, in formsave.cpp.
  [[nodiscard]] VQSTATUS SaveDesign();
  [[nodiscard]] VQSTATUS SaveChanges();
  [[nodiscard]] VQSTATUS SaveValue(std::string_view item, unsigned short type, std::string_view value,
                                   unsigned short flags);
  [[nodiscard]] VQSTATUS SaveText(std::string_view item, std::string_view text, unsigned short flags);
  [[nodiscard]] VQSTATUS Remove(std::string_view item);
  // An item "1" that says yes by being there. Each of these clears its mark when it has come through.
  [[nodiscard]] VQSTATUS SaveMark(std::string_view item, int on, unsigned short flags, int* mark);
  [[nodiscard]] VQSTATUS SaveTitle();
  [[nodiscard]] VQSTATUS SaveFormula(std::string_view item, const VQFormula& formula, int* mark);
  [[nodiscard]] VQSTATUS SaveFormulas();
  [[nodiscard]] VQSTATUS SaveAutoLaunch();
  void ReconcileAutoLaunch();
  void ReconcileOLE();
  [[nodiscard]] VQSTATUS SaveTemplate();
  [[nodiscard]] VQSTATUS ReadTextItem(std::string_view item, std::vector<std::string>* texts) const;
  [[nodiscard]] VQSTATUS SaveTexts(std::string_view item, const VQText& texts, int everybody, int* mark);
  [[nodiscard]] VQSTATUS SaveEncryptionKeys();
  [[nodiscard]] VQSTATUS SaveInfo();
  [[nodiscard]] VQSTATUS SaveRecord(std::string_view item, const std::string& record, const Surroundings& around);
  // The list of fields, in formfields.cpp.
  [[nodiscard]] VQSTATUS SaveFields();
  [[nodiscard]] VQSTATUS SavePlaceholder(const std::string& name, unsigned short type);
  [[nodiscard]] VQSTATUS RemovePlaceholders();
  bool FindFieldsItem(std::size_t names, unsigned long* index) const;
  bool SetPlaceholdersAside(std::vector<std::string> names);
  bool RestorePlaceholders(const std::vector<std::string>& names, const std::vector<unsigned short>& types);
  [[nodiscard]] VQSTATUS AddFields(VQRichTextBody* text);
  [[nodiscard]] VQSTATUS AddSubformFields(VQRichTextBody* text, unsigned depth);
  [[nodiscard]] VQSTATUS OpenSubform(VQSubform* subform);
  [[nodiscard]] VQSTATUS FindInserted(const VQRTObjectBody& place, VQSubform* subform) const;
  [[nodiscard]] VQSTATUS PrepareReferenced(std::vector<VQSlateBody*>* slates);
  bool HasFieldsOf(unsigned long subform) const;
  bool IsListValid() const;

  FieldElements FieldList;
  int FieldListBuilt;
  const VQRichTextBody* ListText;  // that the list was made from, and what it was then
  std::uint32_t ListStructure;
  VQString Alias;
  VQString Name;
  VQFormula HTMLAttributesFormula;
  VQFormula WebQueryOpenFormula;
  VQFormula WebQuerySaveFormula;
  VQFormula WindowTitleFormula;
  VQString InheritDocumentFieldName;
  VQText DefaultEncryptionKeys;
  VQText Authors;
  VQText Readers;
  FormInfoRecord Info;
  FormAutoLaunchRecord AutoLaunch;
  VQString CreateObjectInFieldName;
  VQString InheritsFromTemplateName;
  VQDesignFlags Flags;
  int AutoLaunchDirty;
  int IsNew;  // not stored yet
  int FormOpen;
  int HTMLBodyTagDirty;
  int WebQueryOpenDirty;
  int WebQuerySaveDirty;
  int WindowTitleDirty;
  int NameDirty;
  int TemplateDirty;
  int MergeReplicationConflicts;
  int ConflictActionDirty;
  int AuthorsDirty;
  int AllowAllAuthors;
  int ReadersDirty;
  int AllowAllReaders;
  int PublicAccessDirty;
  int AllowPublicAccessUsers;
  int EncryptionKeysDirty;
  int KeepPrivateDirty;
  int DisablePrintingAndCopying;
  int BackgroundOverrideDirty;
  int UserCanOverrideBackground;
  int InfoDirty;
  // What stands behind the known part of a record: a field name that is not in use, and what a newer release wrote.
  std::string UnusedInheritName;
  std::string UnusedObjectName;
  std::string InfoTail;
  std::string AutoLaunchTail;
  Surroundings InfoAround;
  Surroundings AutoLaunchAround;
  std::vector<ListedSubform> Subforms;
  std::vector<VQSubform> FormerSubforms;  // of the list that is made anew
  bool HasSubforms;                       // or had places for some when the list was made
  unsigned long ListGeneration;
  // The placeholders that the slate keeps aside.
  std::vector<std::string> KeptNames;
  std::vector<unsigned short> KeptTypes;
};

inline VQFormBody* VQForm::GetFormSlateBody() const { return static_cast<VQFormBody*>(Body); }

class VQ_API VQFormArray : public VQSlateArray {
 public:
  using VQSlateArray::VQSlateArray;
  VQCLASSID GetClassID() const override;
  VQForm operator[](unsigned long index) const;
};

#endif
