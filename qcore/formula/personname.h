// Hierarchical names: "CN=Ada King/OU=Engines/O=Analytics/C=GB", or the same without its labels.
#ifndef QUILLON_QCORE_FORMULA_PERSONNAME_H
#define QUILLON_QCORE_FORMULA_PERSONNAME_H

#include <string>
#include <string_view>
#include <vector>

namespace qcore::formula {

struct NamePart {
  std::string label;  // upper case
  std::string_view text;
};

// Parts without a label get theirs by place: CN first, C last if it has two letters and there are three parts or more,
// O in front of it, OU between. A name without '/' and '=' is a CN alone.
std::vector<NamePart> ReadName(std::string_view name);
// What a keyword of @Name asks for: a part by its label (OU1 is the one nearest to the organisation), ABBREVIATE,
// CANONICALIZE, HIERARCHYONLY or TOKEYWORD.
std::string NameAs(std::string_view name, std::string_view keyword);

}  // namespace qcore::formula

#endif
