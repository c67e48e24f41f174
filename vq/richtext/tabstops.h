// The tab list inside a paragraph definition record: sorted positions in twips, a two-bit alignment for each.
//
// Positions compare by absolute value and are the same within one twip. The record has room for 20 positions but for
// 16 alignments only: entries 16 to 19 are always of alignment 0.
#ifndef QUILLON_VQ_RICHTEXT_TABSTOPS_H
#define QUILLON_VQ_RICHTEXT_TABSTOPS_H

#include "engine/records.h"
#include "vq/frame/status.h"

namespace vq::tabs {

inline constexpr unsigned kMaxTabs = 20;
inline constexpr unsigned kMaxAlignments = 16;
inline constexpr long kMaxPosition = 32767;
inline constexpr long kMaxInterval = 32760;
inline constexpr unsigned kAbsent = ~0U;

// Never above kMaxTabs, whatever the record says.
unsigned Count(const CDPABDEFINITION& record);
unsigned Find(const CDPABDEFINITION& record, long position);
unsigned Alignment(const CDPABDEFINITION& record, unsigned index);

[[nodiscard]] VQSTATUS Add(CDPABDEFINITION* record, long position, unsigned alignment);
[[nodiscard]] VQSTATUS Remove(CDPABDEFINITION* record, long position);
void RemoveAll(CDPABDEFINITION* record);
[[nodiscard]] VQSTATUS SetAlignment(CDPABDEFINITION* record, long position, unsigned alignment);
// Tabs at every multiple of the distance, as many as the record can carry with that alignment.
[[nodiscard]] VQSTATUS SetInterval(CDPABDEFINITION* record, double distance, unsigned alignment);

}  // namespace vq::tabs

#endif
