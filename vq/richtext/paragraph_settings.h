// Rules of the paragraph definition record that need no object: margins that follow one another, hide flags in two
// arrangements, comparison.
#ifndef QUILLON_VQ_RICHTEXT_PARAGRAPH_SETTINGS_H
#define QUILLON_VQ_RICHTEXT_PARAGRAPH_SETTINGS_H

#include "vq/richtext/vqpabdef.h"

namespace vq::paragraph {

VQINDENTATION Indentation(const CDPABDEFINITION& record);

// Each changes the record only when it succeeds.
[[nodiscard]] VQSTATUS SetLeftMargin(CDPABDEFINITION* record, long twips, long indentation);
[[nodiscard]] VQSTATUS SetRightMargin(CDPABDEFINITION* record, long twips);
[[nodiscard]] VQSTATUS SetFirstLineMargin(CDPABDEFINITION* record, long twips);
[[nodiscard]] VQSTATUS SetIndentation(CDPABDEFINITION* record, VQINDENTATION mode, long indentation);

// Whether a flag reads as set; hide flags by the arrangement that the record is in.
bool Flag(const CDPABDEFINITION& record, unsigned short bit);
// Brings the hide flags into the new arrangement first.
void SetFlag(CDPABDEFINITION* record, unsigned short bit, bool on);

// Alike apart from identifiers, headers and unused tab entries.
bool Equal(const CDPABDEFINITION& a, const CDPABDEFINITION& b);
// The same number for records that are equal.
std::uint64_t Fingerprint(const CDPABDEFINITION& record);

}  // namespace vq::paragraph

#endif
