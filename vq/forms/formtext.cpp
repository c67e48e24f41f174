#include "vq/forms/formtext.h"

#include <algorithm>

#include "engine/database.h"
#include "engine/idtable.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/desflags.h"
#include "vq/store/storetext.h"

namespace vq {

namespace {

// Of a stored design element, its names. One that went meanwhile has none.
VQSTATUS NamesOf(VQDatabaseBody* database, std::uint32_t id, unsigned long type, std::vector<std::string>* names) {
  std::uint16_t kind = 0;
  const auto slate_class = static_cast<std::uint16_t>(type);
  VQSTATUS status = ReadDesignKind(database, id, slate_class, &kind);
  ENGHANDLE handle = 0;
  if (status == VQ_OK && kind != type >> 16) return VQ_OK;
  if (status == VQ_OK) status = FromEngine(EngSlateOpen(database->GetHandle(), id, 0, &handle));
  if (status == ENG_ERR_SLATE_DELETED) return VQ_OK;
  if (status != VQ_OK) return status;
  VQSlateBody* made = nullptr;
  try {
    made = new VQSlateBody(database, type, handle);
  } catch (VQSTATUS thrown) {
    EngSlateClose(handle);
    return thrown;
  }
  const VQSlate slate(made);
  *names = made->NamesInTitle();
  return VQ_OK;
}

// Whether some element of the class has the name, whatever its kind.
VQSTATUS IsTaken(VQDatabaseBody* database, unsigned long type, const std::string& name, bool* taken) {
  std::uint32_t id = 0;
  const ENGSTATUS result =
      EngDesignFind(database->GetHandle(), static_cast<std::uint16_t>(type), EngineText(name), &id);
  if (result == ENG_OK) *taken = true;
  return (result & ENG_ERROR_MASK) == ENG_ERR_NO_DESIGN_ELEMENT ? VQ_OK : FromEngine(result);
}

// Element by element.
VQSTATUS CheckAll(VQDatabaseBody* database, unsigned long type, std::uint32_t own,
                  const std::vector<std::string>& names, VQSTATUS exists) {
  ENGHANDLE table = 0;
  VQSTATUS status =
      FromEngine(EngDbSearchClass(database->GetHandle(), static_cast<std::uint16_t>(type), nullptr, nullptr, &table));
  if (status != VQ_OK) return status;
  std::uint32_t id = 0;
  for (int more = EngIdTableScan(table, 1, &id); more != 0 && status == VQ_OK; more = EngIdTableScan(table, 0, &id)) {
    if (id == own) continue;
    std::vector<std::string> theirs;
    status = NamesOf(database, id, type, &theirs);
    for (const std::string& name : theirs) {
      if (std::find(names.begin(), names.end(), name) != names.end()) status = exists;
    }
  }
  EngIdTableDestroy(table);
  return status;
}

}  // namespace

std::vector<std::string> SplitNames(std::string_view names) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= names.size();) {
    const std::size_t end = std::min(names.find_first_of("|;", at), names.size());
    if (at == 0 || end > at) parts.emplace_back(names.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

std::string TextListValue(const std::vector<std::string>& entries) {
  std::string value(2 + 2 * entries.size(), '\0');
  auto* words = reinterpret_cast<unsigned char*>(value.data());
  StoreWord(words, static_cast<unsigned>(entries.size()));
  for (const std::string& entry : entries) {
    words += 2;
    StoreWord(words, static_cast<unsigned>(entry.size()));
  }
  for (const std::string& entry : entries) value += entry;
  return value;
}

VQSTATUS ReadTextEntries(const VQText& text, std::vector<std::string>* entries) {
  if (text.IsNull()) return VQ_OK;
  std::vector<VQString> strings;
  const VQSTATUS status = static_cast<VQTextBody*>(text.GetItemBody())->ReadEntries(&strings);
  for (const VQString& string : strings) {
    entries->emplace_back(ViewOf(string));
    std::replace(entries->back().begin(), entries->back().end(), '\n', '\0');
  }
  return status;
}

VQSTATUS FindBodyText(VQSlateBody* slate, VQRichTextBody** text) {
  VQItemBody* item = nullptr;
  if (VQSTATUS status = slate->FindItem(kFormBodyItem, &item)) return status;
  const VQItem hold(item);
  if (item->GetClassID() != VQCLASSID_VQRICHTEXTBODY) return VQERR_INCORRECT_ITEM_TYPE;
  slate->KeepItem(item);
  *text = static_cast<VQRichTextBody*>(item);
  return VQ_OK;
}

VQSTATUS FindOrMakeBodyText(VQSlateBody* slate, VQRichTextBody** text) {
  const VQSTATUS status = FindBodyText(slate, text);
  if (status != VQWARN_NOT_FOUND) return status;
  const VQSTATUS made = slate->CreateItem(kFormBodyItem, TYPE_COMPOSITE, nullptr, 0, 0, VQITEMOPTION_APPEND, nullptr);
  return made == VQ_OK ? FindBodyText(slate, text) : made;
}

VQSTATUS CheckNamesAreFree(VQDatabaseBody* database, unsigned long type, std::uint32_t own,
                           const std::vector<std::string>& names, VQSTATUS exists) {
  if (!database->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  bool taken = false;
  for (const std::string& name : names) {
    if (VQSTATUS status = IsTaken(database, type, name, &taken)) return status;
  }
  return taken ? CheckAll(database, type, own, names, exists) : VQ_OK;
}

}  // namespace vq
