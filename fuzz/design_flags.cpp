// The letters of $Flags: whatever was read and written again means the same.
#include "fuzz/support.h"
#include "vq/store/desflags.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string letters(reinterpret_cast<const char*>(data), size);
  VQDesignFlags flags;
  flags.Parse(letters);
  const std::string once = flags.Build();
  VQDesignFlags again;
  again.Parse(once);
  fuzz::Claim(again.Build() == once, "a second round changes nothing");
  for (int letter = 'A'; letter <= 'z'; ++letter) {
    const char c = static_cast<char>(letter);
    fuzz::Claim(again.HasLetter(c) == flags.HasLetter(c), "every letter survives");
  }
  for (const unsigned short slate_class : {4, 8, 0x200, 1}) {
    const auto kind = vq::DesignKindOf(slate_class, letters);
    fuzz::Claim(vq::IsValidDesignKind(slate_class, kind), "the kind is one of its class");
  }
  return 0;
}
