// Fonts and paragraph styles for imported plain text.
#ifndef QUILLON_TOOLS_QUILLON_STYLES_H
#define QUILLON_TOOLS_QUILLON_STYLES_H

#include "vq/vq.h"

namespace tool {

// The first line with text becomes a title; lines in capitals become headings; lines that start with four spaces or
// a tab are set in Courier behind a wider margin.
void StyleText(VQRichText& body);

}  // namespace tool

#endif
