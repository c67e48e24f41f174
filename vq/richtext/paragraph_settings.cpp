#include "vq/richtext/paragraph_settings.h"

#include <algorithm>
#include <tuple>

#include "vq/richtext/tabstops.h"

namespace vq::paragraph {

namespace {

bool InRange(long twips) { return twips >= 0 && twips <= VQ_MAX_MARGIN_TWIPS; }

void Normalize(CDPABDEFINITION* record) {
  if (record->Flags & PABFLAG_HIDE_UNLINK) return;
  if (record->Flags & PABFLAG_HIDE_READING) record->Flags |= PABFLAG_HIDE_READING_PREVIEW;
  if (record->Flags & PABFLAG_HIDE_EDITING) record->Flags |= PABFLAG_HIDE_EDITING_PREVIEW;
  record->Flags |= PABFLAG_HIDE_UNLINK;
}

auto Settings(const CDPABDEFINITION& r) {
  return std::tie(r.JustifyMode, r.LineSpacing, r.SpacingAbove, r.SpacingBelow, r.LeftMargin, r.RightMargin,
                  r.FirstLineMargin, r.TabCount, r.Flags, r.TabTypes, r.Flags2);
}

}  // namespace

VQINDENTATION Indentation(const CDPABDEFINITION& record) {
  if (record.LeftMargin == record.FirstLineMargin) return VQINDENTATION_NONE;
  return record.LeftMargin > record.FirstLineMargin ? VQINDENTATION_OUTDENT : VQINDENTATION_INDENT;
}

VQSTATUS SetIndentation(CDPABDEFINITION* record, VQINDENTATION mode, long indentation) {
  long first = record->LeftMargin;
  if (mode == VQINDENTATION_INDENT) first += indentation;
  if (mode == VQINDENTATION_OUTDENT) first -= indentation;
  if (!InRange(first)) return VQERR_PARAGRAPH_MARGIN;
  record->FirstLineMargin = static_cast<uint16_t>(first);
  return VQ_OK;
}

VQSTATUS SetLeftMargin(CDPABDEFINITION* record, long twips, long indentation) {
  if (!InRange(twips)) return VQERR_INVALID_PARAMETER;
  CDPABDEFINITION moved = *record;
  moved.LeftMargin = static_cast<uint16_t>(twips);
  if (VQSTATUS status = SetIndentation(&moved, Indentation(*record), indentation)) return status;
  *record = moved;
  return VQ_OK;
}

VQSTATUS SetRightMargin(CDPABDEFINITION* record, long twips) {
  if (!InRange(twips)) return VQERR_INVALID_PARAMETER;
  record->RightMargin = static_cast<uint16_t>(twips);
  return VQ_OK;
}

VQSTATUS SetFirstLineMargin(CDPABDEFINITION* record, long twips) {
  if (!InRange(twips)) return VQERR_INVALID_PARAMETER;
  record->FirstLineMargin = static_cast<uint16_t>(twips);
  return VQ_OK;
}

bool Flag(const CDPABDEFINITION& record, unsigned short bit) {
  unsigned short mask = bit;
  bool unlinked = (record.Flags & PABFLAG_HIDE_UNLINK) != 0;
  if (bit == PABFLAG_HIDE_PRINTING) mask |= PABFLAG_HIDE_READING;
  if (bit == PABFLAG_HIDE_READING_PREVIEW && !unlinked) mask = PABFLAG_HIDE_READING;
  if (bit == PABFLAG_HIDE_EDITING_PREVIEW && !unlinked) mask = PABFLAG_HIDE_EDITING;
  return (record.Flags & mask) != 0;
}

void SetFlag(CDPABDEFINITION* record, unsigned short bit, bool on) {
  Normalize(record);
  record->Flags = static_cast<uint16_t>(on ? record->Flags | bit : record->Flags & ~bit);
  VQ_ASSERT_TEXT(record->Flags & PABFLAG_HIDE_UNLINK, "flags & PABFLAG_HIDE_UNLINK", "VQPARSTL");
}

std::uint64_t Fingerprint(const CDPABDEFINITION& record) {
  constexpr std::uint64_t kPrime = 0x100000001B3;
  std::uint64_t print = 0xCBF29CE484222325;
  const auto add = [&](std::uint64_t field) { print = (print ^ field) * kPrime; };
  std::apply([&](const auto&... fields) { (add(fields), ...); }, Settings(record));
  std::for_each(record.Tabs, record.Tabs + tabs::Count(record),
                [&](auto tab) { add(static_cast<std::uint16_t>(tab)); });
  return print;
}

bool Equal(const CDPABDEFINITION& a, const CDPABDEFINITION& b) {
  return Settings(a) == Settings(b) && std::equal(a.Tabs, a.Tabs + tabs::Count(a), b.Tabs);
}

}  // namespace vq::paragraph
