// Text items: one string or a list of strings, read and edited entry by entry.
//
// A value of one entry may stand in either stored form; all operations take both. Line breaks are stored as zero bytes
// and come back as line feeds. An unattached VQText is an empty text: SetValue and Insert at 0 give it a value of its
// own, Delete and FindEntry are refused with VQERR_OBJECT_NOT_INITIALIZED. Changes fail with VQERR_NOT_INITIALIZED
// without a session and with VQERR_ITEM_UNINITIALIZED once the item's slate is closed, and then leave the value as it
// was; so does a list that would pass 65,535 bytes, with the engine's status.
#ifndef QUILLON_VQ_VALUES_VQTEXT_H
#define QUILLON_VQ_VALUES_VQTEXT_H

#include <span>
#include <vector>

#include "vq/store/vqitem.h"
#include "vq/values/vqstring.h"

class VQTextElement;

class VQ_API VQTextBody : public VQItemBody {
 public:
  // A value that stands alone; `type` is TYPE_TEXT or TYPE_TEXT_LIST and the data is what follows the type word.
  VQTextBody(unsigned short type, const void* value, unsigned long length);
  VQTextBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place);
  VQCLASSID GetClassID() const override;

  // Statuses without the throw rule.
  [[nodiscard]] VQSTATUS SetText(const VQString& text);
  [[nodiscard]] VQSTATUS SetValueOf(VQTextBody& source);
  [[nodiscard]] VQSTATUS SetEntries(std::span<const VQString> entries);
  [[nodiscard]] VQSTATUS ReadEntries(std::vector<VQString>* entries);
  [[nodiscard]] VQSTATUS ReadEntry(unsigned long index, VQString* text);
  [[nodiscard]] VQSTATUS InsertEntry(unsigned long index, const VQString& text);
  [[nodiscard]] VQSTATUS InsertEntries(unsigned long index, VQTextBody& source);
  [[nodiscard]] VQSTATUS DeleteEntries(unsigned long index, unsigned long count);
  [[nodiscard]] VQSTATUS ReplaceEntry(unsigned long index, const VQString& text);
  [[nodiscard]] VQSTATUS CheckEditable() const;

 private:
  using Entry = std::span<const VQCHAR>;  // as stored

  // `added` in place of `replaced` entries from `index` on.
  [[nodiscard]] VQSTATUS PutEntries(unsigned long index, unsigned long replaced, std::span<const Entry> added);
  [[nodiscard]] VQSTATUS AppendEntries(std::span<const Entry> added);
};

class VQ_API VQText : public VQItem {
 public:
  VQText();
  VQText(const VQText& other);
  // An item that is no text throws VQERR_INCORRECT_ITEM_TYPE.
  VQText(const VQItem& item);
  explicit VQText(VQTextBody* body);
  // Assignment shares the value.
  VQText& operator=(const VQText& other);
  VQText& operator=(const VQItem& item);
  VQCLASSID GetClassID() const override;

  // Index 0 is always there, also in an empty text; other indexes at or behind the end throw VQERR_BAD_SUBSCRIPT.
  VQTextElement operator[](unsigned long index) const;
  // Append; failures are thrown.
  VQText& operator<<(const VQText& text);
  VQText& operator<<(const VQString& text);
  VQText& operator<<(const VQTextElement& element);
  // VQERR_OUT_OF_RANGE for entries that are not there; a count of 0 does nothing.
  VQSTATUS Delete(unsigned long index, unsigned long count = 1);
  VQSTATUS DeleteAll();
  // The first entry that equals `text` byte for byte; VQWARN_NOT_FOUND leaves *index alone.
  VQSTATUS FindEntry(const VQString& text, unsigned long* index) const;
  unsigned long GetCount() const;
  // All entries with `separator` between them.
  VQSTATUS GetText(VQString* out, const VQString& separator = VQString()) const;
  // `index` up to the number of entries, else VQERR_OUT_OF_RANGE. A text can't be inserted into itself.
  VQSTATUS Insert(unsigned long index, const VQText& text);
  VQSTATUS Insert(unsigned long index, const VQString& text);
  // Replaces the value and keeps item, name and slate. A source without a body detaches this handle.
  VQSTATUS SetValue(const VQText& text);
  VQSTATUS SetValue(const VQString& text);
  // All entries at once; needs a value.
  VQSTATUS SetEntries(std::span<const VQString> entries);

 private:
  VQTextBody* TextBody() const { return static_cast<VQTextBody*>(Body); }
  VQSTATUS AttachValue(VQTextBody* body);
};

// One entry of a text, read by conversion and written by assignment; it keeps the value alive.
class VQ_API VQTextElement : public VQQuillonClass {
 public:
  VQTextElement(VQTextBody* body, unsigned long index);
  VQTextElement(const VQTextElement& other);
  ~VQTextElement() override;
  VQTextElement& operator=(const VQTextElement& other);
  // Replaces the entry; failures are thrown.
  VQTextElement& operator=(const VQString& text);
  operator VQString() const;
  VQCLASSID GetClassID() const override;

 private:
  VQTextBody* TextBody;
  std::uint32_t Index;
};

#endif
