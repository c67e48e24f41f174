// Composite records: signature numbers and framing.
//
// A value is a type word, then records, each on an even offset. A record starts with one of three headers:
//
//   byte form    [ sig | len ]                         high byte of the word neither 00 nor FF
//   word form    [ sig | FF ] [ len lo | len hi ]
//   long form    [ sig | 00 ] [ len, four bytes ]
//
// The length counts the header and not the padding byte behind a record of odd length; 0 stands for the header
// alone. The signature value is the whole word in word form, else its low byte.
#ifndef QUILLON_VQ_RICHTEXT_SIGNATURE_H
#define QUILLON_VQ_RICHTEXT_SIGNATURE_H

#include <cstdint>

#include "vq/store/storeword.h"

inline constexpr std::uint16_t SIG_CD_PARAGRAPH = 0x81;
inline constexpr std::uint16_t SIG_CD_PABDEFINITION = 0xFF82;
inline constexpr std::uint16_t SIG_CD_PABREFERENCE = 0x83;
inline constexpr std::uint16_t SIG_CD_FIELD_OLD = 0xFF84;
inline constexpr std::uint16_t SIG_CD_TEXT = 0xFF85;
inline constexpr std::uint16_t SIG_CD_BITMAPCOPY = 0xFF88;
inline constexpr std::uint16_t SIG_CD_FIELD = 0xFF8A;
inline constexpr std::uint16_t SIG_CD_FONTTABLE = 0xFF8B;
inline constexpr std::uint16_t SIG_CD_LINK_A = 0xFF91;
inline constexpr std::uint16_t SIG_CD_LINK_B = 0xFF92;
inline constexpr std::uint16_t SIG_CD_AGENT_JAVA = 0xFF93;
inline constexpr std::uint16_t SIG_CD_BITMAPHEADER = 0x95;
inline constexpr std::uint16_t SIG_CD_BITMAPSEGMENT = 0x96;
inline constexpr std::uint16_t SIG_CD_COLORTABLE = 0x97;
inline constexpr std::uint16_t SIG_CD_PATTERNTABLE = 0x98;
inline constexpr std::uint16_t SIG_CD_GRAPHIC = 0x99;
inline constexpr std::uint16_t SIG_CD_PMMETASEG = 0x9A;
inline constexpr std::uint16_t SIG_CD_WINMETASEG = 0x9B;
inline constexpr std::uint16_t SIG_CD_MACMETASEG = 0x9C;
inline constexpr std::uint16_t SIG_CD_CGMMETA = 0x9D;
inline constexpr std::uint16_t SIG_CD_PMMETAHEADER = 0x9E;
inline constexpr std::uint16_t SIG_CD_WINMETAHEADER = 0x9F;
inline constexpr std::uint16_t SIG_CD_MACMETAHEADER = 0xA0;
inline constexpr std::uint16_t SIG_CD_TABLEBEGIN = 0xA3;
inline constexpr std::uint16_t SIG_CD_TABLECELL = 0xA4;
inline constexpr std::uint16_t SIG_CD_TABLEEND = 0xA5;
inline constexpr std::uint16_t SIG_CD_STYLENAME = 0xA6;
inline constexpr std::uint16_t SIG_CD_OLEBEGIN = 0xFFA7;
inline constexpr std::uint16_t SIG_CD_OLEEND = 0xFFA8;
inline constexpr std::uint16_t SIG_CD_HOTSPOTBEGIN = 0xFFA9;
inline constexpr std::uint16_t SIG_CD_HOTSPOTEND_OLD = 0xAA;
inline constexpr std::uint16_t SIG_CD_BUTTON = 0xFFAB;
inline constexpr std::uint16_t SIG_CD_SECTIONBAR = 0xFFAC;
inline constexpr std::uint16_t SIG_CD_V4HOTSPOTBEGIN = 0xFFAD;
inline constexpr std::uint16_t SIG_CD_HOTSPOTEND = 0xAE;
inline constexpr std::uint16_t SIG_CD_FIELD_EXTENSION = 0xFFB0;
inline constexpr std::uint16_t SIG_CD_ACTION_PART = 0xFFB1;
inline constexpr std::uint16_t SIG_CD_PABHIDE = 0xFFBB;
inline constexpr std::uint16_t SIG_CD_PABFORMULAREF = 0xBC;
inline constexpr std::uint16_t SIG_CD_ACTIONBAR = 0xFFBE;
inline constexpr std::uint16_t SIG_CD_FORMPART = 0xFFBF;
inline constexpr std::uint16_t SIG_CD_TEXT_STYLE_EXT = 0xFFC3;
inline constexpr std::uint16_t SIG_CD_TRANSPARENCYTABLE = 0xC5;
inline constexpr std::uint16_t SIG_CD_ACTIVEOBJECT_PART = 0xFFCA;
inline constexpr std::uint16_t SIG_CD_ANCHOR = 0xFFCB;

namespace vq {

// A reader takes no record longer than this.
inline constexpr std::uint32_t kRecordLimit = 0x10400;
// Bytes of one item that the writer aims at, and the most that one text record may take.
inline constexpr std::uint32_t kItemTarget = 0xA000;

struct RecordHeader {
  std::uint16_t Signature;
  std::uint32_t Length;      // header included, padding byte not; a stored 0 reads as HeaderSize
  std::uint32_t HeaderSize;  // 2, 4 or 6
};

// Reads the header at `bytes`, of which `available` are there. False when they do not hold a header.
bool ReadRecordHeader(const unsigned char* bytes, std::uint32_t available, RecordHeader* header);

// Header bytes that the form of a signature takes.
constexpr std::uint32_t HeaderSize(std::uint16_t signature) {
  if ((signature & 0xFF00) == 0xFF00) return 4;
  return signature >= 0x95 && signature <= 0xA0 ? 6 : signature == SIG_CD_TRANSPARENCYTABLE ? 6 : 2;
}

// Writes a header in the form of its signature; a byte form keeps the low eight bits of the length.
void WriteRecordHeader(unsigned char* bytes, std::uint16_t signature, std::uint32_t length);

// Sets the length in the form that the header at `bytes` has.
void WriteRecordLength(unsigned char* bytes, std::uint32_t length);

constexpr std::uint32_t Padded(std::uint32_t length) { return length + (length & 1); }

inline std::uint32_t LoadDword(const unsigned char* bytes) {
  return LoadWord(bytes) | static_cast<std::uint32_t>(LoadWord(bytes + 2)) << 16;
}
inline void StoreDword(unsigned char* bytes, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

}  // namespace vq

#endif
