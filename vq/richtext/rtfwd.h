// Names of the rich text classes, for headers that only point at them.
#ifndef QUILLON_VQ_RICHTEXT_RTFWD_H
#define QUILLON_VQ_RICHTEXT_RTFWD_H

#include "vq/frame/vqcommon.h"

// handles
class VQAttachment;
class VQCompositeData;
class VQFontStyle;
class VQFontTable;
class VQHotspot;
class VQHotspotEnd;
class VQItem;
class VQNamedStyle;
class VQNewParagraph;
class VQPABDefinition;
class VQPABFormulaReference;
class VQPABHide;
class VQPABReference;
class VQPABStyleName;
class VQParagraphStyle;
class VQRTChar;
class VQRTContainer;
class VQRTCursor;
class VQRTElement;
class VQRTObject;
class VQRichText;
class VQSlate;
class VQString;
class VQStylizedText;
class VQTable;
class VQTableCell;
class VQTabs;

namespace vq {
class Edit;
}

// bodies
class VQFontStyleBody;
class VQFontTableBody;
class VQRTBaseContainerBody;
class VQRTContainerBody;
class VQRTCursorBody;
class VQRTElementBody;
class VQRTObjectBody;
class VQRichTextBody;
class VQSlateBody;
class VQStylizedTextBody;
class VQTableBody;
class VQTableCellBody;

struct VQRTSelection;

// How much a copy of an object takes along.
enum VQRTCOPYOPTIONS : unsigned int {
  VQRTCOPYOPTIONS_SHALLOW = 0,     // the object's own bytes; children and links dropped
  VQRTCOPYOPTIONS_KEEP_LINKS = 1,  // the bytes replaced in place; parent, siblings and children stay
  VQRTCOPYOPTIONS_DEEP = 2         // as SHALLOW, with a copy of every child
};

// Bounds of the numbers that order the objects of a tree.
inline constexpr unsigned long VQRT_MIN_INDEX_VALUE = 1;
inline constexpr unsigned long VQRT_MAX_INDEX_VALUE = 4000000000UL;
// What an object outside a tree holds.
inline constexpr unsigned long VQRT_DETACHED_INDEX_VALUE = 4000000001UL;

// Search options of cursors: the comparison bits of engine/text.h, and this one, with which a forward search
// also finds a match that starts at the cursor itself.
inline constexpr unsigned long VQRTSEARCH_IGNORE_CASE = 0x0001;
inline constexpr unsigned long VQRTSEARCH_IGNORE_ACCENTS = 0x0002;
inline constexpr unsigned long VQRTSEARCH_FROM_CURSOR = 0x0100;

#endif
