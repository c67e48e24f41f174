// Characters and bytes of runs: counts, places, searches.
#include <algorithm>
#include <vector>

#include "engine/text.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

namespace {

// What may stand behind a match and decides whether it ends between two characters.
constexpr std::uint32_t kLongestCharacter = 4;

// The start of the character before `at`, or of one further left: only where a byte starts a character whatever
// comes before it.
std::uint32_t StartBefore(const unsigned char* text, std::uint32_t at) {
  do --at;
  while (at > 0 && (text[at] & 0xC0) == 0x80);
  return at;
}

std::uint32_t CountCharacters(const unsigned char* text, std::uint32_t from, std::uint32_t to) {
  std::uint32_t count = 0;
  if (to > from && EngTextSpanChars(text + from, to - from, &count) != 0) vq::Throw(VQERR_STRING_SIZE);
  return count;
}

}  // namespace

VQStylizedTextBody::Characters* VQStylizedTextBody::Known() const {
  if (!RTChars || Counted) return RTChars.get();
  RTChars->Count = Characters::kUnknown;
  RTChars->Last = {};
  Counted = true;
  return RTChars.get();
}

VQStylizedTextBody::Place VQStylizedTextBody::LastPlace(const TextBytes& text) const {
  const Characters* known = Known();
  return known && known->Last.Bytes <= text.Size ? known->Last : Place{};
}

unsigned long VQStylizedTextBody::GetCharacterCount() const {
  Characters* known = Known();
  if (known && known->Count != Characters::kUnknown) return known->Count;
  const TextBytes bytes(*this);
  const std::uint32_t count = CountCharacters(bytes.Text, 0, bytes.Size);
  if (known) known->Count = count;
  return count;
}

VQStylizedTextBody::Place VQStylizedTextBody::PlaceOf(const TextBytes& text, std::uint32_t characters) const {
  Place place = LastPlace(text);
  if (place.Characters > characters) {
    if (place.Characters - characters > characters) place = {};
    while (place.Characters > characters) {
      const std::uint32_t start = StartBefore(text.Text, place.Bytes);
      place.Characters -= CountCharacters(text.Text, start, place.Bytes);
      place.Bytes = start;
    }
  }
  std::uint32_t span = 0;
  const std::uint32_t missing = characters - place.Characters, rest = text.Size - place.Bytes;
  if (missing > 0 && rest > 0) {
    const bool all = EngTextSpanBytes(text.Text + place.Bytes, rest, missing, &span) == 0;
    place = {all ? characters : place.Characters + CountCharacters(text.Text, place.Bytes, text.Size),
             place.Bytes + span};
  }
  if (Characters* known = Known()) known->Last = place;
  return place;
}

VQStylizedTextBody::Place VQStylizedTextBody::PlaceAtByte(const TextBytes& text, std::uint32_t bytes) const {
  const Place last = LastPlace(text);
  Place place = {0, bytes};
  if (bytes >= last.Bytes) {
    place.Characters = last.Characters + CountCharacters(text.Text, last.Bytes, bytes);
  } else if (last.Bytes - bytes < bytes) {
    place.Characters = last.Characters - CountCharacters(text.Text, bytes, last.Bytes);
  } else {
    place.Characters = CountCharacters(text.Text, 0, bytes);
  }
  if (Characters* known = Known()) known->Last = place;
  return place;
}

VQSTATUS VQStylizedTextBody::SpanBytes(unsigned long characters, std::uint32_t* size) const {
  *size = 0;
  if (characters == 0) return VQ_OK;
  if (characters > vq::kRecordLimit) return VQERR_INVALID_PARAMETER;
  const Place place = PlaceOf(TextBytes(*this), static_cast<std::uint32_t>(characters));
  if (place.Characters != characters) return VQERR_INVALID_PARAMETER;
  *size = place.Bytes;
  return VQ_OK;
}

bool VQStylizedTextBody::HasPlace(unsigned long offset) const {
  std::uint32_t bytes = 0;
  return offset == 1 || (offset > 1 && SpanBytes(offset, &bytes) == VQ_OK);
}

namespace {

struct Search {
  const unsigned char* Text;
  std::uint32_t Size;
  std::vector<unsigned char> Pattern;
  std::uint32_t Flags;
  std::uint32_t From, Limit;  // where a match may start
};

bool FirstMatch(const Search& search, std::uint32_t* found) {
  const ENGCHAR* at = search.Text + search.From;
  const auto pattern = static_cast<std::uint32_t>(search.Pattern.size());
  std::uint32_t end = search.Size, matched = 0;
  // Accents that a match passes over may make it longer than its pattern.
  if (search.Flags == 0) end = std::min(end, search.Limit + pattern + kLongestCharacter);
  if (search.From >= end) return false;
  if (EngTextSearch(&at, end - search.From, search.Pattern.data(), pattern, search.Flags, &matched) != 0) return false;
  const auto hit = static_cast<std::uint32_t>(at - search.Text);
  if (hit >= search.Limit) return false;
  *found = hit;
  return true;
}

bool LastMatch(Search search, std::uint32_t* found) {
  bool any = false;
  // Further and further back, so that what is near costs little.
  for (std::uint32_t reach = 64; !any && search.Limit > 0; reach *= 4) {
    const std::uint32_t start = search.Limit > reach ? StartBefore(search.Text, search.Limit - reach + 1) : 0;
    search.From = start;
    std::uint32_t step = 0;
    while (FirstMatch(search, found)) {
      any = true;
      EngTextSpanBytes(search.Text + *found, search.Size - *found, 1, &step);
      search.From = *found + step;
    }
    search.Limit = start;
  }
  return any;
}

}  // namespace

VQSTATUS VQStylizedTextBody::FindText(const VQString& text, unsigned long options, unsigned long start, int backwards,
                                      unsigned long* offset) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!offset || text.GetBufLength() == 0) return VQERR_INVALID_PARAMETER;
  const TextBytes bytes(*this);
  if (bytes.Size == 0) return VQWARN_NOT_FOUND;
  Search search = {bytes.Text, bytes.Size, {text.GetBuf(), text.GetBuf() + text.GetBufLength()}, 0, 0, bytes.Size};
  std::replace(search.Pattern.begin(), search.Pattern.end(), static_cast<unsigned char>('\n'),
               static_cast<unsigned char>(0));
  search.Flags = static_cast<std::uint32_t>(options) & (ENG_COMPARE_IGNORE_CASE | ENG_COMPARE_IGNORE_ACCENTS);
  if (start > 1 || backwards) {
    // Behind the end of the run: nothing to find forwards, everything backwards.
    const unsigned long characters = std::min<unsigned long>(backwards ? start : start - 1, bytes.Size);
    (backwards ? search.Limit : search.From) = PlaceOf(bytes, static_cast<std::uint32_t>(characters)).Bytes;
  }
  std::uint32_t hit = 0;
  if (!(backwards ? LastMatch(search, &hit) : FirstMatch(search, &hit))) return VQWARN_NOT_FOUND;
  *offset = PlaceAtByte(bytes, hit).Characters + 1UL;
  return VQ_OK;
}
