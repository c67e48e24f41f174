// Emphasis that CommonMark's delimiters cannot tell.
#ifndef QUILLON_CONVERTERS_MARKDOWN_EMPHASIS_H
#define QUILLON_CONVERTERS_MARKDOWN_EMPHASIS_H

#include <cmark.h>

namespace conv {

// Moves spaces at the ends of emphasis out of it, and puts tags in the place of emphasis whose delimiters would not be
// read as such: next to other delimiters, or between letters and punctuation.
void MakeEmphasisReadable(cmark_node* document);

}  // namespace conv

#endif
