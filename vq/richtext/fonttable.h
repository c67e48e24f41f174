// VQFontTable: the faces above 4 that the text runs of a slate name by number, kept in the item "$Fonts".
//
// The table is read on first need and written by Update, or with its slate. Faces 0 to 4 are the standard faces and
// never stand in a table. Face look-ups that miss give VQWARN_NOT_FOUND and still fill the target for display: family
// 0, name "MS_SERIF", the face asked for (0 on a search by name). Changes that fail leave the table as it was.
#ifndef QUILLON_VQ_RICHTEXT_FONTTABLE_H
#define QUILLON_VQ_RICHTEXT_FONTTABLE_H

#include <vector>

#include "engine/records.h"
#include "vq/richtext/font.h"
#include "vq/store/vqcomposite.h"

class VQFontTableBody;

inline constexpr const char* VQ_FONT_TABLE_ITEM = "$Fonts";

class VQ_API VQFontTable : public VQItem {
 public:
  VQFontTable() = default;
  VQFontTable(const VQFontTable& other) = default;
  explicit VQFontTable(VQFontTableBody* body);
  // The item must hold a font table, else VQERR_INCORRECT_ITEM_TYPE is thrown.
  VQFontTable(const VQItem& item);
  VQFontTable& operator=(const VQFontTable& other) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQFONTTABLE; }

  // The same faces in the same order.
  int operator==(const VQFontTable& other) const;
  int operator!=(const VQFontTable& other) const { return !(*this == other); }
  // Append that throws.
  VQFontTable& operator<<(const CDFACE& face);
  // Throws VQERR_BAD_SUBSCRIPT beyond the count.
  CDFACE operator[](unsigned long position) const;

  // Gives the face number of the name, entering it behind the others if it is new.
  VQSTATUS AddFace(unsigned char pitchAndFamily, const char* name, unsigned char* faceOut);
  VQSTATUS Append(const CDFACE& face);
  VQSTATUS Append(const VQFontStyle& style);
  VQSTATUS Append(unsigned char face, unsigned char pitchAndFamily, const char* name);
  // VQERR_OUT_OF_RANGE for a position beyond the count. Face 0 takes the number above the highest one;
  // VQERR_INVALID_PARAMETER for 1 to 4, VQERR_FONT_EXISTS for a number or name that is there.
  VQSTATUS Insert(unsigned long position, const CDFACE& face);
  VQSTATUS Insert(unsigned long position, const VQFontStyle& style);
  VQSTATUS Insert(unsigned long position, unsigned char face, unsigned char pitchAndFamily, const char* name);
  VQSTATUS DeleteByFaceID(unsigned char face);
  VQSTATUS DeleteByName(const char* name);
  VQSTATUS DeleteByPosition(unsigned long position, unsigned long count);
  unsigned long GetCount() const;

  VQSTATUS GetCDFaceByFaceID(unsigned char face, CDFACE* target) const;
  VQSTATUS GetCDFaceByName(const char* name, CDFACE* target) const;
  VQSTATUS GetCDFaceByPosition(unsigned long position, CDFACE* target) const;
  // The same as styles of 10 points.
  VQSTATUS GetFaceByFaceID(unsigned char face, VQFontStyle* target) const;
  VQSTATUS GetFaceByName(const char* name, VQFontStyle* target) const;
  VQSTATUS GetFaceByPosition(unsigned long position, VQFontStyle* target) const;

  // AddFace for every entry of the other table. Face numbers of this table stay.
  VQSTATUS Merge(const VQFontTable& other);
  // Writes a changed table into its item. VQERR_FONT_REQUIRED for an empty one.
  VQSTATUS Update();

  VQFontTableBody* GetFontTableBody() const;

 private:
  // The body with its value read; throws without one.
  VQFontTableBody& Checked() const;
};

// The body. Inner operations give statuses and leave the throw rule to the handle.
class VQ_API VQFontTableBody : public VQCompositeItemBody {
 public:
  static constexpr unsigned kMaxFonts = 255;

  // A table that stands alone.
  VQFontTableBody() = default;
  // The table of a slate, which then saves it behind all other items.
  VQFontTableBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place);
  ~VQFontTableBody() override;
  VQSTATUS Close() override;

  VQCLASSID GetClassID() const override { return VQCLASSID_VQFONTTABLEBODY; }
  VQSTATUS Flush() override;
  VQSTATUS Rebound() override;

  // Reads the value unless that is done.
  [[nodiscard]] VQSTATUS Load();
  const std::vector<CDFACE>& Faces() const { return Entries; }
  unsigned GetHighestFace() const { return HighestFace; }

  [[nodiscard]] VQSTATUS Insert(unsigned long position, const CDFACE& face);
  [[nodiscard]] VQSTATUS AddFace(unsigned family, const ENGCHAR* name, unsigned char* faceOut);
  [[nodiscard]] VQSTATUS Erase(unsigned long position, unsigned long count);
  [[nodiscard]] VQSTATUS Merge(VQFontTableBody& other);
  // The other table's faces with their numbers, in place of those here.
  [[nodiscard]] VQSTATUS TakeFaces(VQFontTableBody& other);
  struct Contents {
    unsigned HighestFace;
    std::vector<CDFACE> Entries;
    int Dirty;
  };
  Contents GetContents() { return {HighestFace, Entries, IsDirty()}; }
  void SetContents(const Contents& contents);
  // The same when faces have come since, which may have been stored.
  [[nodiscard]] VQSTATUS TakeBack(const Contents& contents);
  [[nodiscard]] VQSTATUS FindFace(unsigned face, CDFACE* target);
  [[nodiscard]] VQSTATUS FindName(const ENGCHAR* name, CDFACE* target);
  // Position of a face or name, or the count.
  unsigned long PositionOf(unsigned face) const;
  unsigned long PositionOf(const ENGCHAR* name) const;

 private:
  [[nodiscard]] VQSTATUS CheckRoom(const CDFACE& face) const;
  [[nodiscard]] VQSTATUS ReadEntries();

  unsigned HighestFace = 0;  // 0: not read yet; 4 when the table is empty
  std::vector<CDFACE> Entries;
};

namespace vq {

// Builds the body for the item "$Fonts" of a slate.
VQItemBody* MakeFontTableBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place);

}  // namespace vq

#endif
