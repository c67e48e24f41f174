// VQDesignFlags: the letters of a design element's $Flags item.
//
// Known letters are bits in four words. Letters that have no bit are kept aside and written back behind the known
// ones. The letters 5 to 9 go with 4: they are dropped on reading and come back as "456789" when 4 is set.
#ifndef QUILLON_VQ_STORE_DESFLAGS_H
#define QUILLON_VQ_STORE_DESFLAGS_H

#include <string>
#include <string_view>

#include "vq/frame/vqcommon.h"

class VQDatabaseBody;
class VQSlateBody;

class VQ_API VQDesignFlags {
 public:
  VQDesignFlags();
  // A copy is dirty.
  VQDesignFlags(const VQDesignFlags& other);
  VQDesignFlags& operator=(const VQDesignFlags& other);

  // The first entry of a $Flags text list; an item of another type clears all letters. VQWARN_NOT_FOUND for none,
  // which leaves them as they are.
  VQSTATUS Read(const VQSlateBody* slate);
  // Writes $Flags as a text list and clears the dirty mark.
  VQSTATUS Write(VQSlateBody* slate);
  void Parse(std::string_view letters);
  std::string Build() const;

  // Letters outside the table are looked up among those kept aside.
  bool HasLetter(char letter) const;
  void SetLetter(char letter, bool on);
  // Bits by word, 0 to 3.
  bool HasBit(unsigned word, std::uint16_t mask) const { return (Words[word] & mask) != 0; }
  void SetBit(unsigned word, std::uint16_t mask, bool on);
  bool IsDirty() const { return (Words[3] & kDirty) != 0; }
  const std::string& GetOtherLetters() const { return Others; }

 private:
  static constexpr std::uint16_t kDirty = 0x8000;

  std::uint16_t Words[4];
  std::string Others;
};

namespace vq {

// The design kind that the letters mean for a slate class; classes without kinds give 0.
std::uint16_t DesignKindOf(std::uint16_t slate_class, std::string_view letters);
bool IsValidDesignKind(std::uint16_t slate_class, std::uint16_t kind);
// The letter that marks a kind in $Flags, 0 for the default kind of its class.
char LetterOfDesignKind(std::uint16_t slate_class, std::uint16_t kind);
// From the $Flags of a stored slate or of an open engine slate. Classes without kinds read nothing.
VQSTATUS ReadDesignKind(VQDatabaseBody* database, std::uint32_t id, std::uint16_t slate_class, std::uint16_t* kind);
VQSTATUS ReadDesignKindOf(ENGHANDLE slate, std::uint16_t slate_class, std::uint16_t* kind);

}  // namespace vq

#endif
