// VQDatabase: views and folders.
#include "engine/database.h"
#include "engine/folder.h"
#include "engine/idtable.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/storetext.h"
#include "vq/views/viewbody.h"

namespace {

constexpr unsigned long kMaximumName = 64;
constexpr unsigned kViews = 1U << VQVFTYPE_VIEW;
constexpr unsigned kFolders = 1U << VQVFTYPE_FOLDER;

// Keeps a database open for one operation.
class OpenForNow {
 public:
  explicit OpenForNow(VQDatabaseBody* database) : Database(database) {}
  ~OpenForNow() {
    if (Opened) Database->Close();
  }
  OpenForNow(const OpenForNow&) = delete;
  OpenForNow& operator=(const OpenForNow&) = delete;
  [[nodiscard]] VQSTATUS Open() {
    if (Database == nullptr) return VQERR_UNINITIALIZED_ARGUMENT;
    if (Database->IsOpen()) return VQ_OK;
    const VQSTATUS status = Database->Open(VQDBOPENFLAGS_OF_SESSION);
    Opened = status == VQ_OK;
    return status;
  }

 private:
  VQDatabaseBody* Database;
  bool Opened = false;
};

VQSTATUS CheckNewName(const VQString& name) {
  if (name.IsNull()) return VQERR_NULL_STRING;
  return name.GetBufLength() >= kMaximumName ? VQERR_STRING_TOO_LONG : VQ_OK;
}

VQSTATUS CheckTarget(const VQViewFolder* view) {
  return view == nullptr || view->GetClassID() == VQCLASSID_VQVIEWFOLDER ? VQ_OK : VQERR_INCORRECT_SLATE_TYPE;
}

VQSTATUS CheckTemplate(const VQViewFolder& source) {
  if (source.IsNull() || source.GetSlateID() == 0) return VQERR_UNINITIALIZED_ARGUMENT;
  if (source.GetClassID() != VQCLASSID_VQVIEWFOLDER) return VQERR_INCORRECT_SLATE_TYPE;
  return source.IsOpen() ? VQERR_INVALID_PARAMETER : VQ_OK;
}

// The kind of a stored slate of the view class; other design kinds of the class are neither.
VQSTATUS TypesOf(ENGHANDLE database, std::uint32_t id, unsigned* types) {
  ENGHANDLE slate = 0;
  const ENGSTATUS result = EngSlateOpen(database, id, 0, &slate);
  *types = 0;
  const unsigned error = result & ENG_ERROR_MASK;
  if (error == ENG_ERR_SLATE_DELETED || error == ENG_ERR_NO_SLATE) return VQ_OK;
  if (result != ENG_OK) return vq::FromEngine(result);
  char letters[33];
  const std::uint16_t length =
      EngItemGetText(slate, vq::EngineText("$Flags"), reinterpret_cast<ENGCHAR*>(letters), sizeof letters);
  EngSlateClose(slate);
  const std::string_view found(letters, length);
  if (found.find('G') != std::string_view::npos) return VQ_OK;
  *types = found.find('F') != std::string_view::npos ? kFolders : kViews;
  return VQ_OK;
}

VQSTATUS KeepTypes(ENGHANDLE database, unsigned types, ENGHANDLE all, ENGHANDLE kept) {
  VQSTATUS status = VQ_OK;
  std::uint32_t id = 0;
  for (int more = EngIdTableScan(all, 1, &id); status == VQ_OK && more != 0; more = EngIdTableScan(all, 0, &id)) {
    unsigned found = 0;
    status = TypesOf(database, id, &found);
    if (status == VQ_OK && (found & types) != 0) status = vq::FromEngine(EngIdTableInsert(kept, id, nullptr));
  }
  return status;
}

}  // namespace

VQSTATUS VQDatabase::GetViewFolder(const unsigned long id, VQViewFolder* view) const { return GetSlate(id, view); }
VQSTATUS VQDatabase::GetViewFolder(const UNIVERSALSLATEID* universal, VQViewFolder* view) const {
  return GetSlate(universal, view);
}
VQSTATUS VQDatabase::GetViewFolder(void* handle, VQViewFolder* view) const { return GetSlate(handle, view); }
VQSTATUS VQDatabase::GetViewFolder(const VQString& name, VQViewFolder* view) const {
  return GetDesignSlate(VQSLATECLASS_VIEW | static_cast<unsigned long>(VQDESIGNKIND_VIEW) << 16, name, view);
}

VQSTATUS VQDatabase::ListViews(unsigned types, VQViewFolderArray* views) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && views == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  ENGHANDLE all = 0;
  ENGHANDLE kept = 0;
  status = vq::FromEngine(
      EngDbSearchClass(body->GetHandle(), VQSLATECLASS_VIEW | VQSLATECLASS_PRIVATE, nullptr, nullptr, &all));
  if (status == VQ_OK) status = vq::FromEngine(EngDbKeepReadable(body->GetHandle(), all));
  if (status == VQ_OK) status = vq::FromEngine(EngIdTableCreate(sizeof(std::uint32_t), &kept));
  if (status == VQ_OK) status = KeepTypes(body->GetHandle(), types, all, kept);
  if (all != 0) EngIdTableDestroy(all);
  if (status == VQ_OK) return vq::Apply(FillArray(kept, VQSLATECLASS_VIEW, views));
  if (kept != 0) EngIdTableDestroy(kept);
  return vq::Apply(status);
}

VQSTATUS VQDatabase::GetViews(VQViewFolderArray* views) const { return ListViews(kViews, views); }
VQSTATUS VQDatabase::GetFolders(VQViewFolderArray* folders) const { return ListViews(kFolders, folders); }
VQSTATUS VQDatabase::GetViewFolders(VQViewFolderArray* views) const { return ListViews(kViews | kFolders, views); }

VQSTATUS VQDatabase::MakeFolder(const VQString& name, unsigned sharing, const VQViewFolder* template_,
                                std::uint32_t* id) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = CheckNewName(name);
  if (status == VQ_OK && sharing > VQVFSHARINGOPTION_PRIVATE) status = VQERR_INVALID_PARAMETER;
  if (status == VQ_OK && template_ != nullptr) status = CheckTemplate(*template_);
  if (status != VQ_OK) return status;
  VQDatabaseBody* source = template_ != nullptr ? template_->GetDatabaseBody() : body;
  OpenForNow open(source);
  status = open.Open();
  if (status != VQ_OK) return status;
  const std::uint32_t format = template_ != nullptr ? static_cast<std::uint32_t>(template_->GetSlateID()) : 0;
  const std::string_view text = vq::ViewOf(name);
  return vq::FromEngine(EngFolderCreate(body->GetHandle(), 0, format, format != 0 ? source->GetHandle() : 0,
                                        vq::EngineText(text), static_cast<std::uint16_t>(text.size()),
                                        static_cast<std::uint16_t>(sharing), 0, id));
}

// What is never saved goes again. A slate that can't be opened is no use to anyone.
VQSTATUS VQDatabase::OpenMade(std::uint32_t id, VQViewFolder* view) {
  VQSTATUS status = view->BindTo(GetDatabaseBody(), id);
  if (status == VQ_OK) status = view->CreateSlateBody(0, 0, 1);
  if (status == VQ_OK) status = view->GetViewFolderBody()->Open(VQVFOPENFLAGS_DESIGN_ONLY);
  if (status == VQ_OK) {
    view->GetSlateBody()->SetDeleteOnClose(1);
    return VQ_OK;
  }
  *view = VQViewFolder();
  static_cast<void>(GetDatabaseBody()->DeleteSlate(id));
  return status;
}

VQSTATUS VQDatabase::CreateFolder(const VQString& name, VQVFSHARINGOPTION sharing, const VQViewFolder* template_,
                                  VQViewFolder* folder) {
  VQSTATUS status = CheckTarget(folder);
  std::uint32_t id = 0;
  if (status == VQ_OK) status = MakeFolder(name, sharing, template_, &id);
  if (status == VQ_OK && folder != nullptr) status = OpenMade(id, folder);
  return vq::Apply(status);
}

// The new view to the client, or saved and closed.
VQSTATUS VQDatabase::HandOutView(VQViewFolder& made, VQViewFolder* view) {
  if (view != nullptr) {
    *view = made;
    return VQ_OK;
  }
  const VQSTATUS status = made.GetSlateBody()->Save(0);
  const VQSTATUS closed = made.GetSlateBody()->Close();
  return status == VQ_OK ? closed : status;
}

VQSTATUS VQDatabase::CreateView(const VQString& name, const VQViewFolder* template_, VQViewFolder* view) {
  VQSTATUS status = CheckTarget(view);
  std::uint32_t id = 0;
  if (status == VQ_OK) status = MakeFolder(name, VQVFSHARINGOPTION_SHARED, template_, &id);
  VQViewFolder made;
  if (status == VQ_OK) status = OpenMade(id, &made);
  if (status != VQ_OK) return vq::Apply(status);
  made.GetViewFolderBody()->BecomeView();
  status = made.GetSlateBody()->DeleteItems("$Name");
  return vq::Apply(VQIsError(status) ? status : HandOutView(made, view));
}

VQSTATUS VQDatabase::CopyViewFolder(const VQString& name, const VQViewFolder& template_, VQViewFolder* view) {
  VQViewFolder source(template_);
  VQVFTYPE type = VQVFTYPE_UNKNOWN;
  if (VQSTATUS status = source.FindType(&type)) return status;
  if (type == VQVFTYPE_FOLDER) {
    if (source.GetDatabaseBody() != GetDatabaseBody()) return VQERR_DIFFERENT_DATABASE;
    const std::string_view text = vq::ViewOf(name);
    std::uint32_t id = 0;
    const VQSTATUS status =
        vq::FromEngine(EngFolderCopy(GetDatabaseBody()->GetHandle(), 0, static_cast<std::uint32_t>(source.GetSlateID()),
                                     0, vq::EngineText(text), static_cast<std::uint16_t>(text.size()), 0, &id));
    return status == VQ_OK && view != nullptr ? OpenMade(id, view) : status;
  }
  VQSlate copy;
  VQSTATUS status = CopyInto(source, 0, &copy);
  if (status != VQ_OK) return status;
  const auto id = static_cast<std::uint32_t>(copy.GetSlateID());
  copy.GetSlateBody()->Close();
  VQViewFolder made;
  status = OpenMade(id, &made);
  if (status == VQ_OK) status = made.GetViewFolderBody()->SetName(name);
  if (status == VQ_OK) status = made.GetViewFolderBody()->CheckFree(made.GetName());
  if (status != VQ_OK) return status;
  // The source stays the default view.
  made.GetViewFolderBody()->SetState(VQViewFolderBody::kDefault, false);
  return HandOutView(made, view);
}

VQSTATUS VQDatabase::CreateViewFolder(const VQString& name, const VQViewFolder& template_, VQViewFolder* view) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = CheckTarget(view);
  if (status == VQ_OK) status = CheckNewName(name);
  if (status == VQ_OK) status = CheckTemplate(template_);
  if (status != VQ_OK) return vq::Apply(status);
  OpenForNow open(template_.GetDatabaseBody());
  status = open.Open();
  return vq::Apply(status == VQ_OK ? CopyViewFolder(name, template_, view) : status);
}

VQSTATUS VQDatabase::DeleteViewFolder(VQViewFolder* view) { return DeleteSlate(view); }
VQSTATUS VQDatabase::DeleteViewFolder(const VQString& name) {
  VQViewFolder view;
  const VQSTATUS status = GetViewFolder(name, &view);
  return status == VQ_OK ? DeleteSlate(&view) : status;
}
