// The container operations on fields and subforms in a rich text, and what of both may come into one.
#include "vq/forms/fieldplaces.h"

#include <algorithm>

#include "vq/forms/formtext.h"
#include "vq/forms/vqfield.h"
#include "vq/forms/vqformb.h"
#include "vq/forms/vqsubfrm.h"
#include "vq/richtext/vqrtcont.h"
#include "vq/store/storetext.h"

namespace {

// Those that can't be read have none, and are not found.
std::string NameOf(const VQRTObjectBody& object) {
  std::string name;
  if (object.IsType(VQRTTYPE_FORM_FIELD)) {
    if (static_cast<const VQFormFieldBody&>(object).ReadName(&name) != VQ_OK) name.clear();
  } else if (object.IsType(VQRTTYPE_RT_SUBFORM)) {
    if (vq::ReadSubformName(object, &name) != VQ_OK) name.clear();
  }
  return name;
}

VQSTATUS FindNamed(VQRTContainerBody& container, VQRTTYPE type, std::string_view name, VQRTObject* found) {
  if (found == nullptr) return VQERR_NULL_POINTER;
  if (container.IsClosed()) return VQERR_OBJECT_CLOSED;
  for (VQRTObjectBody* object = container.FirstOfType(type); object != nullptr;
       object = container.NextOfType(object, type)) {
    if (name.empty() || NameOf(*object) != name) continue;
    *found = VQRTObject(object);
    return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

VQSTATUS DeleteNamed(VQRTContainerBody& container, VQRTTYPE type, const VQString& name) {
  const std::string wanted(vq::ViewOf(name));
  VQRTObject object;
  VQSTATUS found = FindNamed(container, type, wanted, &object);
  VQSTATUS status = found;
  while (found == VQ_OK && status == VQ_OK) {
    status = container.Delete(&object);
    found = FindNamed(container, type, wanted, &object);
  }
  return status;
}

// Calls `take` with each object of the type in the tree, its root included, until that gives a status.
template <typename Take>
VQSTATUS ForEach(const VQRTObjectBody& root, VQRTTYPE type, Take take) {
  if (root.IsType(type)) return take(root);
  const VQRTBaseContainerBody* container = root.AsBase();
  if (container == nullptr) return VQ_OK;
  for (const VQRTObjectBody* object = container->FirstOfType(type); object != nullptr;
       object = container->NextOfType(object, type)) {
    if (VQSTATUS status = take(*object)) return status;
  }
  return VQ_OK;
}

// The names of the type that come in, once each, and not yet there.
VQSTATUS CheckNames(const VQRTObjectBody& present, const VQRTObjectBody& incoming, VQRTTYPE type, VQSTATUS exists,
                    std::vector<std::string>* names) {
  VQSTATUS status = ForEach(incoming, type, [&](const VQRTObjectBody& object) {
    std::string name = NameOf(object);
    if (!name.empty()) names->push_back(std::move(name));
    return VQ_OK;
  });
  if (status != VQ_OK || names->empty()) return status;
  std::sort(names->begin(), names->end());
  if (std::adjacent_find(names->begin(), names->end()) != names->end()) return exists;
  return ForEach(present, type, [&](const VQRTObjectBody& object) {
    return std::binary_search(names->begin(), names->end(), NameOf(object)) ? exists : VQ_OK;
  });
}

bool IsOfOtherDatabase(const VQSlateBody& slate, const VQSlateBody* from) {
  return from != nullptr && from->GetDatabaseBody() != slate.GetDatabaseBody();
}

}  // namespace

VQSTATUS VQRTContainerBody::CreateFormField(const VQString& name, VQRTTYPE type, VQRTCursor* cursor,
                                            VQRTObject* created) {
  return vq::Caught([&] { return InsertAt(VQFormField(name, type), 0, created, cursor); });
}

VQSTATUS VQRTContainerBody::GetFormField(const VQString& name, VQRTObject* found) {
  return FindNamed(*this, VQRTTYPE_FORM_FIELD, vq::ViewOf(name), found);
}
VQSTATUS VQRTContainerBody::DeleteFormField(const VQString& name) {
  return DeleteNamed(*this, VQRTTYPE_FORM_FIELD, name);
}
VQSTATUS VQRTContainerBody::GetRTSubform(const VQString& name, VQRTObject* found) {
  return FindNamed(*this, VQRTTYPE_RT_SUBFORM, vq::ViewOf(name), found);
}
VQSTATUS VQRTContainerBody::DeleteRTSubform(const VQString& name) {
  return DeleteNamed(*this, VQRTTYPE_RT_SUBFORM, name);
}
VQSTATUS VQRTContainerBody::GetOLEObject(const VQString& name, VQRTObject* found) {
  return FindNamed(*this, VQRTTYPE_OLE_OBJECT, vq::ViewOf(name), found);
}
VQSTATUS VQRTContainerBody::DeleteOLEObject(const VQString& name) {
  return DeleteNamed(*this, VQRTTYPE_OLE_OBJECT, name);
}

namespace vq {

VQSTATUS AdmitFields(const VQSlateBody& slate, VQRichTextBody& text, const VQRTObjectBody& incoming,
                     const VQSlateBody* from) {
  if (text.GetNameText() != kFormBodyItem || text.GetTop() == nullptr) return VQ_OK;
  std::vector<std::string> fields, subforms;
  VQSTATUS status = CheckNames(*text.GetTop(), incoming, VQRTTYPE_FORM_FIELD, VQERR_FIELD_EXISTS, &fields);
  if (status == VQ_OK) {
    status = CheckNames(*text.GetTop(), incoming, VQRTTYPE_RT_SUBFORM, VQERR_SUBFORM_EXISTS, &subforms);
  }
  if (status != VQ_OK || fields.empty() || !IsOfOtherDatabase(slate, from)) return status;
  return ForEach(incoming, VQRTTYPE_FORM_FIELD, [](const VQRTObjectBody& field) {
    const bool shared = static_cast<const VQFormFieldBody&>(field).IsSharedField();
    return shared ? VQERR_SHARED_FIELD_OTHER_DATABASE : VQ_OK;
  });
}

}  // namespace vq

VQSTATUS VQFormBody::AdmitObjects(VQRichTextBody& text, const VQRTObjectBody& incoming, const VQSlateBody* from) {
  return vq::AdmitFields(*this, text, incoming, from);
}
VQSTATUS VQSubformBody::AdmitObjects(VQRichTextBody& text, const VQRTObjectBody& incoming, const VQSlateBody* from) {
  return vq::AdmitFields(*this, text, incoming, from);
}
