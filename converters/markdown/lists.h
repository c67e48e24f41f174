// Lists whose items cannot stand without space in Markdown.
#ifndef QUILLON_CONVERTERS_MARKDOWN_LISTS_H
#define QUILLON_CONVERTERS_MARKDOWN_LISTS_H

#include <cmark.h>

namespace conv {

// Puts space between the items of lists where, without empty lines, one block would be read as part of the one before
// it: a further paragraph, or a table behind a text. Gives how many lists those are.
unsigned MakeListsReadable(cmark_node* document);

}  // namespace conv

#endif
