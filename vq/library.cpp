// Which body is built for what: the one place that names every subsystem.
#include "vq/forms/vqformb.h"
#include "vq/richobjects/vqrtattach.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/rtmakers.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/store/makers.h"
#include "vq/store/vqdoc.h"
#include "vq/values/vqdts.h"
#include "vq/values/vqnumber.h"
#include "vq/values/vqtext.h"
#include "vq/views/viewbody.h"

namespace vq {

namespace {

template <class Body>
VQItemBody* Make(VQSlateBody* slate, std::string_view name, const ItemPlace& place) {
  return new Body(slate, name, place);
}

template <class Body>
VQSlateBody* MakeSlate(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle) {
  return new Body(database, type, handle);
}

// The most frequent types first.
constexpr ItemMakerRow kItemRows[] = {
    {TYPE_TEXT, {}, VQCLASSID_VQTEXTBODY, Make<VQTextBody>},
    {TYPE_NUMBER, {}, VQCLASSID_VQNUMBERSBODY, Make<VQNumbersBody>},
    {TYPE_TIME, {}, VQCLASSID_VQDATETIMESBODY, Make<VQDatetimesBody>},
    {TYPE_TEXT_LIST, {}, VQCLASSID_VQTEXTBODY, Make<VQTextBody>},
    {TYPE_COMPOSITE, "$Fonts", VQCLASSID_VQFONTTABLEBODY, Make<VQFontTableBody>},
    {TYPE_COMPOSITE, {}, VQCLASSID_VQRICHTEXTBODY, Make<VQRichTextBody>},
    // Only the value tells whether it is a file.
    {TYPE_OBJECT, {}, VQCLASSID_VQSLATEITEMBODY, MakeObjectBody},
    {TYPE_NUMBER_RANGE, {}, VQCLASSID_VQNUMBERSBODY, Make<VQNumbersBody>},
    {TYPE_TIME_RANGE, {}, VQCLASSID_VQDATETIMESBODY, Make<VQDatetimesBody>},
};

constexpr ItemKindRow kKindRows[] = {
    {VQCLASSID_VQTEXT, VQCLASSID_VQTEXTBODY, TYPE_TEXT,
     []() -> VQItemBody* { return new VQTextBody(TYPE_TEXT, nullptr, 0); }},
    {VQCLASSID_VQNUMBERS, VQCLASSID_VQNUMBERSBODY, TYPE_NUMBER,
     []() -> VQItemBody* { return new VQNumbersBody(TYPE_NUMBER, nullptr, 0); }},
    {VQCLASSID_VQDATETIMES, VQCLASSID_VQDATETIMESBODY, TYPE_TIME,
     []() -> VQItemBody* { return new VQDatetimesBody(TYPE_TIME, nullptr, 0); }},
    {VQCLASSID_VQRICHTEXT, VQCLASSID_VQRICHTEXTBODY, TYPE_COMPOSITE,
     []() -> VQItemBody* { return new VQRichTextBody(); }},
    {VQCLASSID_VQFONTTABLE, VQCLASSID_VQFONTTABLEBODY, TYPE_COMPOSITE,
     []() -> VQItemBody* { return new VQFontTableBody(); }},
    {VQCLASSID_VQATTACHMENT, VQCLASSID_VQATTACHMENTBODY, TYPE_OBJECT, nullptr},
};

constexpr std::uint16_t kDocumentClasses = VQSLATECLASS_DOCUMENT | VQSLATECLASS_INFO | VQSLATECLASS_HELP;

constexpr SlateMakerRow kSlateRows[] = {
    {kDocumentClasses, 0, VQCLASSID_VQDOCUMENTBODY, MakeSlate<VQDocumentBody>},
    {VQSLATECLASS_FORM, VQDESIGNKIND_FORM, VQCLASSID_VQFORMBODY, MakeSlate<VQFormBody>},
    {VQSLATECLASS_FORM, VQDESIGNKIND_SUBFORM, VQCLASSID_VQSUBFORMBODY, MakeSlate<VQSubformBody>},
    {VQSLATECLASS_FIELD, 0, VQCLASSID_VQSHAREDFIELDBODY, MakeSlate<VQSharedFieldBody>},
    {VQSLATECLASS_VIEW, VQDESIGNKIND_VIEW, VQCLASSID_VQVIEWFOLDERBODY, MakeSlate<VQViewFolderBody>},
};

template <class Body>
VQRTElementBody* MakeElement(VQRTTYPE type, RecordSource* source, std::uint32_t offset, std::uint32_t length) {
  return new Body(type, source, offset, length);
}

constexpr RTElementRow kElementRows[] = {
    {VQRTTYPE_ATTACHMENT, MakeElement<VQRTAttachmentBody>},
    {VQRTTYPE_EMBEDDED_OBJECT, MakeElement<VQRTEmbeddedObjectBody>},
    {VQRTTYPE_FORM_FIELD, MakeElement<VQFormFieldBody>},
};

}  // namespace

constexpr std::span<const ItemMakerRow> kItemMakers(kItemRows);
constexpr std::span<const ItemKindRow> kItemKinds(kKindRows);
constexpr std::span<const SlateMakerRow> kSlateMakers(kSlateRows);
constexpr std::span<const RTElementRow> kRTElementMakers(kElementRows);

}  // namespace vq
