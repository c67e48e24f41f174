// Where the faces of a rich text object are looked up and entered.
#ifndef QUILLON_VQ_RICHTEXT_FONTPLACE_H
#define QUILLON_VQ_RICHTEXT_FONTPLACE_H

#include <memory>

#include "engine/records.h"
#include "vq/frame/vqcommon.h"

class VQFontStyle;
class VQFontTable;
class VQItem;
class VQRTObjectBody;
class VQRichTextBody;
class VQSlateBody;

namespace vq {

// What a refused operation has entered into a font table goes again, and a table that it made.
class FontGuard {
 public:
  explicit FontGuard(VQRichTextBody* text);  // null: of nothing
  explicit FontGuard(VQSlateBody* slate);
  ~FontGuard();
  FontGuard(const FontGuard&) = delete;
  FontGuard& operator=(const FontGuard&) = delete;
  // The operation has come to where it succeeds.
  void Keep() { Kept = true; }

 private:
  [[nodiscard]] VQSTATUS Find(VQFontTable* table) const;
  void Remember();
  void Restore();

  struct Contents;
  VQRichTextBody* Text = nullptr;
  VQSlateBody* Slate = nullptr;
  std::unique_ptr<Contents> Before;  // null: there was no table
  bool Kept = false;
};

// The slate's "$Fonts"; VQWARN_NOT_FOUND when it has none.
[[nodiscard]] VQSTATUS FindFontTable(VQSlateBody* slate, VQFontTable* table);
// The same, made when there is none. The new item is stored once it has a face.
[[nodiscard]] VQSTATUS FindOrMakeFontTable(VQSlateBody* slate, VQFontTable* table);
// The table that the faces in this object's rich text refer to; VQWARN_NOT_FOUND when there is none.
[[nodiscard]] VQSTATUS FontTableOf(const VQRTObjectBody& object, VQFontTable* table);
// Gives the number of a table face in the table of the object's rich text, entering the face if it is new. Outside a
// rich text the face keeps its number.
[[nodiscard]] VQSTATUS EnterFace(const VQRTObjectBody& object, const CDFACE& face, unsigned char* number);
// The same for the face of a style, if that is one of a table.
[[nodiscard]] VQSTATUS EnterStyle(const VQRTObjectBody& object, const VQFontStyle& style);
// The same for all faces in `incoming`, which still stands alone: what may fail comes before the text is changed.
[[nodiscard]] VQSTATUS EnterFacesOf(VQRTObjectBody& incoming, const VQRTObjectBody& object);

// Carries the font of a run or style name over to another font table, or to the table of another rich text: the face
// is entered there, and its number there is written into the record.
[[nodiscard]] VQSTATUS ConvertFont(const VQFontStyle& style, VQItem* target);

// The table fonts of an object that has come into a rich text, and of all in it, refer to that one's table afterwards.
[[nodiscard]] VQSTATUS EnterFonts(VQRTObjectBody& object);

}  // namespace vq

#endif
