// Host forms of the stored structures, with the code that EngOdsRead and EngOdsWrite know each by.
//
// Stored forms are little-endian and packed, fields in the order given; host structures are plain C.
#ifndef QUILLON_ENGINE_RECORDS_H
#define QUILLON_ENGINE_RECORDS_H

#include "engine/types.h"

#define ODS_WORD 0
#define ODS_DWORD 1
#define ODS_TIMEDATE 10
#define ODS_RANGE 15
#define ODS_IDTABLEHEADER 31
#define ODS_CDPARAGRAPH 0x6D
#define ODS_CDPABDEFINITION 0x6E
#define ODS_CDPABREFERENCE 0x6F
#define ODS_CDTEXT 0x71
#define ODS_CDFONTTABLE 0x77
#define ODS_CDFACE 0x78
#define ODS_CDTABLEBEGIN 0xB0
#define ODS_CDTABLECELL 0xB1
#define ODS_CDTABLEEND 0xB2
#define ODS_CDSTYLENAME 0xBC
#define ODS_CDHOTSPOTBEGIN 0xE6
#define ODS_CDHOTSPOTEND 0xE7
#define ODS_CDPABHIDE 0x166
#define ODS_CDPABFORMULAREF 0x167
#define ODS_CDTEXTSTYLEEXT 0x1FC
#define ODS_CDACTIVEOBJECT 0x204

// List header of number and time lists: 4 bytes.
typedef struct RANGE {
  uint16_t ListCount;
  uint16_t RangeCount;
} RANGE;

// 16 bytes. Flags bit 0x8000: the table is not in run form.
typedef struct IDTABLEHEADER {
  uint32_t Step;
  uint16_t RunCount;
  uint16_t Flags;
  uint32_t Count;
  uint32_t Capacity;
} IDTABLEHEADER;

// Record headers: byte form (the length in the signature's high byte) and word form.
typedef struct BSIG {
  uint8_t Signature;
  uint8_t Length;
} BSIG;
typedef struct WSIG {
  uint16_t Signature;
  uint16_t Length;
} WSIG;

typedef struct CDPARAGRAPH {  // 2
  BSIG Header;
} CDPARAGRAPH;

typedef struct CDPABDEFINITION {  // 70
  WSIG Header;
  uint16_t PABID;
  uint16_t JustifyMode;
  uint16_t LineSpacing;
  uint16_t SpacingAbove;
  uint16_t SpacingBelow;
  uint16_t LeftMargin;
  uint16_t RightMargin;
  uint16_t FirstLineMargin;
  uint16_t TabCount;
  int16_t Tabs[20];
  uint16_t Flags;
  uint32_t TabTypes;
  uint16_t Flags2;
} CDPABDEFINITION;

typedef struct CDPABREFERENCE {  // 4
  BSIG Header;
  uint16_t PABID;
} CDPABREFERENCE;

typedef struct CDPABFORMULAREF {  // 6
  BSIG Header;
  uint16_t SourcePABID;
  uint16_t DestPABID;
} CDPABFORMULAREF;

typedef struct CDPABHIDE {  // 14, the compiled formula behind it
  WSIG Header;
  uint16_t PABID;
  uint8_t Reserved[8];
} CDPABHIDE;

typedef struct CDTEXT {  // 8, the text behind it
  WSIG Header;
  uint32_t FontID;
} CDTEXT;

typedef struct CDTEXTSTYLEEXT {  // 8
  WSIG Header;
  uint32_t FontID;
} CDTEXTSTYLEEXT;

typedef struct CDSTYLENAME {  // 44, a font and a user name behind it as Flags say
  BSIG Header;
  uint32_t Flags;
  uint16_t PABID;
  ENGCHAR StyleName[36];
} CDSTYLENAME;

typedef struct CDFONTTABLE {  // 6, the faces behind it
  WSIG Header;
  uint16_t Fonts;
} CDFONTTABLE;

typedef struct CDFACE {  // 34
  uint8_t Face;
  uint8_t Family;
  ENGCHAR Name[32];
} CDFACE;

typedef struct CDTABLEBEGIN {  // 14
  BSIG Header;
  uint16_t LeftMargin;
  uint16_t HorizCellSpace;
  uint16_t VertCellSpace;
  uint16_t V4HorizCellSpace;
  uint16_t V4VertCellSpace;
  uint16_t Flags;
} CDTABLEBEGIN;

typedef struct CDTABLECELL {  // 18
  BSIG Header;
  uint8_t Row;
  uint8_t Column;
  uint16_t LeftMargin;
  uint16_t RightMargin;
  uint16_t FractionalWidth;
  uint8_t Border;
  uint8_t Flags;
  uint16_t BorderWidth;
  uint8_t RowSpan;
  uint8_t ColumnSpan;
  uint16_t BackgroundColor;
} CDTABLECELL;

typedef struct CDTABLEEND {  // 6
  BSIG Header;
  uint32_t Reserved;
} CDTABLEEND;

typedef struct CDHOTSPOTBEGIN {  // 12, data behind it
  WSIG Header;
  uint16_t Type;
  uint32_t Flags;
  uint16_t DataLength;
} CDHOTSPOTBEGIN;

typedef struct CDHOTSPOTEND {  // 2
  BSIG Header;
} CDHOTSPOTEND;

typedef struct CDACTIVEOBJECT {  // 6, data behind it
  uint16_t Version;
  uint16_t Type;
  uint16_t Reserved;
} CDACTIVEOBJECT;

#endif
