// VQFontStyle: the font of a text run, one packed 32-bit FontID with the face entry that it names.
//
// A style that belongs to a text run changes that run and marks it dirty; a style made by a client, and a Copy, stand
// alone. A setter on a null handle first makes a body with the defaults: 10 point, black, no attributes, face 1.
// Getters throw VQERR_OBJECT_NOT_INITIALIZED on a null handle. A setter that fails leaves the style as it was.
#ifndef QUILLON_VQ_RICHTEXT_FONT_H
#define QUILLON_VQ_RICHTEXT_FONT_H

#include "engine/records.h"
#include "vq/frame/vqcommon.h"

class VQFontStyleBody;
class VQFontTable;
class VQRTObjectBody;
class VQSlateBody;
class VQString;

// Attribute bits. Superscript, subscript and the three effects exclude one another.
inline constexpr unsigned short VQFONT_BOLD = 0x0001;
inline constexpr unsigned short VQFONT_ITALIC = 0x0002;
inline constexpr unsigned short VQFONT_UNDERLINE = 0x0004;
inline constexpr unsigned short VQFONT_STRIKEOUT = 0x0008;
inline constexpr unsigned short VQFONT_SUPERSCRIPT = 0x0010;
inline constexpr unsigned short VQFONT_SUBSCRIPT = 0x0020;
inline constexpr unsigned short VQFONT_SHADOW = 0x0080;
inline constexpr unsigned short VQFONT_EMBOSS = 0x0100;
inline constexpr unsigned short VQFONT_EXTRUDE = 0x0200;

// Masks of SetFontStyle and SetFontID: attribute bits as above, and these.
inline constexpr unsigned long VQFONTMASK_ATTRIBUTES = 0x0FFFF;
inline constexpr unsigned long VQFONTMASK_COLOR = 0x10000;
inline constexpr unsigned long VQFONTMASK_FACE = 0x20000;
inline constexpr unsigned long VQFONTMASK_SIZE = 0x40000;
inline constexpr unsigned long VQFONTMASK_ALL = 0xFFFFFFFF;

// Standard faces, the same in every store; 5 to 255 are entries of the slate's font table.
inline constexpr unsigned char VQFACE_TMS_RMN = 0;
inline constexpr unsigned char VQFACE_HELV = 1;
inline constexpr unsigned char VQFACE_COURIER = 4;

class VQ_API VQFontStyle : public VQSmartPtr {
 public:
  VQFontStyle() = default;
  VQFontStyle(const VQFontStyle&) = default;
  explicit VQFontStyle(VQFontStyleBody* body);
  // A table face that the table lacks becomes "MS_SERIF" for display; without a table it becomes face 1.
  VQFontStyle(unsigned long fontID, const VQFontTable* table);
  // With the font table of an open slate.
  VQFontStyle(unsigned long fontID, VQSlateBody* slate);
  // A named face. Names of standard faces give these, and must have their family and pitch.
  VQFontStyle(unsigned char family, unsigned char pitch, const VQString& name, int trueType, int monospaced);
  VQFontStyle& operator=(const VQFontStyle&) = default;

  // Equal packed fonts, and equal faces where the face is a table entry.
  int operator==(const VQFontStyle& other) const;
  int operator!=(const VQFontStyle& other) const { return !(*this == other); }
  VQSTATUS Assign(unsigned long fontID, const VQFontTable* table);
  VQSTATUS Assign(unsigned char family, unsigned char pitch, const VQString& name, int trueType, int monospaced);
  // A body of its own with the source's font and no owner.
  VQSTATUS Copy(const VQFontStyle& source);

  unsigned short GetAttributes() const;
  CDFACE GetCDFace() const;
  unsigned short GetColor() const;
  unsigned char GetFaceID() const;
  VQString GetFaceName() const;
  // Family class, 0x00 to 0xF0. Faces 2 and 3 have none: VQERR_INVALID_PARAMETER is thrown.
  unsigned char GetFamily() const;
  unsigned long GetFontID() const;
  // The table of the slate that the style's text is on; VQWARN_NOT_FOUND when there is none.
  VQSTATUS GetFontTable(VQFontTable* table) const;
  // 1 fixed, 2 variable. Faces 2 and 3 as with GetFamily.
  unsigned char GetPitch() const;
  unsigned long GetPointSize() const;
  // By the point size; 0 without an effect attribute.
  unsigned long GetShadowOffset() const;
  int IsMonospaced() const;
  int IsTrueType() const;
  // Whether packed face and face entry agree.
  int IsValid() const;

  VQSTATUS SetAttributes(unsigned short attributes);
  // For faces 5 to 255. A style in a rich text on a slate enters the face into the slate's table, which may give it
  // another number.
  VQSTATUS SetCDFace(CDFACE face);
  VQSTATUS SetColor(unsigned short color);
  VQSTATUS SetDefaults();
  // A table face must be known to the style or to its text's table.
  VQSTATUS SetFaceID(unsigned char face);
  VQSTATUS SetFontID(unsigned long fontID, unsigned long mask);
  VQSTATUS SetFontStyle(const VQFontStyle& other, unsigned long mask);
  VQSTATUS SetPointSize(unsigned long points);

  VQCLASSID GetClassID() const override { return VQCLASSID_VQFONTSTYLE; }
  VQFontStyleBody* GetFontStyleBody() const;

 private:
  VQFontStyleBody& Checked() const;
  VQFontStyleBody& Ready();
  template <typename Setter>
  VQSTATUS Replace(Setter set);
  template <typename Setter>
  VQSTATUS Change(Setter set);
};

// The body. Inner operations give statuses and leave the throw rule to the handle.
class VQFontStyleBody : public VQBody {
 public:
  VQFontStyleBody();

  VQCLASSID GetClassID() const override { return VQCLASSID_VQFONTSTYLEBODY; }

  std::uint32_t GetFontID() const { return FontID; }
  // The entry that the packed face stands for; VQERR_INVALID_PARAMETER for faces 2 and 3.
  [[nodiscard]] VQSTATUS GetFace(CDFACE* face) const;
  bool IsValid() const;
  bool IsEqual(const VQFontStyleBody& other) const;

  // Replace the font without telling the owner: for readers, and for the owner itself.
  [[nodiscard]] VQSTATUS Assign(std::uint32_t fontID, const VQFontTable* table);
  [[nodiscard]] VQSTATUS AssignName(unsigned family, unsigned pitch, const VQString& name, int trueType,
                                    int monospaced);
  [[nodiscard]] VQSTATUS AssignFace(const CDFACE& face);
  void CopyFont(const VQFontStyleBody& source);

  // Changes that the owner is told of.
  [[nodiscard]] VQSTATUS ChangeFontID(std::uint32_t fontID);
  [[nodiscard]] VQSTATUS ChangeFace(const CDFACE& face);
  [[nodiscard]] VQSTATUS ChangeFaceID(std::uint8_t face);
  [[nodiscard]] VQSTATUS ChangeFont(const VQFontStyleBody& source, std::uint32_t mask);
  // The same face under another number; the owner's record follows.
  [[nodiscard]] VQSTATUS Renumber(std::uint8_t face);
  // Takes the owner's font anew, since others may have changed it.
  [[nodiscard]] VQSTATUS Refresh();

  // The text run or style name that the style writes through to. Not counted: it takes itself out before it goes.
  VQRTObjectBody* GetOwner() const { return Owner; }
  void SetOwner(VQRTObjectBody* owner) { Owner = owner; }

 private:
  struct Font {
    std::uint32_t FontID;
    CDFACE Entry;  // all zero for a standard face
  };
  Font Current() const;
  void Store(const Font& font);
  // Gives the font to the owner, its face entered in the owner's table, and keeps it.
  [[nodiscard]] VQSTATUS Change(Font font);

  std::uint32_t FontID;
  std::uint8_t Face;  // 0 for a standard face
  std::uint8_t Family;
  ENGCHAR Name[32];
  VQRTObjectBody* Owner;
};

#endif
