// The container operations on fields and subforms in a rich text, and what of both may come into one.
#include "vq/forms/fieldplaces.h"

#include <algorithm>
#include <functional>

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

using SubformOpener = std::function<VQSTATUS(VQSubform*)>;

struct SubformNames {
  VQDatabaseBody* Database;
  const SubformOpener& Opener;
  std::vector<unsigned long> Seen;  // each brings its fields once
  std::vector<std::string> Fields;

  // Of the subforms in a tree. One that can't be read brings none.
  void Add(const VQRTObjectBody& root, unsigned depth) {
    static_cast<void>(ForEach(root, VQRTTYPE_RT_SUBFORM, [&](const VQRTObjectBody& place) {
      VQSubform subform;
      VQRichTextBody* text = nullptr;
      const VQSTATUS found = vq::Caught([&] { return Open(place, &subform, &text); });
      if (found == VQ_OK) AddFields(*text->GetTop());
      if (found == VQ_OK && depth + 1 < vq::kDeepestSubform) Add(*text->GetTop(), depth + 1);
      return VQ_OK;
    }));
  }

 private:
  VQSTATUS Open(const VQRTObjectBody& place, VQSubform* subform, VQRichTextBody** text) {
    if (VQSTATUS status = vq::FindSubformIn(Database, place, subform)) return status;
    const unsigned long id = subform->GetSlateID();
    if (std::find(Seen.begin(), Seen.end(), id) != Seen.end()) return VQWARN_NOT_FOUND;
    Seen.push_back(id);
    if (VQSTATUS status = Opener(subform)) return status;
    if (VQSTATUS status = vq::FindBodyText(subform->GetSlateBody(), text)) return status;
    return (*text)->Initialize();
  }
  // A name that stands twice in one of them counts once.
  void AddFields(const VQRTObjectBody& root) {
    std::vector<std::string> own;
    static_cast<void>(ForEach(root, VQRTTYPE_FORM_FIELD, [&](const VQRTObjectBody& field) {
      own.push_back(NameOf(field));
      return VQ_OK;
    }));
    std::sort(own.begin(), own.end());
    own.erase(std::unique(own.begin(), own.end()), own.end());
    for (std::string& name : own) {
      if (!name.empty()) Fields.push_back(std::move(name));
    }
  }
};

bool HasAny(const VQRTObjectBody& root, VQRTTYPE type) {
  return ForEach(root, type, [](const VQRTObjectBody&) { return VQWARN_NOT_FOUND; }) != VQ_OK;
}

// Fields that subforms bring count as the form's own.
VQSTATUS CheckSubformFields(VQDatabaseBody* database, const SubformOpener& open, const VQRTObjectBody& present,
                            const VQRTObjectBody& incoming) {
  if (!HasAny(incoming, VQRTTYPE_FORM_FIELD) && !HasAny(incoming, VQRTTYPE_RT_SUBFORM)) return VQ_OK;
  SubformNames names{database, open, {}, {}};
  names.Add(present, 0);
  const std::vector<std::string> there = std::move(names.Fields);
  names.Fields.clear();
  names.Add(incoming, 0);
  std::vector<std::string>& coming = names.Fields;
  if (there.empty() && coming.empty()) return VQ_OK;
  const auto add = [&](const VQRTObjectBody& field) {
    std::string name = NameOf(field);
    if (!name.empty()) coming.push_back(std::move(name));
    return VQ_OK;
  };
  static_cast<void>(ForEach(incoming, VQRTTYPE_FORM_FIELD, add));
  std::sort(coming.begin(), coming.end());
  const auto comes = [&](const std::string& name) { return std::binary_search(coming.begin(), coming.end(), name); };
  if (std::adjacent_find(coming.begin(), coming.end()) != coming.end()) return VQERR_FIELD_EXISTS;
  if (std::any_of(there.begin(), there.end(), comes)) return VQERR_FIELD_EXISTS;
  return ForEach(present, VQRTTYPE_FORM_FIELD,
                 [&](const VQRTObjectBody& field) { return comes(NameOf(field)) ? VQERR_FIELD_EXISTS : VQ_OK; });
}

// A shared field is one of the database that its text comes from, or that it was pointed at while it stood alone.
bool IsOfOtherDatabase(const VQFormFieldBody& field, const VQSlateBody& slate, const VQSlateBody* from) {
  if (!field.IsSharedField()) return false;
  const VQDatabaseBody* home = from != nullptr ? from->GetDatabaseBody() : field.GetSharedDatabase();
  return home != nullptr && home != slate.GetDatabaseBody();
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
  if (status != VQ_OK || fields.empty()) return status;
  return ForEach(incoming, VQRTTYPE_FORM_FIELD, [&](const VQRTObjectBody& field) {
    const bool foreign = IsOfOtherDatabase(static_cast<const VQFormFieldBody&>(field), slate, from);
    return foreign ? VQERR_SHARED_FIELD_OTHER_DATABASE : VQ_OK;
  });
}

VQSTATUS CheckFieldNames(VQRichTextBody& text, std::string_view name, const VQRTObjectBody& own) {
  if (VQSTATUS status = text.Initialize()) return status;
  return ForEach(*text.GetTop(), VQRTTYPE_FORM_FIELD, [&](const VQRTObjectBody& field) {
    return &field != &own && NameOf(field) == name ? VQERR_FIELD_EXISTS : VQ_OK;
  });
}

}  // namespace vq

VQSTATUS VQFormBody::AdmitObjects(VQRichTextBody& text, const VQRTObjectBody& incoming, const VQSlateBody* from) {
  const VQSTATUS status = vq::AdmitFields(*this, text, incoming, from);
  if (status != VQ_OK || text.GetNameText() != vq::kFormBodyItem || text.GetTop() == nullptr) return status;
  const auto open = [this](VQSubform* subform) { return OpenSubform(subform); };
  return CheckSubformFields(GetDatabaseBody(), open, *text.GetTop(), incoming);
}
VQSTATUS VQSubformBody::AdmitObjects(VQRichTextBody& text, const VQRTObjectBody& incoming, const VQSlateBody* from) {
  return vq::AdmitFields(*this, text, incoming, from);
}
