// Fields and subforms that come into the rich text of a form.
#ifndef QUILLON_VQ_FORMS_FIELDPLACES_H
#define QUILLON_VQ_FORMS_FIELDPLACES_H

#include <string_view>

#include "vq/richtext/vqrtbody.h"
#include "vq/store/vqslate.h"

namespace vq {

// Levels of subforms that count; what is deeper is not looked at.
inline constexpr unsigned kDeepestSubform = 8;

// Whether the slate's $Body takes what comes from a rich text of `from`, null for one that stands alone.
// VQERR_FIELD_EXISTS, VQERR_SUBFORM_EXISTS, VQERR_SHARED_FIELD_OTHER_DATABASE. Fields that subforms bring are not asked
// for: those count in forms alone.
[[nodiscard]] VQSTATUS AdmitFields(const VQSlateBody& slate, VQRichTextBody& text, const VQRTObjectBody& incoming,
                                   const VQSlateBody* from);

// VQERR_FIELD_EXISTS when a field of the text other than `own` has the name.
[[nodiscard]] VQSTATUS CheckFieldNames(VQRichTextBody& text, std::string_view name, const VQRTObjectBody& own);

}  // namespace vq

#endif
