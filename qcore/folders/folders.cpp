// The slates of folders: making, copying and naming them.
#include "qcore/folders/folders.h"

#include <algorithm>

#include "engine/slate.h"
#include "qcore/memory/memory.h"
#include "qcore/slates/readers.h"
#include "qcore/slates/remove.h"
#include "qcore/slates/search.h"
#include "qcore/slates/slate.h"
#include "qcore/text/textlist.h"

namespace qcore {

namespace {

constexpr std::uint16_t kViewClass = 0x0008;
constexpr std::uint16_t kPrivateClass = 0x1000;
constexpr std::uint16_t kTypeText = 0x0500;
constexpr std::uint16_t kDesignItem = ENG_ITEM_SIGN | ENG_ITEM_SUMMARY;
constexpr std::size_t kLongestName = 255;
constexpr std::string_view kSharingLetters = "VpoF3";

Bytes AsBytes(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

// A slate handle for as long as it is needed.
class OpenedSlate {
 public:
  OpenedSlate() = default;
  OpenedSlate(const OpenedSlate&) = delete;
  OpenedSlate& operator=(const OpenedSlate&) = delete;
  ~OpenedSlate() {
    if (handle_ != 0) static_cast<void>(Slate::Close(handle_));
  }
  ENGHANDLE* target() { return &handle_; }
  Slate* operator->() const { return Slate::Find(handle_); }
  Slate& operator*() const { return *Slate::Find(handle_); }

 private:
  ENGHANDLE handle_ = 0;
};

// Several changes as one: a transaction of its own, or the client's, which then has to undo by itself.
class Whole {
 public:
  explicit Whole(Database& database) : database_(database) {}
  Whole(const Whole&) = delete;
  Whole& operator=(const Whole&) = delete;
  ~Whole() {
    if (open_) static_cast<void>(database_.RollbackTransaction());
  }
  [[nodiscard]] ENGSTATUS Begin() {
    if (database_.transaction() != 0) return ENG_OK;
    const ENGSTATUS status = database_.BeginTransaction();
    open_ = status == ENG_OK;
    return status;
  }
  [[nodiscard]] ENGSTATUS Commit() {
    if (!open_) return ENG_OK;
    open_ = false;
    return database_.CommitTransaction();
  }

 private:
  Database& database_;
  bool open_ = false;
};

// The first entry of a text or text list item; empty where there is none.
std::string ReadText(Slate& slate, std::string_view name) {
  Slate::Slot slot = 0;
  Slate::Value value{};
  if (slate.FindItem(name, &slot) != ENG_OK || slate.GetValue(slot, &value) != ENG_OK) return {};
  std::string text;
  const memory::LockedBlock block(value.place.Pool);
  const Bytes bytes(block.bytes() + value.place.Block, value.size);
  if (value.type == kTypeText) text.assign(bytes.begin() + kSmallestValue, bytes.end());
  if (value.type != text::kTextListType) return text;
  const std::optional<text::Entries> entries = text::ReadList(bytes, text::Prefix::kType);
  if (entries && !entries->empty()) text = entries->front();
  return text;
}

ENGSTATUS WriteItem(Slate& slate, std::uint16_t flags, std::string_view name, std::uint16_t type, Bytes data) {
  const ENGSTATUS status = slate.DeleteByName(name);
  if (status != ENG_OK && status != ENG_ERR_NO_ITEM) return status;
  Slate::Slot slot = 0;
  return slate.Append(flags, name, type, data, &slot);
}

ENGSTATUS WriteList(Slate& slate, std::uint16_t flags, std::string_view name, std::string_view entry) {
  const std::optional<std::string> list = text::WriteList({entry}, text::Prefix::kNone);
  return list ? WriteItem(slate, flags, name, text::kTextListType, AsBytes(*list)) : ENGSTATUS{ENG_ERR_ITEM_SIZE};
}

ENGSTATUS WriteName(Slate& slate, std::string_view name) {
  const ENGSTATUS status = WriteItem(slate, kDesignItem, "$TITLE", kTypeText, AsBytes(name));
  return status == ENG_OK ? WriteItem(slate, kDesignItem, "$Name", kTypeText, AsBytes(name)) : status;
}

// The letters of the format but for those of kind and sharing, which are the new folder's own.
ENGSTATUS WriteFlags(Slate& slate, FolderSharing sharing) {
  std::string letters = ReadText(slate, "$Flags");
  std::erase_if(letters, [](char letter) { return kSharingLetters.find(letter) != std::string_view::npos; });
  letters.insert(0, sharing == FolderSharing::kPrivate ? "F3V" : "F3");
  return WriteList(slate, kDesignItem, "$Flags", letters);
}

ENGSTATUS WriteOwner(Slate& slate, FolderSharing sharing) {
  const ENGSTATUS status = slate.DeleteByName("$Readers");
  if (status != ENG_OK && status != ENG_ERR_NO_ITEM) return status;
  if (sharing == FolderSharing::kShared) return ENG_OK;
  const auto flags = static_cast<std::uint16_t>(ENG_ITEM_SIGN | ENG_ITEM_SUMMARY | ENG_ITEM_READERS);
  return WriteList(slate, flags, "$Readers", slate.database().user());
}

// None of the name's synonyms may be one of another view or folder.
ENGSTATUS CheckName(const std::shared_ptr<Database>& database, std::string_view name, std::uint32_t self) {
  if (name.empty() || name.front() == '|' || name.size() > kLongestName) return ENG_ERR_FOLDER_NAME;
  if (name.find('\0') != std::string_view::npos) return ENG_ERR_FOLDER_NAME;
  while (true) {
    const std::size_t bar = name.find('|');
    const std::string_view synonym = name.substr(0, bar);
    std::uint32_t found = self;
    const ENGSTATUS status = synonym.empty() ? ENGSTATUS{ENG_OK} : FindDesign(database, kViewClass, synonym, &found);
    if (status == ENG_OK && found != self) return ENG_ERR_FOLDER_EXISTS;
    if (status != ENG_OK && status != ENG_ERR_NO_DESIGN_ELEMENT) return status;
    if (bar == std::string_view::npos) return ENG_OK;
    name.remove_prefix(bar + 1);
  }
}

// A slate of `database` that is not saved yet, with the design of `format`, or with none.
ENGSTATUS TakeFormat(const std::shared_ptr<Database>& database, const std::shared_ptr<Database>& format_database,
                     std::uint32_t format, OpenedSlate* slate) {
  if (format == 0) return Slate::Create(database, slate->target());
  OpenedSlate source;
  ENGSTATUS status = Slate::Open(format_database, format, source.target());
  if (status != ENG_OK) return status;
  if ((source->header().slate_class & kViewClass) == 0) return ENG_ERR_NOT_FOLDER;
  status = source->Copy(slate->target());
  if (status == ENG_OK) status = (*slate)->SetId(0);
  if (status == ENG_OK) status = (*slate)->SetDatabase(database);
  if (status == ENG_OK) (*slate)->SetOrigin(database->NewOrigin());
  return status;
}

ENGSTATUS SaveNew(Slate& slate, std::uint16_t slate_class, std::uint32_t* id) {
  slate.SetClass(slate_class);
  const ENGSTATUS status = slate.Update(0);
  if (status == ENG_OK) *id = slate.header().id;
  return status;
}

}  // namespace

ENGSTATUS CheckFolder(const std::shared_ptr<Database>& database, std::uint32_t folder) {
  SlateHeader header;
  ENGSTATUS status = ReadSlateHeader(*database, folder, &header);
  if (status != ENG_OK) return status;
  if (header.deleted) return ENG_ERR_SLATE_DELETED;
  if ((header.slate_class & kPrivateClass) != 0 && !IsReadable(*database, folder)) return ENG_ERR_NO_SLATE;
  bool is_folder = false;
  status = ReadValueOf(database, folder, "$Flags", [&is_folder](Bytes value, std::uint16_t type) {
    if (type != kTypeText && type != text::kTextListType) return;
    is_folder = std::find(value.begin() + kSmallestValue, value.end(), 'F') != value.end();
  });
  if (status != ENG_OK && status != ENG_ERR_NO_ITEM) return status;
  return is_folder && (header.slate_class & kViewClass) != 0 ? ENG_OK : ENG_ERR_NOT_FOLDER;
}

ENGSTATUS CreateFolder(const std::shared_ptr<Database>& database, const std::shared_ptr<Database>& format_database,
                       std::uint32_t format, std::string_view name, FolderSharing sharing, std::uint32_t* id) {
  Whole whole(*database);
  ENGSTATUS status = whole.Begin();
  if (status == ENG_OK) status = CheckName(database, name, 0);
  OpenedSlate slate;
  if (status == ENG_OK) status = TakeFormat(database, format_database, format, &slate);
  if (status == ENG_OK) status = WriteName(*slate, name);
  if (status == ENG_OK) status = WriteFlags(*slate, sharing);
  if (status == ENG_OK) status = WriteOwner(*slate, sharing);
  const std::uint16_t owned = sharing == FolderSharing::kPrivate ? kPrivateClass : std::uint16_t{0};
  if (status == ENG_OK) status = SaveNew(*slate, static_cast<std::uint16_t>(kViewClass | owned), id);
  return status == ENG_OK ? whole.Commit() : status;
}

ENGSTATUS CopyFolder(const std::shared_ptr<Database>& database, std::uint32_t folder, std::string_view name,
                     std::uint32_t* id) {
  Whole whole(*database);
  ENGSTATUS status = whole.Begin();
  if (status == ENG_OK) status = CheckFolder(database, folder);
  if (status == ENG_OK) status = CheckName(database, name, 0);
  OpenedSlate slate;
  if (status == ENG_OK) status = TakeFormat(database, database, folder, &slate);
  if (status == ENG_OK) status = WriteName(*slate, name);
  if (status != ENG_OK) return status;
  const auto slate_class = static_cast<std::uint16_t>(slate->header().slate_class & ~kDefaultDesign);
  status = SaveNew(*slate, slate_class, id);
  if (status != ENG_OK) return status;
  status = CopyMembers(*database, folder, *id);
  if (status == ENG_OK) return whole.Commit();
  // Within a client's transaction the slate has been written already.
  static_cast<void>(DeleteSlate(*database, *id, ENG_UPDATE_NO_STUB));
  return status;
}

ENGSTATUS RenameFolder(const std::shared_ptr<Database>& database, std::uint32_t folder, std::string_view name) {
  Whole whole(*database);
  ENGSTATUS status = whole.Begin();
  if (status == ENG_OK) status = CheckFolder(database, folder);
  if (status == ENG_OK) status = CheckName(database, name, folder);
  OpenedSlate slate;
  if (status == ENG_OK) status = Slate::Open(database, folder, slate.target());
  if (status == ENG_OK) status = WriteName(*slate, name);
  if (status == ENG_OK) status = slate->Update(0);
  return status == ENG_OK ? whole.Commit() : status;
}

}  // namespace qcore
