#include "qcore/index/directory.h"

#include <algorithm>

#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

constexpr std::uint8_t kForm = 1;
}  // namespace

Directory::Part& Directory::PartOf(std::uint32_t id) {
  const std::uint32_t number = id / kIdStep / kPartIds;
  if (number >= parts_.size()) parts_.resize(number + 1);
  std::unique_ptr<Part>& part = parts_[number];
  if (part) return *part;
  const std::vector<std::uint8_t> stored = reader_ ? reader_(number) : std::vector<std::uint8_t>();
  part = stored.empty() ? std::make_unique<Part>() : Decode(stored);
  if (!part) throw IndexFault{ENG_ERR_DB_DAMAGED};
  return *part;
}

bool Directory::HasPart(std::uint32_t id) const {
  const std::uint32_t number = id / kIdStep / kPartIds;
  return (number < parts_.size() && parts_[number]) || (reader_ && !reader_(number).empty());
}

PageNumber Directory::LeafOf(std::uint32_t id) { return PartOf(id).first[PlaceOf(id)]; }

void Directory::Came(std::uint32_t id, PageNumber leaf) {
  Part& part = PartOf(id);
  const std::uint16_t place = PlaceOf(id);
  PageNumber& first = part.first[place];
  if (first == leaf) return;
  part.changed = true;
  if (first == 0) {
    first = leaf;
    return;
  }
  const Further further{place, leaf};
  const auto at = std::lower_bound(part.further.begin(), part.further.end(), further);
  if (at == part.further.end() || *at != further) part.further.insert(at, further);
}

void Directory::Went(std::uint32_t id, PageNumber leaf) {
  Part& part = PartOf(id);
  const std::uint16_t place = PlaceOf(id);
  part.changed = true;
  auto at = std::lower_bound(part.further.begin(), part.further.end(), Further{place, leaf});
  if (at != part.further.end() && *at == Further{place, leaf}) {
    part.further.erase(at);
    return;
  }
  if (part.first[place] != leaf) return;
  part.first[place] = 0;
  at = std::lower_bound(part.further.begin(), part.further.end(), Further{place, 0});
  if (at == part.further.end() || at->place != place) return;
  part.first[place] = at->leaf;
  part.further.erase(at);
}

std::vector<std::uint32_t> Directory::Ids(std::uint32_t highest) {
  std::vector<std::uint32_t> ids;
  for (std::uint32_t first = 0; first <= highest; first += kIdStep * kPartIds) {
    if (HasPart(first)) {
      const Part& part = PartOf(first);
      for (std::uint32_t place = 0; place < kPartIds; ++place) {
        if (part.first[place] != 0) ids.push_back(first + kIdStep * place);
      }
    }
    if (UINT32_MAX - first < kIdStep * kPartIds) break;
  }
  return ids;
}

void Directory::Clear() { parts_.clear(); }

std::vector<std::uint8_t> Directory::Encode(const Part& part) {
  std::vector<std::uint8_t> bytes{kForm};
  WireWriter writer(&bytes);
  for (const PageNumber leaf : part.first) writer.Put(leaf);
  writer.PutVarint(part.further.size());
  for (const Further& further : part.further) {
    writer.Put(further.place);
    writer.Put(further.leaf);
  }
  return bytes;
}

std::unique_ptr<Directory::Part> Directory::Decode(Bytes bytes) {
  WireReader reader(bytes);
  if (reader.Take<std::uint8_t>() != kForm) return nullptr;
  auto part = std::make_unique<Part>();
  for (PageNumber& leaf : part->first) leaf = reader.Take<std::uint32_t>();
  const std::uint64_t count = reader.TakeVarint();
  if (count > bytes.size()) return nullptr;
  for (std::uint64_t i = 0; i < count; ++i) {
    Further further{};
    further.place = reader.Take<std::uint16_t>();
    further.leaf = reader.Take<std::uint32_t>();
    if (further.place >= kPartIds || (i != 0 && !(part->further.back() < further))) return nullptr;
    part->further.push_back(further);
  }
  return reader.good() && reader.at_end() ? std::move(part) : nullptr;
}

void Directory::ForEachChanged(
    const std::function<void(std::uint32_t, const std::vector<std::uint8_t>&)>& visit) const {
  for (std::size_t number = 0; number < parts_.size(); ++number) {
    if (parts_[number] && parts_[number]->changed) visit(static_cast<std::uint32_t>(number), Encode(*parts_[number]));
  }
}

void Directory::MarkKept() {
  for (const std::unique_ptr<Part>& part : parts_) {
    if (part) part->changed = false;
  }
}

std::size_t Directory::Memory() const {
  std::size_t memory = parts_.capacity() * sizeof parts_[0];
  for (const std::unique_ptr<Part>& part : parts_) {
    if (part) memory += sizeof(Part) + 4 * part->first.capacity() + sizeof(Further) * part->further.capacity();
  }
  return memory;
}

}  // namespace qcore::index
