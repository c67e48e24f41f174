// VQVFPosition: a place in the tree of rows.
#include "vq/views/vfposition.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <string>

#include "engine/collection.h"
#include "vq/store/storetext.h"

namespace {

constexpr unsigned kLastLevel = ENG_COLLECTION_LEVELS - 1;

std::unique_ptr<COLLECTIONPOSITION> Allocate() {
  std::unique_ptr<COLLECTIONPOSITION> position(new (std::nothrow) COLLECTIONPOSITION());
  if (position == nullptr) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  return position;
}

const COLLECTIONPOSITION* Contents(const VQVFPosition& position) {
  if (!position.IsSet()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return position.GetPosition();
}

}  // namespace

VQVFPosition::VQVFPosition() : Position(Allocate()) { Reset(); }
VQVFPosition::VQVFPosition(const COLLECTIONPOSITION* position) : Position(Allocate()) { *this = position; }

VQVFPosition::VQVFPosition(const VQVFPosition& other) : VQQuillonClass(other) {
  if (!other.IsSet()) return;
  Position = Allocate();
  *this = other.GetPosition();
}

VQVFPosition::~VQVFPosition() = default;

VQCLASSID VQVFPosition::GetClassID() const { return VQCLASSID_VQVFPOSITION; }

VQVFPosition& VQVFPosition::operator=(const VQVFPosition& other) {
  if (this == &other) return *this;
  VQQuillonClass::operator=(other);
  if (!other.IsSet()) {
    Position.reset();
    return *this;
  }
  return *this = other.GetPosition();
}

VQVFPosition& VQVFPosition::operator=(const COLLECTIONPOSITION* position) {
  if (position == nullptr) vq::Throw(VQERR_NULL_POINTER);
  if (position->Level > kLastLevel) vq::Throw(VQERR_OUT_OF_RANGE);
  if (!IsSet()) Position = Allocate();
  std::memmove(Position.get(), position, (position->Level + std::size_t{2}) * sizeof(std::uint32_t));
  return *this;
}

int VQVFPosition::Compare(const COLLECTIONPOSITION* other) const {
  if (other == nullptr) vq::Throw(VQERR_NULL_POINTER);
  const COLLECTIONPOSITION* own = Contents(*this);
  const unsigned last = std::min({unsigned{own->Level}, unsigned{other->Level}, kLastLevel});
  for (unsigned i = 0; i <= last; ++i) {
    if (own->Tumbler[i] != other->Tumbler[i]) return own->Tumbler[i] < other->Tumbler[i] ? -1 : 1;
  }
  if (own->Level == other->Level) return 0;
  return own->Level < other->Level ? -1 : 1;
}

int VQVFPosition::operator==(const COLLECTIONPOSITION* other) const { return Compare(other) == 0; }
int VQVFPosition::operator==(const VQVFPosition& other) const { return Compare(Contents(other)) == 0; }
int VQVFPosition::operator<(const VQVFPosition& other) const { return Compare(Contents(other)) < 0; }
int VQVFPosition::operator>(const VQVFPosition& other) const { return Compare(Contents(other)) > 0; }

unsigned long VQVFPosition::GetDocLevel() const { return Contents(*this)->Level + 1UL; }

VQString VQVFPosition::GetDocNumber(const VQString& separator) const {
  const COLLECTIONPOSITION* own = Contents(*this);
  std::string number = std::to_string(own->Tumbler[0]);
  for (unsigned i = 1; i <= own->Level; ++i) {
    number += vq::ViewOf(separator);
    number += std::to_string(own->Tumbler[i]);
  }
  return vq::StringOf(number);
}

void VQVFPosition::Reset() {
  if (!IsSet()) Position = Allocate();
  Position->Level = 0;
  Position->MinLevel = 0;
  Position->MaxLevel = ENG_COLLECTION_NO_LIMIT;
  Position->Tumbler[0] = 1;
}
