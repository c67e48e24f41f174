#include "vq/views/vfposition.h"

#include <algorithm>

#include "engine/collection.h"
#include "vq/store/storetext.h"

namespace {

const COLLECTIONPOSITION* Contents(const VQVFPosition& position) {
  if (!position.IsSet()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return position.GetPosition();
}

}  // namespace

VQVFPosition::VQVFPosition() { Reset(); }

VQVFPosition::VQVFPosition(const COLLECTIONPOSITION* position) : VQVFPosition() { *this = position; }

VQVFPosition::VQVFPosition(const VQVFPosition& other) : VQQuillonClass(other) {
  if (other.IsSet()) Position = std::make_unique<COLLECTIONPOSITION>(*other.Position);
}

VQVFPosition::~VQVFPosition() = default;

VQVFPosition& VQVFPosition::operator=(const VQVFPosition& other) {
  if (this == &other) return *this;
  VQQuillonClass::operator=(other);
  Position = other.IsSet() ? std::make_unique<COLLECTIONPOSITION>(*other.Position) : nullptr;
  return *this;
}

VQVFPosition& VQVFPosition::operator=(const COLLECTIONPOSITION* position) {
  if (position == nullptr) vq::Throw(VQERR_NULL_POINTER);
  if (position->Level >= ENG_COLLECTION_LEVELS) vq::Throw(VQERR_OUT_OF_RANGE);
  auto taken = std::make_unique<COLLECTIONPOSITION>();
  taken->Level = position->Level;
  taken->MinLevel = position->MinLevel;
  taken->MaxLevel = position->MaxLevel;
  std::copy_n(position->Tumbler, position->Level + 1, taken->Tumbler);
  Position = std::move(taken);
  return *this;
}

VQCLASSID VQVFPosition::GetClassID() const { return VQCLASSID_VQVFPOSITION; }

void VQVFPosition::Reset() {
  auto fresh = std::make_unique<COLLECTIONPOSITION>();
  fresh->MaxLevel = ENG_COLLECTION_NO_LIMIT;
  fresh->Tumbler[0] = 1;
  Position = std::move(fresh);
}

int VQVFPosition::Compare(const COLLECTIONPOSITION* other) const {
  if (other == nullptr) vq::Throw(VQERR_NULL_POINTER);
  if (!IsSet()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  const int levels = std::min({Position->Level, other->Level, static_cast<uint16_t>(ENG_COLLECTION_LEVELS - 1)});
  for (int level = 0; level <= levels; ++level) {
    if (Position->Tumbler[level] != other->Tumbler[level]) {
      return Position->Tumbler[level] < other->Tumbler[level] ? -1 : 1;
    }
  }
  if (Position->Level == other->Level) return 0;
  return Position->Level < other->Level ? -1 : 1;
}

int VQVFPosition::operator==(const COLLECTIONPOSITION* other) const { return Compare(other) == 0; }

int VQVFPosition::operator==(const VQVFPosition& other) const { return Compare(Contents(other)) == 0; }
int VQVFPosition::operator<(const VQVFPosition& other) const { return Compare(Contents(other)) < 0; }
int VQVFPosition::operator>(const VQVFPosition& other) const { return Compare(Contents(other)) > 0; }

unsigned long VQVFPosition::GetDocLevel() const { return Contents(*this)->Level + 1UL; }

VQString VQVFPosition::GetDocNumber(const VQString& separator) const {
  const COLLECTIONPOSITION* position = Contents(*this);
  std::string number;
  for (int level = 0; level <= position->Level; ++level) {
    if (level > 0) number += vq::ViewOf(separator);
    number += std::to_string(position->Tumbler[level]);
  }
  return vq::StringOf(number);
}
