#include "vq/richtext/vqparstl.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "vq/automation/vqformula.h"
#include "vq/richtext/paragraph_settings.h"
#include "vq/richtext/tabstops.h"

namespace paragraph = vq::paragraph;

namespace {

void AssertFlags(unsigned short flags) {
  VQ_ASSERT_TEXT(flags == 0 || (flags & PABFLAG_HIDE_UNLINK) != 0, "flags & PABFLAG_HIDE_UNLINK", "VQPARSTL");
}

// The code of a hide record; empty when there is none.
VQSTATUS CodeOf(const VQRTObjectBody* hide, std::string* code) {
  code->clear();
  return hide == nullptr ? VQ_OK : vq::ReadHideFormula(*hide, code);
}

}  // namespace

VQParagraphStyleBody::VQParagraphStyleBody(VQUNITS units) : PABDefinition(new VQPABDefinitionBody(units)) {}

VQSTATUS VQParagraphStyleBody::CopySettings(VQPABDefinitionBody* definition, VQRTObjectBody* hide) {
  VQPABHide formula;
  if (hide != nullptr) {
    VQRTObject copy = vq::MakePABHide(0);
    if (VQSTATUS status = copy.GetRTObjectBody()->Copy(hide, VQRTCOPYOPTIONS_SHALLOW)) return status;
    formula = copy;
  }
  // In place: handles on the style's tabs are handles on this record.
  if (VQSTATUS status = Definition().Copy(definition, VQRTCOPYOPTIONS_SHALLOW)) return status;
  PABHide = formula;
  return VQ_OK;
}

VQSTATUS VQParagraphStyleBody::Compare(const VQPABDefinitionBody& definition, const VQRTObjectBody* hide, bool* equal) {
  CDPABDEFINITION own{}, other{};
  if (VQSTATUS status = Definition().GetRecord(&own)) return status;
  if (VQSTATUS status = definition.GetRecord(&other)) return status;
  std::string ownCode, otherCode;
  if (VQSTATUS status = CodeOf(PABHide.GetRTObjectBody(), &ownCode)) return status;
  if (VQSTATUS status = CodeOf(hide, &otherCode)) return status;
  *equal = paragraph::Equal(own, other) && ownCode == otherCode;
  return VQ_OK;
}

VQSTATUS VQParagraphStyleBody::SetPABID(std::uint16_t pabid) {
  if (VQSTATUS status = vq::WritePABIDs(Definition(), {pabid, pabid})) return status;
  return PABHide.IsNull() ? VQ_OK : vq::WritePABIDs(*PABHide.GetRTObjectBody(), {pabid, pabid});
}

VQParagraphStyle VQParagraphStyleBody::Clone() {
  VQParagraphStyleBody* body = new VQParagraphStyleBody;
  VQParagraphStyle copy(body);
  vq::ThrowIfError(body->CopySettings(&Definition(), PABHide.GetRTObjectBody()));
  return copy;
}

VQParagraphStyle::VQParagraphStyle(VQParagraphStyleBody* body) : VQSmartPtr(body) {}

VQParagraphStyle::VQParagraphStyle(const CDPABDEFINITION& definition, VQUNITS units) {
  AssertFlags(definition.Flags);
  VQSmartPtr::operator=(new VQParagraphStyleBody(units));
  VQPABDefinitionBody& body = GetParagraphStyleBody()->Definition();
  vq::ThrowIfError(body.SetRecord(definition));
  body.SetIndentation(static_cast<std::uint16_t>(std::abs(definition.FirstLineMargin - definition.LeftMargin)));
}

VQParagraphStyle::VQParagraphStyle(const CDPABDEFINITION& definition, const VQFormula& hideIf, VQUNITS units)
    : VQParagraphStyle(definition, units) {
  vq::ThrowIfError(SetHideIfFormula(hideIf));
}

VQParagraphStyleBody* VQParagraphStyle::MakeBody(VQUNITS units) const { return new VQParagraphStyleBody(units); }

VQParagraphStyleBody& VQParagraphStyle::Ready() {
  if (Body == nullptr) VQSmartPtr::operator=(MakeBody(VQUNITS_DEFAULT));
  return *GetParagraphStyleBody();
}

VQParagraphStyleBody& VQParagraphStyle::Checked() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return *GetParagraphStyleBody();
}

CDPABDEFINITION VQParagraphStyle::Record() const {
  CDPABDEFINITION record{};
  vq::ThrowIfError(Checked().Definition().GetRecord(&record));
  return record;
}

// Edits a copy of the record and stores it where that succeeded.
template <typename Edit>
VQSTATUS VQParagraphStyle::Change(Edit edit) {
  VQPABDefinitionBody& body = Ready().Definition();
  CDPABDEFINITION record{};
  if (VQSTATUS status = body.GetRecord(&record)) return vq::Apply(status);
  if (VQSTATUS status = edit(record, body)) return vq::Apply(status);
  return vq::Apply(body.SetRecord(record));
}

VQSTATUS VQParagraphStyle::SetWord(unsigned short CDPABDEFINITION::*field, unsigned short value) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody&) {
    record.*field = value;
    return VQ_OK;
  });
}

int VQParagraphStyle::Flag(unsigned short bit) const { return paragraph::Flag(Record(), bit); }

VQSTATUS VQParagraphStyle::SetFlag(unsigned short bit, int on) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody&) {
    paragraph::SetFlag(&record, bit, on != 0);
    return VQ_OK;
  });
}

int VQParagraphStyle::IsEqual(const VQPABDefinition& definition, const VQPABHide& hide) const {
  VQParagraphStyleBody& body = Checked();
  if (definition.IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  bool equal = false;
  vq::ThrowIfError(body.Compare(*definition.GetPABDefinitionBody(), hide.GetRTObjectBody(), &equal));
  return equal;
}

int VQParagraphStyle::operator==(const VQParagraphStyle& other) const {
  if (Body == other.Body) return 1;
  if (Body == nullptr || other.Body == nullptr) return 0;
  VQParagraphStyleBody& body = *other.GetParagraphStyleBody();
  return IsEqual(VQPABDefinition(&body.Definition()), body.Hide());
}

VQSTATUS VQParagraphStyle::Copy(const VQParagraphStyle& source) {
  if (source.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (source.Body == Body) return VQ_OK;
  VQParagraphStyleBody& other = *source.GetParagraphStyleBody();
  VQParagraphStyleBody* body = MakeBody(other.Definition().GetUnits());
  VQParagraphStyle made(body);
  if (VQSTATUS status = body->CopySettings(&other.Definition(), other.Hide().GetRTObjectBody())) {
    return vq::Apply(status);
  }
  VQSmartPtr::operator=(body);
  return VQ_OK;
}

VQSTATUS VQParagraphStyle::SetDefaults() {
  VQParagraphStyleBody& body = Ready();
  VQPABDefinition defaults(new VQPABDefinitionBody(body.Definition().GetUnits()));
  defaults.GetPABDefinitionBody()->SetTabUnits(body.Definition().GetTabUnits());
  unsigned short pabid = GetPABID();
  if (VQSTATUS status = body.CopySettings(defaults.GetPABDefinitionBody(), nullptr)) return vq::Apply(status);
  return vq::Apply(body.SetPABID(pabid));
}

unsigned short VQParagraphStyle::GetAlignment() const { return Record().JustifyMode; }
VQSTATUS VQParagraphStyle::SetAlignment(unsigned short alignment) {
  return SetWord(&CDPABDEFINITION::JustifyMode, alignment);
}
CDPABDEFINITION VQParagraphStyle::GetCDPABDefinition() const { return Record(); }

VQSTATUS VQParagraphStyle::SetCDPABDefinitionFlags(unsigned short flags) {
  AssertFlags(flags);
  return SetWord(&CDPABDEFINITION::Flags, flags);
}
VQSTATUS VQParagraphStyle::SetCDPABDefinitionFlags2(unsigned short flags) {
  return SetWord(&CDPABDEFINITION::Flags2, flags);
}

VQINDENTATION VQParagraphStyle::GetFirstLineIndentation() const { return paragraph::Indentation(Record()); }

VQSTATUS VQParagraphStyle::SetFirstLineIndentation(VQINDENTATION mode) {
  if (static_cast<unsigned>(mode) > VQINDENTATION_OUTDENT) return vq::Apply(VQERR_INVALID_PARAMETER);
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    long indentation = body.GetIndentation();
    VQSTATUS status = paragraph::SetIndentation(&record, mode, indentation);
    // Kept here, since margins that are equal no longer tell it.
    if (status == VQ_OK) body.SetIndentation(static_cast<std::uint16_t>(indentation));
    return status;
  });
}

double VQParagraphStyle::GetFirstLineIndentationValue() const {
  if (GetFirstLineIndentation() == VQINDENTATION_NONE) return 0;
  return vq::FromTwips(Checked().Definition().GetIndentation(), GetUnits());
}

VQSTATUS VQParagraphStyle::SetFirstLineIndentationValue(const double& value) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    long twips = vq::ToTwips(value, body.GetUnits());
    if (twips < 0 || twips > VQ_MAX_MARGIN_TWIPS) return VQERR_INVALID_PARAMETER;
    VQSTATUS status = paragraph::SetIndentation(&record, paragraph::Indentation(record), twips);
    if (status == VQ_OK) body.SetIndentation(static_cast<std::uint16_t>(twips));
    return status;
  });
}

double VQParagraphStyle::GetFirstLineMargin() const { return vq::FromTwips(Record().FirstLineMargin, GetUnits()); }
VQSTATUS VQParagraphStyle::SetFirstLineMargin(const double& margin) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    const long twips = vq::ToTwips(margin, body.GetUnits());
    if (VQSTATUS status = paragraph::SetFirstLineMargin(&record, twips)) return status;
    const long indentation = std::labs(twips - record.LeftMargin);
    body.SetIndentation(indentation == 0 ? body.GetIndentation() : static_cast<std::uint16_t>(indentation));
    return VQSTATUS{VQ_OK};
  });
}
double VQParagraphStyle::GetLeftMargin() const { return vq::FromTwips(Record().LeftMargin, GetUnits()); }
VQSTATUS VQParagraphStyle::SetLeftMargin(const double& margin) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    long indentation = body.GetIndentation();
    VQSTATUS status = paragraph::SetLeftMargin(&record, vq::ToTwips(margin, body.GetUnits()), indentation);
    if (status == VQ_OK) body.SetIndentation(static_cast<std::uint16_t>(indentation));
    return status;
  });
}
double VQParagraphStyle::GetRightMargin() const { return vq::FromTwips(Record().RightMargin, GetUnits()); }
VQSTATUS VQParagraphStyle::SetRightMargin(const double& margin) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    return paragraph::SetRightMargin(&record, vq::ToTwips(margin, body.GetUnits()));
  });
}
unsigned short VQParagraphStyle::GetLineSpacing() const { return Record().LineSpacing; }
VQSTATUS VQParagraphStyle::SetLineSpacing(unsigned short spacing) {
  return SetWord(&CDPABDEFINITION::LineSpacing, spacing);
}
unsigned short VQParagraphStyle::GetSpacingAbove() const { return Record().SpacingAbove; }
VQSTATUS VQParagraphStyle::SetSpacingAbove(unsigned short spacing) {
  return SetWord(&CDPABDEFINITION::SpacingAbove, spacing);
}
unsigned short VQParagraphStyle::GetSpacingBelow() const { return Record().SpacingBelow; }
VQSTATUS VQParagraphStyle::SetSpacingBelow(unsigned short spacing) {
  return SetWord(&CDPABDEFINITION::SpacingBelow, spacing);
}

VQLISTSTYLE VQParagraphStyle::GetListStyle() const {
  if (Flag(PABFLAG_LIST_STYLE_1)) return VQLISTSTYLE_1;
  return Flag(PABFLAG_LIST_STYLE_2) ? VQLISTSTYLE_2 : VQLISTSTYLE_NONE;
}

VQSTATUS VQParagraphStyle::SetListStyle(VQLISTSTYLE style) {
  if (static_cast<unsigned>(style) > VQLISTSTYLE_2) return vq::Apply(VQERR_INVALID_PARAMETER);
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody&) {
    paragraph::SetFlag(&record, PABFLAG_LIST_STYLE_1, style == VQLISTSTYLE_1);
    paragraph::SetFlag(&record, PABFLAG_LIST_STYLE_2, style == VQLISTSTYLE_2);
    return VQ_OK;
  });
}

VQSTATUS VQParagraphStyle::GetTabs(VQTabs* tabs) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (tabs == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  *tabs = VQTabs(&GetParagraphStyleBody()->Definition());
  return VQ_OK;
}

VQSTATUS VQParagraphStyle::SetTabs(const VQTabs& tabs) {
  if (tabs.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  CDPABDEFINITION source{};
  if (VQSTATUS status = tabs.GetPABDefinitionBody()->GetRecord(&source)) return vq::Apply(status);
  VQUNITS units = tabs.GetUnits();
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    std::copy(std::begin(source.Tabs), std::end(source.Tabs), record.Tabs);
    record.TabCount = source.TabCount;
    record.TabTypes = source.TabTypes;
    body.SetTabUnits(units);
    return VQ_OK;
  });
}

VQUNITS VQParagraphStyle::GetUnits() const { return Checked().Definition().GetUnits(); }
VQSTATUS VQParagraphStyle::SetUnits(VQUNITS units) {
  if (static_cast<unsigned>(units) > VQUNITS_DEFAULT) return vq::Apply(VQERR_INVALID_PARAMETER);
  Ready().Definition().SetUnits(units);
  return VQ_OK;
}

int VQParagraphStyle::IsNamed() const { return Body != nullptr && Body->GetClassID() == VQCLASSID_VQNAMEDSTYLEBODY; }
unsigned short VQParagraphStyle::GetPABID() const { return Record().PABID; }

int VQParagraphStyle::GetPageBreakBefore() const { return Flag(PABFLAG_PAGE_BREAK_BEFORE); }
VQSTATUS VQParagraphStyle::SetPageBreakBefore(int flag) { return SetFlag(PABFLAG_PAGE_BREAK_BEFORE, flag); }
int VQParagraphStyle::GetKeepParagraphsTogether() const { return Flag(PABFLAG_KEEP_PARAGRAPHS); }
VQSTATUS VQParagraphStyle::SetKeepParagraphsTogether(int flag) { return SetFlag(PABFLAG_KEEP_PARAGRAPHS, flag); }
int VQParagraphStyle::GetKeepLinesTogether() const { return Flag(PABFLAG_KEEP_LINES); }
VQSTATUS VQParagraphStyle::SetKeepLinesTogether(int flag) { return SetFlag(PABFLAG_KEEP_LINES, flag); }
int VQParagraphStyle::GetHideWhenReading() const { return Flag(PABFLAG_HIDE_READING); }
VQSTATUS VQParagraphStyle::SetHideWhenReading(int flag) { return SetFlag(PABFLAG_HIDE_READING, flag); }
int VQParagraphStyle::GetHideWhenEditing() const { return Flag(PABFLAG_HIDE_EDITING); }
VQSTATUS VQParagraphStyle::SetHideWhenEditing(int flag) { return SetFlag(PABFLAG_HIDE_EDITING, flag); }
int VQParagraphStyle::GetHideWhenPrinting() const { return Flag(PABFLAG_HIDE_PRINTING); }
VQSTATUS VQParagraphStyle::SetHideWhenPrinting(int flag) { return SetFlag(PABFLAG_HIDE_PRINTING, flag); }
int VQParagraphStyle::GetHideWhenCopying() const { return Flag(PABFLAG_HIDE_COPYING); }
VQSTATUS VQParagraphStyle::SetHideWhenCopying(int flag) { return SetFlag(PABFLAG_HIDE_COPYING, flag); }
int VQParagraphStyle::GetHideWhenReadingPreview() const { return Flag(PABFLAG_HIDE_READING_PREVIEW); }
VQSTATUS VQParagraphStyle::SetHideWhenReadingPreview(int flag) { return SetFlag(PABFLAG_HIDE_READING_PREVIEW, flag); }
int VQParagraphStyle::GetHideWhenEditingPreview() const { return Flag(PABFLAG_HIDE_EDITING_PREVIEW); }
VQSTATUS VQParagraphStyle::SetHideWhenEditingPreview(int flag) { return SetFlag(PABFLAG_HIDE_EDITING_PREVIEW, flag); }
int VQParagraphStyle::GetHideFromClients() const { return Flag(PABFLAG_HIDE_FROM_CLIENTS); }
VQSTATUS VQParagraphStyle::SetHideFromClients(int flag) { return SetFlag(PABFLAG_HIDE_FROM_CLIENTS, flag); }

int VQParagraphStyle::GetHideFromBrowsers() const { return (Record().Flags2 & PABFLAG2_HIDE_FROM_BROWSERS) != 0; }
VQSTATUS VQParagraphStyle::SetHideFromBrowsers(int flag) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody&) {
    unsigned bits = flag ? record.Flags2 | PABFLAG2_HIDE_FROM_BROWSERS : record.Flags2 & ~PABFLAG2_HIDE_FROM_BROWSERS;
    record.Flags2 = static_cast<uint16_t>(bits);
    return VQ_OK;
  });
}

int VQParagraphStyle::GetHideIfFormula(VQFormula* formula) const {
  if (!Flag(PABFLAG_HIDE_IF_FORMULA) || Checked().Hide().IsNull()) return 0;
  if (formula != nullptr) vq::ThrowIfError(Checked().Hide().GetFormula(formula));
  return 1;
}

VQSTATUS VQParagraphStyle::SetHideIfFormula(const VQFormula& formula) {
  VQParagraphStyleBody& body = Ready();
  if (formula.IsNull()) {
    VQSTATUS status = SetFlag(PABFLAG_HIDE_IF_FORMULA, 0);
    if (status == VQ_OK) body.Hide() = VQPABHide();
    return status;
  }
  if (IsNamed()) return vq::Apply(VQERR_INAPPROPRIATE);
  unsigned short pabid = GetPABID();
  VQPABHide hide;
  if (VQSTATUS status = hide.SetFormula(formula)) return status;
  if (VQSTATUS status = hide.SetPABID(pabid)) return status;
  VQSTATUS status = SetFlag(PABFLAG_HIDE_IF_FORMULA, 1);
  if (status == VQ_OK) body.Hide() = hide;
  return status;
}
