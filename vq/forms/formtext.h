// What the slates of forms, subforms and shared fields have in common: names, and the rich text $Body.
#ifndef QUILLON_VQ_FORMS_FORMTEXT_H
#define QUILLON_VQ_FORMS_FORMTEXT_H

#include <string>
#include <string_view>
#include <vector>

#include "vq/richtext/vqrtbody.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqtext.h"

namespace vq {

inline constexpr std::string_view kFormBodyItem = "$Body";
inline constexpr unsigned short kTypeFormula = 0x0600;
// Bytes of a name and its aliases, from which on they are too long.
inline constexpr std::size_t kTooLongName = 130;

// The parts of a name with synonyms; empty ones are left out behind the first.
std::vector<std::string> SplitNames(std::string_view names);
// A $TITLE value that is a list.
std::string TextListValue(const std::vector<std::string>& entries);

// The entries of a text as they are stored; none for a null one.
[[nodiscard]] VQSTATUS ReadTextEntries(const VQText& text, std::vector<std::string>* entries);

// The slate's $Body, parsed when it is looked into; the slate keeps it built. VQWARN_NOT_FOUND,
// VQERR_INCORRECT_ITEM_TYPE for an item that is no rich text.
[[nodiscard]] VQSTATUS FindBodyText(VQSlateBody* slate, VQRichTextBody** text);
[[nodiscard]] VQSTATUS FindOrMakeBodyText(VQSlateBody* slate, VQRichTextBody** text);

// VQ_OK unless a design element of the type other than `own` has one of the names: `exists`.
[[nodiscard]] VQSTATUS CheckNamesAreFree(VQDatabaseBody* database, unsigned long type, std::uint32_t own,
                                         const std::vector<std::string>& names, VQSTATUS exists);

}  // namespace vq

#endif
