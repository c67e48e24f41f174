// Host forms of the stored structures, with the code that EngOdsRead and EngOdsWrite know each by.
//
// Stored forms are little-endian and packed, fields in the order given; host structures are plain C.
#ifndef QUILLON_ENGINE_RECORDS_H
#define QUILLON_ENGINE_RECORDS_H

#include "engine/types.h"

#define ODS_WORD 0
#define ODS_DWORD 1
#define ODS_TIMEDATE 10
#define ODS_LIST 13
#define ODS_RANGE 15
#define ODS_VIEWTABLE 0x1D
#define ODS_VIEWCOLUMN 0x1E
#define ODS_IDTABLEHEADER 31
#define ODS_VIEWTABLEEXTENSION 0x2B
#define ODS_FILEOBJECT 0x3A
#define ODS_COLLATION 0x3B
#define ODS_COLLATIONDESCRIPTOR 0x3C
#define ODS_CDPARAGRAPH 0x6D
#define ODS_CDPABDEFINITION 0x6E
#define ODS_CDPABREFERENCE 0x6F
#define ODS_CDTEXT 0x71
#define ODS_FORMINFO 0x72
#define ODS_FIELD 0x76
#define ODS_CDFONTTABLE 0x77
#define ODS_CDFACE 0x78
#define ODS_CDTABLEBEGIN 0xB0
#define ODS_CDTABLECELL 0xB1
#define ODS_CDTABLEEND 0xB2
#define ODS_CDSTYLENAME 0xBC
#define ODS_CDHOTSPOTBEGIN 0xE6
#define ODS_CDHOTSPOTEND 0xE7
#define ODS_FIELDEXTENSION 0x156
#define ODS_FORMAUTOLAUNCH 0x15E
#define ODS_CDPABHIDE 0x166
#define ODS_CDPABFORMULAREF 0x167
#define ODS_VIEWCOLUMNEXTENSION 0x1AC
#define ODS_CDTEXTSTYLEEXT 0x1FC
#define ODS_VIEWCALENDAR 0x201
#define ODS_CDACTIVEOBJECT 0x204

// List header of number and time lists: 4 bytes.
typedef struct RANGE {
  uint16_t ListCount;
  uint16_t RangeCount;
} RANGE;

// Header of a text list: 2 bytes, then the entries' lengths, words, and their texts.
typedef struct LIST {
  uint16_t ListEntries;
} LIST;

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

// An object value: this, behind the type word, and what the object's type has behind it.
typedef struct OBJECTHEADER {
  uint16_t ObjectType;
  uint32_t ObjectID;
} OBJECTHEADER;

// A file: FileNameLength bytes with the name of the attachment stand behind it, and behind those the path that the file
// had. FileSize counts the file's bytes; the object may hold them compressed.
typedef struct FILEOBJECT {  // 36
  OBJECTHEADER Header;
  uint16_t FileNameLength;
  uint16_t HostType;
  uint16_t CompressionType;
  uint16_t FileAttributes;
  uint16_t Flags;
  uint32_t FileSize;
  TIMEDATE FileCreated;
  TIMEDATE FileModified;
} FILEOBJECT;

#define OBJECT_TYPE_MASK 0x00FF
#define OBJECT_FILE 0
#define HOST_TYPE_MASK 0x0F00
#define HOST_POSIX 0x0002  // low byte: the system that the file comes from
#define COMPRESS_MASK 0x000F
#define COMPRESS_NONE 0
#define COMPRESS_STREAM 1  // one Zstandard frame, or several
#define FILEATTRIBUTE_READ_ONLY 0x0001
#define FILEATTRIBUTE_PRIVATE 0x0002
#define FILEFLAG_SIGNED 0x0001
#define FILEFLAG_IN_RICH_TEXT 0x0002

// The item $ViewFormat: a ViewTableRecord; a ViewColumnRecord for each column; for each column its item name, title,
// formula code and constant value; a ViewTableExtension; a ViewColumnExtension for each column. Older designs end
// before either kind of extension.
typedef struct ViewTableRecord {  // 10
  uint8_t Version;
  uint8_t Style;
  uint16_t Columns;
  uint16_t ItemSequenceNumber;  // in the next generated column item name
  uint16_t Flags;
  uint16_t Spare;
} ViewTableRecord;

typedef struct ViewColumnRecord {  // 32
  uint16_t Signature;
  uint16_t Flags1;
  uint16_t ItemNameSize;
  uint16_t TitleSize;
  uint16_t FormulaSize;
  uint16_t ConstantValueSize;
  uint16_t DisplayWidth;  // eighths of a character
  uint32_t FontID;
  uint16_t Flags2;
  NFMT NumberFormat;
  TFMT DatetimeFormat;
  uint16_t DataType;
  uint16_t ListSeparator;
} ViewColumnRecord;

typedef struct ViewTableExtension {  // 38
  uint16_t Length;
  uint16_t LegacyBackground;
  uint16_t Spare1;
  uint32_t BorderFont;
  uint32_t UnreadFont;
  uint32_t TotalsFont;
  uint16_t Spare2;
  uint16_t AlternateRowColor;
  uint16_t Signature;  // of the fields below
  uint8_t LinesPerRow;
  uint8_t RowSpacing;
  uint16_t BackgroundColor;
  uint8_t LinesPerHeading;
  uint8_t WebFlags;
  uint16_t Spare3[4];
} ViewTableExtension;

typedef struct ViewColumnExtension {  // 46
  uint16_t Signature;
  uint32_t TitleFont;
  UNIVERSALSLATEID HeadingSortView;
  uint16_t SecondarySortColumn;
  uint16_t Spare1;
  uint32_t Spare2[5];
} ViewColumnExtension;

// The item $CalendarFormat. Times of day are minutes after midnight.
typedef struct ViewCalendarRecord {  // 58
  uint8_t Version;
  uint8_t Spare1;
  uint32_t DateFont;
  uint32_t TimeSlotFont;
  uint32_t HeaderFont;
  uint16_t DaySeparatorColor;
  uint16_t TodayColor;
  uint16_t Flags;
  uint16_t BusyRowColor;
  uint16_t TimeSlotStart;
  uint16_t TimeSlotEnd;
  uint16_t TimeSlotDuration;
  uint16_t Spare2;
  uint32_t Spare3[7];
} ViewCalendarRecord;

// A $Collation item: the header, its descriptors, then the item names that they point at.
typedef struct CollationHeader {  // 6
  uint16_t BufferSize;            // of the whole value behind the type word
  uint16_t Items;
  uint8_t Flags;  // COLLATION_UNIQUE
  uint8_t Signature;
} CollationHeader;

typedef struct CollationDescriptor {  // 7
  uint8_t Flags;
  uint8_t Signature;
  uint8_t KeyType;
  uint16_t NameOffset;  // in the names
  uint16_t NameLength;
} CollationDescriptor;

// The item $Info of a form, a record of byte form; the name of the field that a document is inherited into behind it.
typedef struct FormInfoRecord {  // 24
  BSIG Header;
  uint16_t LegacyBackground;
  uint16_t Flags;
  uint16_t Spare1;
  uint16_t Flags2;
  uint16_t InheritFieldNameLength;
  uint16_t BackgroundColor;
  uint16_t Spare2[5];
} FormInfoRecord;

// The item $AUTOLAUNCH of a form; the name of the field that the object is created in behind it.
typedef struct FormAutoLaunchRecord {  // 50
  WSIG Header;
  uint32_t ObjectType;
  uint32_t HideWhenFlags;
  uint32_t LaunchWhenFlags;
  uint32_t OleFlags;
  uint32_t CopyToFieldFlags;
  uint32_t Spare1;
  uint32_t Spare2;
  uint16_t FieldNameLength;
  uint32_t Spare3;
  uint16_t Spare4;
  uint16_t Spare5;
  uint8_t Spare6[8];
} FormAutoLaunchRecord;

// A field of a form, in its rich text. Behind it, without padding: value formula, translation formula, validation
// formula, name, description, text value (a LIST).
typedef struct FieldRecord {  // 36
  WSIG Header;
  uint16_t Flags;
  uint16_t DataType;  // of the field's value
  uint16_t ListDelimiters;
  NFMT NumberFormat;
  TFMT TimeFormat;
  uint32_t FontID;
  uint16_t DefaultValueLength;
  uint16_t InputTranslationLength;
  uint16_t TabOrder;
  uint16_t InputValidationLength;
  uint16_t NameLength;
  uint16_t DescriptionLength;
  uint16_t TextValueLength;
} FieldRecord;

// Directly ahead of a field. Behind it: HTML attributes formula, database and view that choices are taken from, choices
// formula.
typedef struct FieldExtensionRecord {  // 32
  WSIG Header;
  uint32_t Flags1;
  uint32_t Flags2;
  uint8_t Kept[6];
  uint16_t ChoicesViewColumnNumber;
  uint16_t HTMLAttributesLength;
  uint16_t ChoicesDatabaseLength;
  uint16_t ChoicesViewLength;
  uint16_t ChoicesFormulaLength;
  uint16_t FieldLength;  // of the field record that it was written with
  uint16_t Spare;
} FieldExtensionRecord;

#define VIEWCOLUMN_SIGNATURE 0x4356
#define VIEWCOLUMNEXTENSION_SIGNATURE 0x4357
#define VIEWTABLEEXTENSION_SIGNATURE 0x2BAD
#define COLLATION_SIGNATURE 0x44
#define COLLATION_UNIQUE 0x01  // keys are unique
#define COLLATIONDESCRIPTOR_SIGNATURE 0x66
#define COLLATE_DESCENDING 0x01
#define COLLATE_CASE_INSENSITIVE 0x02
#define COLLATE_ACCENT_INSENSITIVE 0x04
#define COLLATE_SEPARATE_VALUES 0x08
#define COLLATE_KEY_ITEM 0
#define COLLATE_KEY_CATEGORY 7

// Table flags
#define VIEWTABLE_COLLAPSE 0x0001
#define VIEWTABLE_FLAT 0x0002  // no response hierarchy
#define VIEWTABLE_CONFLICTS 0x0008

// Column flags, first word
#define VIEWCOLUMN_SORTED 0x0001
#define VIEWCOLUMN_CATEGORIZED 0x0002
#define VIEWCOLUMN_DESCENDING 0x0004
#define VIEWCOLUMN_HIDDEN 0x0008
#define VIEWCOLUMN_RESPONSES_ONLY 0x0010
#define VIEWCOLUMN_HIDE_DETAIL 0x0020
#define VIEWCOLUMN_ICONS 0x0040
#define VIEWCOLUMN_FIXED_WIDTH 0x0080
#define VIEWCOLUMN_RESORT_ASCENDING 0x0100
#define VIEWCOLUMN_RESORT_DESCENDING 0x0200
#define VIEWCOLUMN_TWISTIE 0x0400
#define VIEWCOLUMN_RESORT_VIEW 0x0800
#define VIEWCOLUMN_SECOND_SORT 0x1000
#define VIEWCOLUMN_SECOND_DESCENDING 0x2000
#define VIEWCOLUMN_CASE_INSENSITIVE 0x4000
#define VIEWCOLUMN_ACCENT_INSENSITIVE 0x8000

// Column flags, second word
#define VIEWCOLUMN_JUSTIFY_MASK 0x0003
#define VIEWCOLUMN_TOTAL_MASK 0x003C
#define VIEWCOLUMN_TITLE_JUSTIFY_SHIFT 6
#define VIEWCOLUMN_TITLE_JUSTIFY_MASK 0x00C0
#define VIEWCOLUMN_SEPARATE_VALUES 0x0100
#define VIEWCOLUMN_LINKS 0x2000

// Field flags that the engine goes by
#define FIELD_AUTHORS 0x0001
#define FIELD_EDITABLE 0x0002
#define FIELD_NAMES 0x0004
#define FIELD_WHEN_COMPOSED 0x0008  // with FIELD_COMPUTED
#define FIELD_READERS 0x0010
#define FIELD_COMPUTED 0x0100
#define FIELD_KEYWORDS 0x0200
#define FIELD_PROTECTED 0x0400
#define FIELD_REFERENCE 0x0800  // to the shared field of that name
#define FIELD_SIGN 0x1000
#define FIELD_SEAL 0x2000

// In the extension: a computed field is computed behind the validation of all fields
#define FIELDEXTENSION_COMPUTE_LATE 0x00080000

#endif
