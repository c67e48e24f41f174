// VQParagraphStyle and VQNamedStyle: what clients format paragraphs with.
//
// A style is a value of its own: changing one that a text gave changes nothing in the text until it is set there again.
// Handles share; Copy makes a separate style. Margins and indentations are in the style's units and kept in twips, 0
// to 64,800. A setter on a null handle first makes a style with the defaults; getters throw
// VQERR_OBJECT_NOT_INITIALIZED on one. A setter that fails leaves the style as it was.
#ifndef QUILLON_VQ_RICHTEXT_VQPARSTL_H
#define QUILLON_VQ_RICHTEXT_VQPARSTL_H

#include "vq/richtext/font.h"
#include "vq/richtext/vqpabdef.h"
#include "vq/values/vqstring.h"

class VQNamedStyleBody;
class VQParagraphStyle;

enum VQLISTSTYLE : int {
  VQLISTSTYLE_NONE = 0,
  VQLISTSTYLE_1 = 1,
  VQLISTSTYLE_2 = 2,
};

// JustifyMode codes are the store's; this one leaves the alignment of a table cell as it is.
inline constexpr unsigned short VQALIGNMENT_NO_CHANGE = 4;

class VQ_API VQParagraphStyleBody : public VQBody {
 public:
  explicit VQParagraphStyleBody(VQUNITS units = VQUNITS_DEFAULT);
  VQCLASSID GetClassID() const override { return VQCLASSID_VQPARAGRAPHSTYLEBODY; }

  VQPABDefinitionBody& Definition() { return *PABDefinition.GetPABDefinitionBody(); }
  VQPABHide& Hide() { return PABHide; }
  // Takes definition and hide from another style, or from records in a tree.
  [[nodiscard]] VQSTATUS CopySettings(VQPABDefinitionBody* definition, VQRTObjectBody* hide);
  // Whether records of a tree hold the same settings and hide formula (null: none), whatever the identifiers.
  [[nodiscard]] VQSTATUS Compare(const VQPABDefinitionBody& definition, const VQRTObjectBody* hide, bool* equal);
  // Sets the identifier in every record of the style.
  [[nodiscard]] virtual VQSTATUS SetPABID(std::uint16_t pabid);
  // A separate style of the same class.
  virtual VQParagraphStyle Clone();

 private:
  VQPABHide PABHide;
  VQPABDefinition PABDefinition;
};

class VQ_API VQParagraphStyle : public VQSmartPtr {
 public:
  VQParagraphStyle() = default;
  VQParagraphStyle(const VQParagraphStyle&) = default;
  explicit VQParagraphStyle(VQParagraphStyleBody* body);
  // A flags word that isn't 0 must have PABFLAG_HIDE_UNLINK set, which is asserted.
  explicit VQParagraphStyle(const CDPABDEFINITION& definition, VQUNITS units = VQUNITS_DEFAULT);
  VQParagraphStyle(const CDPABDEFINITION& definition, const VQFormula& hideIf, VQUNITS units = VQUNITS_DEFAULT);
  VQParagraphStyle& operator=(const VQParagraphStyle&) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQPARAGRAPHSTYLE; }

  // Settings and hide formula alike, whatever the identifiers.
  int operator==(const VQParagraphStyle& other) const;
  int operator!=(const VQParagraphStyle& other) const { return !(*this == other); }
  int IsEqual(const VQPABDefinition& definition, const VQPABHide& hide) const;
  // A separate style with the source's settings.
  VQSTATUS Copy(const VQParagraphStyle& source);
  // Back to the defaults; units stay.
  VQSTATUS SetDefaults();

  // A code of the store, passed on unchecked.
  unsigned short GetAlignment() const;
  VQSTATUS SetAlignment(unsigned short alignment);
  CDPABDEFINITION GetCDPABDefinition() const;
  // Whole words, for bits without an operation of their own. Flags as with the constructor.
  VQSTATUS SetCDPABDefinitionFlags(unsigned short flags);
  VQSTATUS SetCDPABDefinitionFlags2(unsigned short flags);
  VQINDENTATION GetFirstLineIndentation() const;
  // VQERR_PARAGRAPH_MARGIN where the first line would leave the page's range.
  VQSTATUS SetFirstLineIndentation(VQINDENTATION mode);
  // 0 when there is no indentation.
  double GetFirstLineIndentationValue() const;
  VQSTATUS SetFirstLineIndentationValue(const double& value);
  double GetFirstLineMargin() const;
  // VQERR_INVALID_PARAMETER outside the range. Where it differs from the left margin the distance is the indentation.
  VQSTATUS SetFirstLineMargin(const double& margin);
  double GetLeftMargin() const;
  // VQERR_INVALID_PARAMETER outside the range; VQERR_PARAGRAPH_MARGIN where the first line cannot follow.
  VQSTATUS SetLeftMargin(const double& margin);
  unsigned short GetLineSpacing() const;
  VQSTATUS SetLineSpacing(unsigned short spacing);
  VQLISTSTYLE GetListStyle() const;
  VQSTATUS SetListStyle(VQLISTSTYLE style);
  // 0 stands for the page's own margin.
  double GetRightMargin() const;
  VQSTATUS SetRightMargin(const double& margin);
  unsigned short GetSpacingAbove() const;
  VQSTATUS SetSpacingAbove(unsigned short spacing);
  unsigned short GetSpacingBelow() const;
  VQSTATUS SetSpacingBelow(unsigned short spacing);
  // The list is this style's own: edits of it are edits of the style.
  VQSTATUS GetTabs(VQTabs* tabs) const;
  VQSTATUS SetTabs(const VQTabs& tabs);
  VQUNITS GetUnits() const;
  VQSTATUS SetUnits(VQUNITS units);
  int IsNamed() const;
  unsigned short GetPABID() const;

  int GetPageBreakBefore() const;
  VQSTATUS SetPageBreakBefore(int flag);
  int GetKeepParagraphsTogether() const;
  VQSTATUS SetKeepParagraphsTogether(int flag);
  int GetKeepLinesTogether() const;
  VQSTATUS SetKeepLinesTogether(int flag);
  // Any hide setter first brings the flags into the new arrangement, in which previews have bits of their own.
  int GetHideWhenReading() const;
  VQSTATUS SetHideWhenReading(int flag);
  int GetHideWhenEditing() const;
  VQSTATUS SetHideWhenEditing(int flag);
  // Also 1 for a paragraph that is hidden when reading.
  int GetHideWhenPrinting() const;
  VQSTATUS SetHideWhenPrinting(int flag);
  int GetHideWhenCopying() const;
  VQSTATUS SetHideWhenCopying(int flag);
  int GetHideWhenReadingPreview() const;
  VQSTATUS SetHideWhenReadingPreview(int flag);
  int GetHideWhenEditingPreview() const;
  VQSTATUS SetHideWhenEditingPreview(int flag);
  int GetHideFromClients() const;
  VQSTATUS SetHideFromClients(int flag);
  int GetHideFromBrowsers() const;
  VQSTATUS SetHideFromBrowsers(int flag);
  // 1 and, if asked for, the formula, or 0.
  int GetHideIfFormula(VQFormula* formula = nullptr) const;
  // A null formula takes the hide formula away. A named style has none: VQERR_INAPPROPRIATE.
  VQSTATUS SetHideIfFormula(const VQFormula& formula);

  VQParagraphStyleBody* GetParagraphStyleBody() const { return static_cast<VQParagraphStyleBody*>(Body); }

 protected:
  virtual VQParagraphStyleBody* MakeBody(VQUNITS units) const;
  VQParagraphStyleBody& Ready();
  VQParagraphStyleBody& Checked() const;

 private:
  CDPABDEFINITION Record() const;
  template <typename Edit>
  VQSTATUS Change(Edit edit);
  VQSTATUS SetWord(unsigned short CDPABDEFINITION::*field, unsigned short value);
  int Flag(unsigned short bit) const;
  VQSTATUS SetFlag(unsigned short bit, int on);
};

class VQ_API VQNamedStyleBody : public VQParagraphStyleBody {
 public:
  VQNamedStyleBody();
  VQCLASSID GetClassID() const override { return VQCLASSID_VQNAMEDSTYLEBODY; }
  VQPABStyleNameBody& StyleName() { return *PABStyleName.GetPABStyleNameBody(); }
  [[nodiscard]] VQSTATUS SetPABID(std::uint16_t pabid) override;
  VQParagraphStyle Clone() override;
  // The same with name, flags and font.
  [[nodiscard]] VQSTATUS CompareNamed(const VQPABDefinitionBody& definition, const VQPABStyleNameBody& name,
                                      bool* equal);
  // Takes name, flags and font from a record.
  [[nodiscard]] VQSTATUS CopyName(VQPABStyleNameBody* name);

 private:
  VQPABStyleName PABStyleName;
};

// A paragraph style with a name of at most 35 bytes and, if set, a font. Setting one on a range redefines the style of
// that name wherever the text uses it.
class VQ_API VQNamedStyle : public VQParagraphStyle {
 public:
  VQNamedStyle() = default;
  explicit VQNamedStyle(const VQString& name);
  VQNamedStyle(const VQString& name, const VQParagraphStyle& style);
  VQNamedStyle(const VQString& name, const VQParagraphStyle& style, const VQFontStyle& font);
  // A named style is shared; a plain one gives its settings to a new style "NoName".
  VQNamedStyle(const VQParagraphStyle& style);
  VQNamedStyle(const VQNamedStyle&) = default;
  explicit VQNamedStyle(VQNamedStyleBody* body);
  VQNamedStyle& operator=(const VQNamedStyle&) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQNAMEDSTYLE; }

  // From a plain style the settings alone: name and font stay. VQERR_INAPPROPRIATE, here and in Redefine, for settings
  // with a hide formula, which a named style cannot have.
  VQSTATUS Copy(const VQParagraphStyle& source);
  // The settings of any style; name and font stay.
  VQSTATUS Redefine(const VQParagraphStyle& style);
  // Default settings, no font; the name stays.
  VQSTATUS SetDefaults();
  int IsEqual(const VQPABDefinition& definition, const VQPABStyleName& name) const;

  VQString GetName() const;
  // Cut to 35 bytes between characters. VQERR_NULL_STRING for an empty one.
  VQSTATUS SetName(const VQString& name);
  // Empty when the style belongs to no user.
  VQString GetUserName() const;
  VQSTATUS AssignToCycleList();
  VQSTATUS RemoveFromCycleList();
  int IsOnCycleList() const;
  int GetIsAvailableToAllDocuments() const;
  // A style that is made available gets the current user's name.
  VQSTATUS SetIsAvailableToAllDocuments(int flag);
  int HasFontStyle() const;
  // VQWARN_NOT_FOUND when the style has no font. The font is the style's own: edits of it are edits of the style.
  VQSTATUS GetFontStyle(VQFontStyle* style) const;
  // A null font takes it away.
  VQSTATUS SetFontStyle(const VQFontStyle& style);

  VQNamedStyleBody* GetNamedStyleBody() const;

 protected:
  VQParagraphStyleBody* MakeBody(VQUNITS units) const override;

 private:
  VQNamedStyleBody& Named() const;
  VQNamedStyleBody& ReadyNamed();
  VQSTATUS SetOnCycleList(int on);
};

#endif
