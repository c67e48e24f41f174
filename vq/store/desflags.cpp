#include "vq/store/desflags.h"

#include <algorithm>
#include <array>

#include "engine/memory.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "engine/text.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

struct LetterBit {
  char Letter;
  std::uint8_t Word;
  std::uint16_t Mask;
};

// In the order of writing: word 1, 2, 0, 3, each from its low bit up.
constexpr std::array<LetterBit, 43> kLetters{{
    {'A', 1, 0x0001}, {'C', 1, 0x0002}, {'D', 1, 0x0004}, {'H', 1, 0x0008}, {'N', 1, 0x0010}, {'U', 1, 0x0020},
    {'x', 1, 0x0040}, {'W', 1, 0x0080}, {'#', 1, 0x0100}, {'i', 1, 0x0200}, {'@', 1, 0x0400}, {'y', 1, 0x0800},
    {'c', 2, 0x0001}, {'F', 2, 0x0002}, {'G', 2, 0x0004}, {'o', 2, 0x0008}, {'p', 2, 0x0010}, {'T', 2, 0x0020},
    {'B', 0, 0x0001}, {'S', 0, 0x0002}, {'E', 0, 0x0004}, {'f', 0, 0x0008}, {'I', 0, 0x0010}, {'J', 0, 0x0020},
    {'L', 0, 0x0040}, {'q', 0, 0x0080}, {'X', 0, 0x0100}, {'s', 0, 0x0200}, {'t', 0, 0x0400}, {'u', 0, 0x0800},
    {'m', 0, 0x1000}, {'Q', 3, 0x0001}, {'M', 3, 0x0002}, {'O', 3, 0x0004}, {'d', 3, 0x0008}, {'P', 3, 0x0010},
    {'R', 3, 0x0020}, {'V', 3, 0x0040}, {'Y', 3, 0x0080}, {'n', 3, 0x0100}, {'w', 3, 0x0200}, {'3', 3, 0x0400},
    {'4', 3, 0x0800},
}};

// 4 stands for the whole run of digits from here to 9.
constexpr std::string_view kRunOfFour = "456789";

const LetterBit* FindLetter(char letter) {
  if (kRunOfFour.find(letter) != std::string_view::npos) letter = kRunOfFour.front();
  const auto* row =
      std::find_if(kLetters.begin(), kLetters.end(), [&](const LetterBit& r) { return r.Letter == letter; });
  return row != kLetters.end() ? row : nullptr;
}

struct KindLetter {
  std::uint16_t SlateClass;
  char Letter;  // 0: the class's default kind, which stands behind its other rows
  std::uint16_t Kind;
};

constexpr KindLetter kKinds[] = {
    {VQSLATECLASS_FORM, 'U', 2},   {VQSLATECLASS_FORM, 'W', 3},   {VQSLATECLASS_FORM, '#', 4},
    {VQSLATECLASS_FORM, 'i', 5},   {VQSLATECLASS_FORM, '@', 6},   {VQSLATECLASS_FORM, 'y', 7},
    {VQSLATECLASS_FORM, 0, 1},     {VQSLATECLASS_VIEW, 'G', 15},  {VQSLATECLASS_VIEW, 0, 14},
    {VQSLATECLASS_AGENT, 'X', 11}, {VQSLATECLASS_AGENT, 's', 9},  {VQSLATECLASS_AGENT, 't', 10},
    {VQSLATECLASS_AGENT, 'O', 12}, {VQSLATECLASS_AGENT, 'm', 13}, {VQSLATECLASS_AGENT, 0, 8},
};

std::uint16_t ClassBits(std::uint16_t slate_class) {
  const auto bits = static_cast<std::uint16_t>(slate_class & VQSLATECLASS_ALL);
  return bits == (VQSLATECLASS_VIEW | VQSLATECLASS_PRIVATE) ? VQSLATECLASS_VIEW : bits;
}

bool HasKinds(std::uint16_t slate_class) {
  const std::uint16_t bits = ClassBits(slate_class);
  return bits == VQSLATECLASS_FORM || bits == VQSLATECLASS_VIEW || bits == VQSLATECLASS_AGENT;
}

}  // namespace

VQDesignFlags::VQDesignFlags() : Words{} {}

VQDesignFlags::VQDesignFlags(const VQDesignFlags& other) : Words{} { *this = other; }

VQDesignFlags& VQDesignFlags::operator=(const VQDesignFlags& other) {
  if (this == &other) return *this;
  std::copy(std::begin(other.Words), std::end(other.Words), std::begin(Words));
  Words[3] |= kDirty;
  Others = other.Others;
  return *this;
}

void VQDesignFlags::Parse(std::string_view letters) {
  std::fill(std::begin(Words), std::end(Words), 0);
  Others.clear();
  for (const char letter : letters) {
    if (letter >= '5' && letter <= '9') continue;
    const LetterBit* row = FindLetter(letter);
    if (row != nullptr) {
      Words[row->Word] |= row->Mask;
    } else {
      Others.push_back(letter);
    }
  }
}

std::string VQDesignFlags::Build() const {
  std::string letters;
  for (const LetterBit& row : kLetters) {
    if ((Words[row.Word] & row.Mask) == 0) continue;
    if (row.Letter == kRunOfFour.front()) {
      letters += kRunOfFour;
    } else {
      letters.push_back(row.Letter);
    }
  }
  return letters + Others;
}

VQSTATUS VQDesignFlags::Read(const VQSlateBody* slate) {
  VQ_ASSERT_TEXT(slate, "slate", "DESFLAGS");
  vq::ItemPlace place;
  const VQSTATUS status = slate->PlaceOf("$Flags", &place);
  if (status != VQ_OK) return status;
  Parse(place.Type == TYPE_TEXT_LIST ? slate->TextOf("$Flags") : std::string());
  return VQ_OK;
}

VQSTATUS VQDesignFlags::Write(VQSlateBody* slate) {
  VQ_ASSERT_TEXT(slate, "slate", "DESFLAGS");
  const std::string letters = Build();
  if (letters.size() > 0xFFFF - 6) return VQERR_TEXT_TOO_LONG;
  std::string value(4, '\0');
  auto* bytes = reinterpret_cast<unsigned char*>(value.data());
  vq::StoreWord(bytes, 1);
  vq::StoreWord(bytes + 2, static_cast<unsigned>(letters.size()));
  value += letters;
  const VQSTATUS status = slate->CreateItem("$Flags", TYPE_TEXT_LIST, value.data(), value.size(),
                                            VQITEMFLAGS_SIGN | VQITEMFLAGS_SUMMARY, VQITEMOPTION_REPLACE, nullptr);
  if (status == VQ_OK) Words[3] &= static_cast<std::uint16_t>(~kDirty);
  return status;
}

bool VQDesignFlags::HasLetter(char letter) const {
  const LetterBit* row = FindLetter(letter);
  return row != nullptr ? HasBit(row->Word, row->Mask) : Others.find(letter) != std::string::npos;
}

void VQDesignFlags::SetBit(unsigned word, std::uint16_t mask, bool on) {
  Words[word] = static_cast<std::uint16_t>(on ? Words[word] | mask : Words[word] & ~mask);
  Words[3] |= kDirty;
}

void VQDesignFlags::SetLetter(char letter, bool on) {
  const LetterBit* row = FindLetter(letter);
  if (row != nullptr) return SetBit(row->Word, row->Mask, on);
  std::erase(Others, letter);
  if (on) Others.push_back(letter);
  Words[3] |= kDirty;
}

namespace vq {

std::uint16_t DesignKindOf(std::uint16_t slate_class, std::string_view letters) {
  for (const KindLetter& row : kKinds) {
    if (row.SlateClass != ClassBits(slate_class)) continue;
    if (row.Letter == 0 || letters.find(row.Letter) != std::string_view::npos) return row.Kind;
  }
  return 0;
}

bool IsValidDesignKind(std::uint16_t slate_class, std::uint16_t kind) {
  if (!HasKinds(slate_class)) return kind == 0;
  return std::any_of(std::begin(kKinds), std::end(kKinds), [&](const KindLetter& row) {
    return row.SlateClass == ClassBits(slate_class) && row.Kind == kind;
  });
}

char LetterOfDesignKind(std::uint16_t slate_class, std::uint16_t kind) {
  for (const KindLetter& row : kKinds) {
    if (row.SlateClass == ClassBits(slate_class) && row.Kind == kind) return row.Letter;
  }
  return 0;
}

VQSTATUS ReadDesignKindOf(ENGHANDLE slate, std::uint16_t slate_class, std::uint16_t* kind) {
  *kind = 0;
  if (!HasKinds(slate_class)) return VQ_OK;
  std::uint16_t type = 0;
  std::uint32_t size = 0;
  constexpr std::string_view kName = "$Flags";
  const ENGSTATUS result = EngSlateGetItemInfo(slate, EngineText(kName), kName.size(), nullptr, &type, nullptr, &size);
  if (result != ENG_OK && (result & ENG_ERROR_MASK) != ENG_ERR_NO_ITEM) return FromEngine(result);
  char letters[256];
  std::uint16_t length = 0;
  if (result == ENG_OK && (type == TYPE_TEXT || type == TYPE_TEXT_LIST) && size > 2) {
    length = EngItemGetText(slate, EngineText("$Flags"), reinterpret_cast<ENGCHAR*>(letters), sizeof(letters));
  }
  *kind = DesignKindOf(slate_class, {letters, length});
  return VQ_OK;
}

VQSTATUS ReadDesignKind(VQDatabaseBody* database, std::uint32_t id, std::uint16_t slate_class, std::uint16_t* kind) {
  *kind = 0;
  if (!HasKinds(slate_class)) return VQ_OK;
  ENGHANDLE slate = 0;
  const ENGSTATUS result = EngSlateOpen(database->GetHandle(), id, 0, &slate);
  if (result != ENG_OK) return FromEngine(result);
  const VQSTATUS status = ReadDesignKindOf(slate, slate_class, kind);
  EngSlateClose(slate);
  return status;
}

}  // namespace vq
