// Handles on text items, and their entries.
#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/values/entrycount.h"
#include "vq/values/vqtext.h"

namespace {

void CheckIsText(const VQItem& item) {
  const VQItemBody* body = item.GetItemBody();
  if (body != nullptr && body->GetClassID() != VQCLASSID_VQTEXTBODY) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
}

const VQItem& TextItem(const VQItem& item) {
  CheckIsText(item);
  return item;
}

}  // namespace

VQText::VQText() = default;

VQText::VQText(const VQText& other) : VQItem(other) {}

VQText::VQText(const VQItem& item) : VQItem(TextItem(item)) {}

VQText::VQText(VQTextBody* body) : VQItem(body) {}

VQText& VQText::operator=(const VQText& other) {
  VQItem::operator=(other);
  return *this;
}

VQText& VQText::operator=(const VQItem& item) {
  CheckIsText(item);
  VQItem::operator=(item);
  return *this;
}

VQCLASSID VQText::GetClassID() const { return VQCLASSID_VQTEXT; }

VQTextElement VQText::operator[](unsigned long index) const {
  if (index != 0 && index >= GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  if (Body != nullptr) return VQTextElement(TextBody(), index);
  return VQTextElement(new VQTextBody(TYPE_TEXT, nullptr, 0), 0);
}

VQText& VQText::operator<<(const VQText& text) {
  vq::ThrowIfError(Insert(GetCount(), text));
  return *this;
}

VQText& VQText::operator<<(const VQString& text) {
  vq::ThrowIfError(Insert(GetCount(), text));
  return *this;
}

VQText& VQText::operator<<(const VQTextElement& element) { return *this << static_cast<VQString>(element); }

VQSTATUS VQText::Delete(unsigned long index, unsigned long count) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(TextBody()->DeleteEntries(index, count));
}

VQSTATUS VQText::DeleteAll() {
  if (Body == nullptr) return VQ_OK;
  unsigned long count = 0;
  if (const VQSTATUS status = vq::CountEntries(TextBody(), &count)) return vq::Apply(status);
  return vq::Apply(TextBody()->DeleteEntries(0, count));
}

VQSTATUS VQText::FindEntry(const VQString& text, unsigned long* index) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (index == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  std::vector<VQString> entries;
  if (const VQSTATUS status = TextBody()->ReadEntries(&entries)) return vq::Apply(status);
  for (unsigned long i = 0; i < entries.size(); ++i) {
    if (VQStringCompare(text, entries[i], 0) != 0) continue;
    *index = i;
    return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

unsigned long VQText::GetCount() const { return Body == nullptr ? 0 : TextBody()->GetEntryCount(); }

VQSTATUS VQText::GetText(VQString* out, const VQString& separator) const {
  if (out == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQString joined;
  std::vector<VQString> entries;
  if (Body != nullptr) {
    if (const VQSTATUS status = TextBody()->ReadEntries(&entries)) return vq::Apply(status);
  }
  for (unsigned long i = 0; i < entries.size(); ++i) {
    if (i != 0) {
      if (const VQSTATUS status = joined.Append(separator)) return status;
    }
    if (const VQSTATUS status = joined.Append(entries[i])) return status;
  }
  *out = joined;
  return VQ_OK;
}

VQSTATUS VQText::Insert(unsigned long index, const VQText& text) {
  if (Body == nullptr) return index == 0 ? SetValue(text) : vq::Apply(VQERR_OUT_OF_RANGE);
  if (const VQSTATUS status = TextBody()->CheckEditable()) return vq::Apply(status);
  if (text.Body == nullptr) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(TextBody()->InsertEntries(index, *text.TextBody()));
}

VQSTATUS VQText::Insert(unsigned long index, const VQString& text) {
  if (Body == nullptr) return index == 0 ? SetValue(text) : vq::Apply(VQERR_OUT_OF_RANGE);
  return vq::Apply(TextBody()->InsertEntry(index, text));
}

// A value that stands alone, new and so dirty.
VQSTATUS VQText::AttachValue(VQTextBody* body) {
  const VQText keeper(body);
  if (const VQSTATUS status = Assign(nullptr, body)) return status;
  body->SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQText::SetValue(const VQText& text) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (text.Body == nullptr) return Assign(nullptr, nullptr);
  if (const VQSTATUS status = text.TextBody()->CheckValue()) return vq::Apply(status);
  if (Body != nullptr) return vq::Apply(TextBody()->SetValueOf(*text.TextBody()));
  const VQItemLock value(text.TextBody());
  if (value.Value() == nullptr) return vq::Apply(VQERR_ITEM_UNINITIALIZED);
  return AttachValue(new VQTextBody(text.TextBody()->GetType(), value.Data(), text.TextBody()->GetValueSize() - 2));
}

VQSTATUS VQText::SetValue(const VQString& text) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (Body != nullptr) return vq::Apply(TextBody()->SetText(text));
  auto* body = new VQTextBody(TYPE_TEXT, nullptr, 0);
  const VQText keeper(body);
  if (const VQSTATUS status = body->SetText(text)) return vq::Apply(status);
  return AttachValue(body);
}

VQSTATUS VQText::SetEntries(std::span<const VQString> entries) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(TextBody()->SetEntries(entries));
}

VQTextElement::VQTextElement(VQTextBody* body, unsigned long index)
    : TextBody(body), Index(static_cast<std::uint32_t>(index)) {
  TextBody->AddReference();
}

VQTextElement::VQTextElement(const VQTextElement& other)
    : VQQuillonClass(other), TextBody(other.TextBody), Index(other.Index) {
  TextBody->AddReference();
}

VQTextElement::~VQTextElement() { TextBody->Release(); }

VQTextElement& VQTextElement::operator=(const VQTextElement& other) {
  if (this == &other) return *this;
  return *this = static_cast<VQString>(other);
}

VQTextElement& VQTextElement::operator=(const VQString& text) {
  vq::ThrowIfError(TextBody->ReplaceEntry(Index, text));
  return *this;
}

VQTextElement::operator VQString() const {
  VQString text;
  vq::ThrowIfError(TextBody->ReadEntry(Index, &text));
  return text;
}

VQCLASSID VQTextElement::GetClassID() const { return VQCLASSID_VQTEXTELEMENT; }
