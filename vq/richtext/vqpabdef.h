// The paragraph records of a rich text: definitions, references, hide formulas, style names; and tab lists.
//
// A definition holds paragraph settings under an identifier (PABID), a reference puts an identifier in force for the
// paragraphs behind it, a hide record gives an identifier a hide formula, a style name gives it a name and a font.
// These classes are the tree's view of the records; VQParagraphStyle (vqparstl.h) is what clients format with.
#ifndef QUILLON_VQ_RICHTEXT_VQPABDEF_H
#define QUILLON_VQ_RICHTEXT_VQPABDEF_H

#include <string>

#include "engine/records.h"
#include "vq/richtext/vqrtobj.h"
#include "vq/richtext/vqrtobjb.h"
#include "vq/richtext/vqunits.h"

class VQFormula;

// Bits of CDPABDEFINITION::Flags.
inline constexpr unsigned short PABFLAG_PAGE_BREAK_BEFORE = 0x0001;
inline constexpr unsigned short PABFLAG_KEEP_PARAGRAPHS = 0x0002;
inline constexpr unsigned short PABFLAG_KEEP_LINES = 0x0004;
inline constexpr unsigned short PABFLAG_HIDE_READING = 0x0010;
inline constexpr unsigned short PABFLAG_HIDE_EDITING = 0x0020;
inline constexpr unsigned short PABFLAG_HIDE_PRINTING = 0x0040;
inline constexpr unsigned short PABFLAG_HIDE_UNLINK = 0x0100;  // the hide bits are in the new arrangement
inline constexpr unsigned short PABFLAG_HIDE_COPYING = 0x0200;
inline constexpr unsigned short PABFLAG_LIST_STYLE_1 = 0x0400;
inline constexpr unsigned short PABFLAG_HIDE_IF_FORMULA = 0x0800;
inline constexpr unsigned short PABFLAG_LIST_STYLE_2 = 0x1000;
inline constexpr unsigned short PABFLAG_HIDE_READING_PREVIEW = 0x2000;
inline constexpr unsigned short PABFLAG_HIDE_EDITING_PREVIEW = 0x4000;
inline constexpr unsigned short PABFLAG_HIDE_FROM_CLIENTS = 0x8000;
// Of CDPABDEFINITION::Flags2.
inline constexpr unsigned short PABFLAG2_HIDE_FROM_BROWSERS = 0x0001;

// Bits of CDSTYLENAME::Flags.
inline constexpr unsigned long STYLENAMEFLAG_HAS_FONT = 0x0001;
inline constexpr unsigned long STYLENAMEFLAG_ON_CYCLE_LIST = 0x0002;
inline constexpr unsigned long STYLENAMEFLAG_FOR_ALL_DOCUMENTS = 0x0004;

// First line against the left margin.
enum VQINDENTATION : int {
  VQINDENTATION_NONE = 0,
  VQINDENTATION_INDENT = 1,
  VQINDENTATION_OUTDENT = 2,
};

// The two-bit codes of the record.
enum VQTABALIGNMENT : int {
  VQTABALIGNMENT_LEFT = 0,
  VQTABALIGNMENT_RIGHT = 1,
  VQTABALIGNMENT_DECIMAL = 2,
  VQTABALIGNMENT_CENTER = 3,
};

// Bodies. A new one holds the record's defaults. Operations give their status and leave the throw rule to handles.
class VQ_API VQPABDefinitionBody : public VQRTObjectBody {
 public:
  static constexpr unsigned short kDefaultIndentation = 360;

  explicit VQPABDefinitionBody(VQUNITS units = VQUNITS_DEFAULT);
  VQPABDefinitionBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);

  VQCLASSID GetClassID() const override { return VQCLASSID_VQPABDEFINITIONBODY; }
  VQRTObjectBody* MakeSame() const override { return new VQPABDefinitionBody(); }
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;

  [[nodiscard]] VQSTATUS GetRecord(CDPABDEFINITION* record) const;
  // The header is set here.
  [[nodiscard]] VQSTATUS SetRecord(const CDPABDEFINITION& record);

  // Twips. A definition that was read has the distance between its margins, the default where they are equal.
  std::uint16_t GetIndentation() const;
  void SetIndentation(std::uint16_t twips) { IndentationValue = twips; }
  VQUNITS GetUnits() const { return vq::ResolveUnits(Units); }
  void SetUnits(VQUNITS units) { Units = units; }
  VQUNITS GetTabUnits() const { return vq::ResolveUnits(TabUnits); }
  void SetTabUnits(VQUNITS units) { TabUnits = units; }

 private:
  static constexpr std::uint16_t kFromRecord = 0xFFFF;

  std::uint16_t IndentationValue;
  VQUNITS Units;
  VQUNITS TabUnits;
};

class VQ_API VQPABStyleNameBody : public VQRTObjectBody {
 public:
  // The record's parts: what is not understood rides along in Flags and Tail.
  struct Fields {
    std::uint32_t Flags = 0;
    std::uint16_t PABID = 0;
    std::string Name;  // store text, at most 35 bytes
    std::uint32_t FontID = 0;
    std::string Tail;  // bytes behind the font: the user name with its length word
  };

  // Name "NoName", identifier 0.
  VQPABStyleNameBody();
  VQPABStyleNameBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  ~VQPABStyleNameBody() override;

  VQCLASSID GetClassID() const override { return VQCLASSID_VQPABSTYLENAMEBODY; }
  VQRTObjectBody* MakeSame() const override { return new VQPABStyleNameBody(); }
  VQSTATUS Close() override;
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  VQSTATUS ConvertFonts(VQItem* table) override;

  [[nodiscard]] VQSTATUS Read(Fields* fields) const;
  // VQERR_STRING_TOO_LONG when the parts are longer than a record of this form can say.
  [[nodiscard]] VQSTATUS Write(const Fields& fields);

  // The font that goes with the name, the default one where the record has none.
  std::uint32_t GetFontID() const;
  [[nodiscard]] VQSTATUS SetFontID(std::uint32_t fontID);
  // A style that writes through to this record; VQWARN_NOT_FOUND when the name has no font.
  VQSTATUS FindTableFont(VQFontStyle* style) override { return GetFontStyle(style); }
  [[nodiscard]] VQSTATUS GetFontStyle(VQFontStyle* style);
  // Null takes the font away.
  [[nodiscard]] VQSTATUS SetFontStyle(const VQFontStyle& style);

 private:
  void DropFontStyle();
  VQFontStyleBody* OwnFontStyle();

  VQFontStyleBody* FontStyle;  // counted, null until asked for
};

namespace vq {

// Identifiers of paragraph objects of every kind; a formula reference has two.
struct PABIDs {
  std::uint16_t First = 0;   // of a formula reference the source: where the hide formula is taken from
  std::uint16_t Second = 0;  // of a formula reference the destination: the definition; else as First
};
[[nodiscard]] VQSTATUS ReadPABIDs(const VQRTObjectBody& object, PABIDs* ids);
// Writes the identifiers. A reference becomes a formula reference when the two differ and a plain one when they are
// equal, in place.
[[nodiscard]] VQSTATUS WritePABIDs(VQRTObjectBody& object, PABIDs ids);

// New records outside a tree.
VQRTObject MakePABReference(PABIDs ids);
VQRTObject MakePABHide(std::uint16_t pabid);

[[nodiscard]] VQSTATUS ReadHideFormula(const VQRTObjectBody& hide, std::string* code);
// The record's length word holds the low eight bits of its length; the code is stored whole.
[[nodiscard]] VQSTATUS WriteHideFormula(VQRTObjectBody& hide, std::uint16_t pabid, const std::string& code);

}  // namespace vq

// Handles. A null one gives VQERR_OBJECT_NOT_INITIALIZED, thrown where the result is no status.
class VQ_API VQPABDefinition : public VQRTObject {
 public:
  VQPABDefinition() = default;
  VQPABDefinition(const VQRTObject& object);
  VQPABDefinition(const VQPABDefinition& other) : VQRTObject(other) {}
  explicit VQPABDefinition(VQPABDefinitionBody* body);
  using VQRTObject::operator=;
  VQPABDefinition& operator=(const VQPABDefinition& other) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQPABDEFINITION; }

  CDPABDEFINITION GetCDPABDefinition() const;
  unsigned short GetPABID() const;
  VQSTATUS SetPABID(unsigned short pabid);
  VQPABDefinitionBody* GetPABDefinitionBody() const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

class VQ_API VQPABReference : public VQRTObject {
 public:
  VQPABReference() = default;
  // A reference of its own, to be put into a text.
  explicit VQPABReference(unsigned short pabid);
  VQPABReference(const VQRTObject& object);
  VQPABReference(const VQPABReference& other) : VQRTObject(other) {}
  using VQRTObject::operator=;
  VQPABReference& operator=(const VQPABReference& other) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQPABREFERENCE; }

  // The definition's identifier; of a formula reference the destination.
  unsigned short GetPABID() const;
  // The object that the hide formula is taken from.
  unsigned short GetSourcePABID() const;
  VQSTATUS SetPABID(unsigned short pabid);
  // With two different identifiers the object becomes a formula reference, in place.
  VQSTATUS SetPABID(unsigned short source, unsigned short destination);

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// A reference that takes the definition of one identifier and the hide formula of another.
class VQ_API VQPABFormulaReference : public VQPABReference {
 public:
  VQPABFormulaReference() = default;
  VQPABFormulaReference(const VQRTObject& object);
  VQPABFormulaReference(const VQPABFormulaReference& other) : VQPABReference(other) {}
  using VQRTObject::operator=;
  VQPABFormulaReference& operator=(const VQPABFormulaReference& other) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQPABFORMULAREFERENCE; }

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

class VQ_API VQPABHide : public VQRTObject {
 public:
  VQPABHide() = default;
  VQPABHide(const VQRTObject& object);
  VQPABHide(const VQPABHide& other) : VQRTObject(other) {}
  using VQRTObject::operator=;
  VQPABHide& operator=(const VQPABHide& other) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQPABHIDE; }

  unsigned short GetPABID() const;
  VQSTATUS SetPABID(unsigned short pabid);
  VQSTATUS GetFormula(VQFormula* formula) const;
  // A handle without a record gets one with identifier 0.
  VQSTATUS SetFormula(const VQFormula& formula);

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

class VQ_API VQPABStyleName : public VQRTObject {
 public:
  VQPABStyleName() = default;
  VQPABStyleName(const VQRTObject& object);
  VQPABStyleName(const VQPABStyleName& other) : VQRTObject(other) {}
  explicit VQPABStyleName(VQPABStyleNameBody* body);
  using VQRTObject::operator=;
  VQPABStyleName& operator=(const VQPABStyleName& other) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQPABSTYLENAME; }

  unsigned short GetPABID() const;
  VQSTATUS SetPABID(unsigned short pabid);
  VQString GetName() const;
  VQPABStyleNameBody* GetPABStyleNameBody() const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// The tab list of a paragraph definition: a handle on the definition itself, so that an edit here is an edit of it.
// At most 20 tabs, kept in order; positions are in units and the same within one twip. A setter on a null handle makes
// a definition of its own. The record keeps alignments of the first 16 tabs; the others are left tabs, and what would
// need more gives VQERR_TABS_FULL (Add) or VQERR_OUT_OF_RANGE (SetAlignment).
class VQ_API VQTabs : public VQSmartPtr {
 public:
  VQTabs() = default;
  explicit VQTabs(VQUNITS units);
  VQTabs(const VQTabs&) = default;
  explicit VQTabs(VQPABDefinitionBody* body);
  VQTabs& operator=(const VQTabs&) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQTABS; }

  // Throws VQERR_BAD_SUBSCRIPT beyond the count.
  double operator[](unsigned long index) const;
  // VQERR_INVALID_PARAMETER above 32,767 twips, VQERR_TABS_FULL, VQWARN_TAB_EXISTS.
  VQSTATUS Add(const double& position, VQTABALIGNMENT alignment = VQTABALIGNMENT_LEFT);
  // VQWARN_NOT_FOUND for an absent tab.
  VQSTATUS GetAlignment(const double& position, VQTABALIGNMENT* alignment) const;
  unsigned long GetCount() const;
  VQUNITS GetUnits() const;
  VQSTATUS Remove(const double& position);
  VQSTATUS RemoveAll();
  VQSTATUS SetAlignment(const double& position, VQTABALIGNMENT alignment);
  // Replaces all tabs by the multiples of the distance, at most 20 and up to 32,760 twips; 16 where the alignment is
  // not left. VQERR_INVALID_PARAMETER below 2 or above 32,760 twips.
  VQSTATUS SetInterval(const double& distance, VQTABALIGNMENT alignment = VQTABALIGNMENT_LEFT);
  VQSTATUS SetUnits(VQUNITS units);

  VQPABDefinitionBody* GetPABDefinitionBody() const { return static_cast<VQPABDefinitionBody*>(Body); }

 private:
  CDPABDEFINITION Record() const;
  template <typename Edit>
  VQSTATUS Change(Edit edit);
};

#endif
