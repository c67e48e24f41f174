// Identifiers of the paragraph records in a table: its own, and one a column.
#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "vq/richtext/pabtree.h"
#include "vq/richtext/tablelayout.h"

namespace pab = vq::pab;

namespace {

// The definition that a column's cells use: the first one in the cell, or what its reference says.
VQRTObjectBody* OwnDefinition(const VQTableCellBody& cell) { return cell.FirstOfType(VQRTTYPE_PAB_DEFINITION); }

VQRTObjectBody* Behind(const VQRTObjectBody* object) {
  while (object && !object->GetNext()) object = object->GetParent();
  return object ? object->GetNext() : nullptr;
}

VQSTATUS PutInFront(VQRTBaseContainerBody& cell, VQRTObjectBody* object) {
  VQRTObjectBody* first = cell.GetFirstChild();
  return first ? first->InsertPreviousSibling(object) : cell.Append(object);
}

// Copies of a definition and what belongs to it, before an object.
VQSTATUS PutCopies(VQRTObjectBody& definition, VQRTObjectBody& before) {
  for (VQRTObjectBody* object : {&definition, pab::Companion(definition)}) {
    if (!object) continue;
    VQRTObject copy;
    if (VQSTATUS status = pab::CopyOf(object, &copy)) return status;
    if (VQSTATUS status = before.InsertPreviousSibling(copy.GetRTObjectBody())) return status;
  }
  return VQ_OK;
}

// New numbers for the identifiers of a table, column by column: two columns that share one get two.
class Renewal {
 public:
  explicit Renewal(const VQTableBody& table) : Table(table) {}

  // How many there are to renew.
  std::size_t Count() {
    static_cast<void>(ForEach([this](VQRTObjectBody&, std::int32_t column, vq::PABIDs ids) {
      Numbers[{column, ids.First}] = Numbers[{column, ids.Second}] = 0;
      return VQ_OK;
    }));
    return Numbers.size();
  }
  // Writes them, in the order of columns. Copies of the table's records may have come into it since they were counted.
  VQSTATUS Write(std::vector<std::uint16_t>::const_iterator next) {
    for (auto& [old, number] : Numbers) number = *next++;
    return ForEach([this](VQRTObjectBody& object, std::int32_t column, vq::PABIDs ids) {
      return vq::WritePABIDs(object, {Numbers[{column, ids.First}], Numbers[{column, ids.Second}]});
    });
  }

 private:
  template <typename Work>
  VQSTATUS ForEach(Work work) {
    for (VQTableCellBody* cell : Table.GetCells()) {
      for (VQRTObjectBody* object = cell->NextInTree(cell); object; object = cell->NextInTree(object)) {
        vq::PABIDs ids;
        // A record that ends before its identifier stays as it is.
        if (!object->IsType(VQRTTYPE_PAB_OBJECT) || vq::ReadPABIDs(*object, &ids) != VQ_OK) continue;
        if (VQSTATUS status = work(*object, cell->GetColumn(), ids)) return status;
      }
    }
    return VQ_OK;
  }

  const VQTableBody& Table;
  std::map<std::pair<std::int32_t, std::uint16_t>, std::uint16_t> Numbers;
};

}  // namespace

VQSTATUS VQTableBody::RenewIdentifiers(VQRTContainerBody& text) {
  Renewal renewal(*this);
  std::vector<std::uint16_t> pabids(renewal.Count());
  if (VQSTATUS status = text.GetNewPABIDs(&pabids)) return status;
  return renewal.Write(pabids.begin());
}

std::uint16_t VQTableBody::ColumnPABID(const VQTableCellBody& cell) {
  const VQRTObjectBody* definition = OwnDefinition(cell);
  const VQRTObjectBody* reference = definition ? definition : cell.GetFirstReference();
  return reference ? pab::IDsOf(*reference).Second : 0;
}

std::uint16_t VQTableCellBody::GetColumnPABID() const {
  const VQTableBody* table = GetTable();
  return table && Column >= 0 ? VQTableBody::ColumnPABID(*table->ColumnHeads()[static_cast<std::size_t>(Column)]) : 0;
}

VQTableBody::CellList VQTableBody::ColumnHeads() const {
  CellList heads(GetColumns());
  std::size_t missing = heads.size();
  for (VQTableCellBody* cell : GetCells()) {
    if (missing == 0) break;
    if (cell->GetColumn() < 0 || heads[static_cast<std::size_t>(cell->GetColumn())]) continue;
    heads[static_cast<std::size_t>(cell->GetColumn())] = cell;
    --missing;
  }
  return heads;
}

namespace {

struct User {
  VQRTObjectBody* Definition;
  VQRTObjectBody* Reference;
};

// References outside of the table that have only the table's definitions to go by.
std::vector<User> OutsideUsers(const VQTableBody& table, const VQRTBaseContainerBody& root,
                               const VQTableBody::CellList& heads, bool* used) {
  std::vector<User> users;
  pab::IndexOf index(root);
  VQRTObjectBody* behind = Behind(&table);
  for (const VQTableCellBody* head : heads) {
    const std::uint16_t pabid = VQTableBody::ColumnPABID(*head);
    VQRTObjectBody* right = index->FindUser(behind, pabid);
    VQRTObjectBody* left = index->FindUser(root.GetFirstChild(), pabid);
    if (left && !left->IsLeftOf(&table)) left = nullptr;
    for (VQRTObjectBody* user : {left, right}) {
      if (!user) continue;
      *used = true;
      VQRTObjectBody* definition = index->Find(user, VQRTTYPE_PAB_DEFINITION, pabid);
      if (definition && table.Contains(definition)) users.push_back({definition, user});
    }
  }
  return users;
}

// In front of a cell's content where the user opens the cell, so that it becomes the cell's column's.
VQRTObjectBody& PlaceFor(VQRTObjectBody& reference) {
  VQRTBaseContainerBody* cell = reference.GetParent();
  const bool opens = cell && cell->GetType() == VQRTTYPE_TABLE_CELL &&
                     static_cast<VQTableCellBody*>(cell)->GetFirstReference() == &reference;
  return opens ? *cell->GetFirstChild() : reference;
}

}  // namespace

VQSTATUS VQTableBody::MakeIdentifiersPrivate(const vq::TableLayout& layout, std::vector<std::uint16_t>* more) {
  const CellList heads = ColumnHeads();
  VQRTContainerBody& root = pab::Root(*this);
  std::set<std::uint16_t> pabids;
  bool shared = false;
  for (const VQTableCellBody* head : heads) {
    if (!head->GetFirstReference()) return VQERR_CELL_PABREFERENCE;
    shared = !OwnDefinition(*head) || !pabids.insert(ColumnPABID(*head)).second || shared;
  }
  const std::vector<User> users = Parent ? OutsideUsers(*this, root, heads, &shared) : std::vector<User>();
  Renewal renewal(*this);
  std::vector<std::uint16_t> fresh((more ? more->size() : 0) + (shared ? renewal.Count() : 0));
  if (VQSTATUS status = root.GetNewPABIDs(&fresh)) return status;
  const auto own = fresh.cbegin() + static_cast<std::ptrdiff_t>(more ? more->size() : 0);
  if (more) std::copy(fresh.cbegin(), own, more->begin());
  if (!shared) return VQ_OK;
  for (const User& user : users) {
    if (VQSTATUS status = PutCopies(*user.Definition, PlaceFor(*user.Reference))) return status;
  }
  for (std::size_t column = 0; column < heads.size(); ++column) {
    if (OwnDefinition(*heads[column])) continue;
    const std::uint16_t pabid = ColumnPABID(*heads[column]);
    VQRTObjectBody* first = heads[column]->GetFirstChild();
    if (VQRTObjectBody* found = pab::FindByPABID(root, first, VQRTTYPE_PAB_DEFINITION, pabid)) {
      if (VQSTATUS status = PutCopies(*found, *first)) return status;
      continue;
    }
    auto* made = new VQPABDefinitionBody();
    const VQRTObject hold(made);
    if (VQSTATUS status = made->SetRecord(layout.DefinitionOf(column, pabid))) return status;
    if (VQSTATUS status = first->InsertPreviousSibling(made)) return status;
  }
  return renewal.Write(own);
}

VQSTATUS VQTableBody::MoveColumnDefinition(VQTableCellBody& from, VQTableCellBody& to) {
  VQRTObjectBody* definition = OwnDefinition(from);
  if (!definition) return VQ_OK;
  VQRTObjectBody* companion = pab::Companion(*definition);
  // In front of each other: the definition comes first in the end.
  for (VQRTObjectBody* object : {companion, definition}) {
    if (!object) continue;
    const VQRTObject hold(object);
    if (VQSTATUS status = object->RemoveThis(1)) return status;
    if (VQSTATUS status = PutInFront(to, object)) return status;
  }
  return VQ_OK;
}
