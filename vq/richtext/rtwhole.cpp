// Whole rich texts: copies that stand alone, and their way into other trees.
#include <cstring>

#include "engine/memory.h"
#include "vq/frame/session.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/vqrtbody.h"

namespace {

constexpr std::uint16_t kMemoryFlags = 16384;

VQSTATUS CopyValue(const BLOCKID& value, std::uint32_t size, ENGHANDLE* copy) {
  const vq::MemoryLock from(value.Pool);
  std::uint32_t capacity = 0;
  if (!from.GetBytes() || EngMemGetSize(value.Pool, &capacity) != 0) return VQERR_ITEM_UNINITIALIZED;
  if (value.Block > capacity || size > capacity - value.Block) return VQERR_CORRUPTED;
  if (VQSTATUS status = vq::FromEngine(EngMemAlloc(kMemoryFlags, size, copy))) return status;
  const vq::MemoryLock to(*copy);
  std::memcpy(to.GetBytes(), from.GetBytes() + value.Block, size);
  return VQ_OK;
}

// The face of a run, or of the record that leads it.
bool HasTableFace(const VQRTObjectBody& object, vq::MemoryLock& lock) {
  constexpr std::uint32_t kFontID = 4;
  const vq::RecordBytes bytes(object, lock);
  return bytes.GetSize() > kFontID && vq::fontid::IsTableFace(bytes.Get()[kFontID]);
}

}  // namespace

vq::TextFindings vq::Survey(const VQRTBaseContainerBody& text) {
  vq::TextFindings found;
  vq::MemoryLock lock;
  for (const VQRTObjectBody* object = text.NextInTree(&text); object; object = text.NextInTree(object)) {
    if (object->GetParent() == &text) found.Children.set(object->GetType());
    switch (object->GetType()) {
      case VQRTTYPE_STYLIZED_TEXT:
      case VQRTTYPE_TEXT_STYLE_EXT:
        found.Fonts = found.Fonts || HasTableFace(*object, lock);
        break;
      case VQRTTYPE_PAB_STYLE_NAME:
        found.Fonts = true;
        break;
      case VQRTTYPE_NEW_PARAGRAPH:
      case VQRTTYPE_PAB_DEFINITION:
      case VQRTTYPE_PAB_REFERENCE:
      case VQRTTYPE_PAB_FORMULA_REFERENCE:
      case VQRTTYPE_PAB_HIDE:
      case VQRTTYPE_TABLE:
      case VQRTTYPE_TABLE_CELL:
      case VQRTTYPE_TABLE_END:
        break;
      default:
        found.Others = true;
    }
  }
  return found;
}

// A parser error handler decides what of a load is left, and it has decided about the tree.
bool VQRichTextBody::IsAsStored() const {
  const VQQuillonSession* session = GetSession();
  if (session && session->IsInitialized() && session->GetRTParserErrorHandler()) return false;
  return InitState == kNotParsed || (InitState == kParsed && !Top->IsDirty());
}

VQSTATUS VQRichTextBody::CopyTo(VQRichText* copy, vq::TextFindings* found) {
  bool fresh = false;
  if (IsAsStored()) {
    const VQSTATUS status = CopyValues(copy);
    if (status != VQ_OK && InitState != kParsed) return status;
    if (status == VQ_OK) *found = vq::Survey(*copy->GetRichTextBody()->Top);
    // Those are told by their own copies what they refer to in this text's slate.
    fresh = status == VQ_OK && !found->Others;
  }
  if (fresh) return VQ_OK;
  if (VQSTATUS status = CopyTree(copy)) return status;
  *found = vq::Survey(*copy->GetRichTextBody()->Top);
  return VQ_OK;
}

VQSTATUS VQRichTextBody::CopyValues(VQRichText* copy) {
  if ((State & kOpen) == 0) return VQERR_OBJECT_CLOSED;
  if (VQSTATUS status = CheckValue()) return status;
  ENGHANDLE memory = 0;
  if (VQSTATUS status = CopyValue(GetValueBlock(), ValueSize, &memory)) return status;
  auto* body = new VQRichTextBody(memory, ValueSize);
  const VQRichText made(body);
  for (const vq::ItemPlace& place : GetExtraPlaces()) {
    if (VQSTATUS status = CopyValue(place.Value, place.Size, &memory)) return status;
    if (VQSTATUS status = body->AddBlockID(BLOCKID{}, BLOCKID{memory, 0}, place.Size)) return status;
  }
  if (VQSTATUS status = body->Initialize()) return status;
  if (VQSTATUS status = body->TakeTables(*this)) return status;
  *copy = made;
  return VQ_OK;
}

VQSTATUS VQRichTextBody::CopyTree(VQRichText* copy) {
  if (VQSTATUS status = Initialize()) return status;
  auto* body = new VQRichTextBody;
  const VQRichText made(body);
  if (VQSTATUS status = body->Initialize()) return status;
  std::vector<VQRTObject> objects;
  objects.reserve(Top->GetChildCount());
  for (VQRTObjectBody* child = Top->GetFirstChild(); child; child = child->GetNext()) {
    if (VQSTATUS status = vq::pab::CopyOf(child, &objects.emplace_back())) return status;
  }
  if (VQSTATUS status = body->Top->LinkAll(objects, nullptr)) return status;
  if (VQSTATUS status = body->TakeTables(*this)) return status;
  *copy = made;
  return VQ_OK;
}
