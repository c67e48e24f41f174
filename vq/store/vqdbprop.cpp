// Database properties: info text, replication record, identifiers and times.
#include <algorithm>

#include "engine/database.h"
#include "engine/fulltext.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "engine/time.h"
#include "vq/store/storetext.h"
#include "vq/store/vqdbbody.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqtext.h"

namespace {

constexpr std::string_view kTitleItem = "$TITLE";

// A property that is one bit of the replication flags.
struct ReplicaBit {
  std::uint16_t Mask;
  bool SetMeansOff;
};

constexpr ReplicaBit kDisableReplication{0x0004, false};
constexpr ReplicaBit kHideDesign{0x0020, false};
constexpr ReplicaBit kListInCatalog{0x0040, true};
constexpr ReplicaBit kRemoveOldDocuments{0x0080, false};
constexpr ReplicaBit kNeverReplicate{0x0100, false};
constexpr ReplicaBit kReceiveSummaries{0x0200, false};
constexpr ReplicaBit kShowInDialog{0x0400, true};
constexpr ReplicaBit kDisableAgents{0x0800, false};
constexpr ReplicaBit kSendDeletions{0x1000, true};
constexpr std::uint16_t kPriorityMask = 0xC000;

REPLICAINFO ReplicaOf(const VQDatabaseBody* body) {
  REPLICAINFO info{};
  vq::ThrowIfError(vq::FromEngine(EngDbGetReplicaInfo(body->GetHandle(), &info)));
  return info;
}

int ReadBit(const VQDatabaseBody* body, ReplicaBit bit) {
  return ((ReplicaOf(body).Flags & bit.Mask) != 0) != bit.SetMeansOff;
}

std::uint16_t ValueFor(ReplicaBit bit, int flag) { return (flag != 0) != bit.SetMeansOff ? bit.Mask : 0; }

// The icon slate, where there is one.
class IconSlate {
 public:
  explicit IconSlate(ENGHANDLE database) {
    const ENGSTATUS result = EngSlateOpen(database, ENG_SLATE_ID_ICON, 0, &Handle);
    const unsigned error = result & ENG_ERROR_MASK;
    const bool missing = error == ENG_ERR_NO_SPECIAL_SLATE || error == ENG_ERR_NO_SLATE;
    Status = missing ? VQWARN_NOT_FOUND : vq::FromEngine(result);
  }
  ~IconSlate() {
    if (Handle != 0) EngSlateClose(Handle);
  }
  IconSlate(const IconSlate&) = delete;
  IconSlate& operator=(const IconSlate&) = delete;

  bool HasTitle() const { return EngItemIsPresent(Handle, vq::EngineText(kTitleItem), kTitleItem.size()) != 0; }
  VQSTATUS SetTitle(const ENGCHAR* info, unsigned short flags) {
    const ENGSTATUS result = EngItemSetText(Handle, vq::EngineText(kTitleItem), info, 0xFFFF);
    return vq::FromEngine(result != ENG_OK ? result : EngSlateUpdate(Handle, flags));
  }
  VQSTATUS DropTitle(unsigned short flags) {
    const ENGSTATUS result = EngItemDeleteByName(Handle, vq::EngineText(kTitleItem), kTitleItem.size());
    return vq::FromEngine(result != ENG_OK ? result : EngSlateUpdate(Handle, flags));
  }

  VQSTATUS Status;

 private:
  ENGHANDLE Handle = 0;
};

}  // namespace

VQSTATUS VQDatabaseBody::ReadInfo(unsigned short selector, std::string* text) {
  ENGCHAR info[ENG_INFO_SIZE];
  ENGCHAR field[ENG_INFO_SIZE];
  const VQSTATUS status = vq::FromEngine(EngDbGetInfo(Handle, info));
  if (status != VQ_OK) return status;
  EngDbInfoParse(info, selector, field, ENG_INFO_SIZE - 1);
  *text = reinterpret_cast<const char*>(field);
  return VQ_OK;
}

VQSTATUS VQDatabaseBody::WriteInfo(unsigned short selector, std::string_view text) {
  VQ_ASSERT_TEXT(selector <= ENG_INFO_INHERITS,
                 "selector == INFOPARSE_TITLE || selector == INFOPARSE_CATEGORIES || selector == INFOPARSE_CLASS || "
                 "selector == INFOPARSE_DESIGN_CLASS",
                 "VQDBPROP");
  ENGCHAR info[ENG_INFO_SIZE];
  VQSTATUS status = vq::FromEngine(EngDbGetInfo(Handle, info));
  if (status != VQ_OK) return status;
  const std::string value(text);
  EngDbInfoModify(info, selector, vq::EngineText(value));
  status = vq::FromEngine(EngDbSetInfo(Handle, info));
  return status == VQ_OK ? MirrorInfo(info) : status;
}

// A database that shows its title elsewhere keeps the info text in its icon slate too.
VQSTATUS VQDatabaseBody::MirrorInfo(const ENGCHAR* info) {
  IconSlate icon(Handle);
  if (icon.Status == VQWARN_NOT_FOUND) return VQ_OK;
  if (icon.Status != VQ_OK || !icon.HasTitle()) return icon.Status;
  return icon.SetTitle(info, GetUpdateFlags());
}

VQSTATUS VQDatabaseBody::ChangeReplicaFlags(unsigned short mask, unsigned short value) {
  REPLICAINFO info{};
  ENGSTATUS result = EngDbGetReplicaInfo(Handle, &info);
  if (result != ENG_OK) return vq::FromEngine(result);
  info.Flags = static_cast<std::uint16_t>((info.Flags & ~mask) | (value & mask));
  result = EngDbSetReplicaInfo(Handle, &info);
  return vq::FromEngine(result);
}

VQString VQDatabase::GetInfoText(unsigned short selector) const {
  std::string text;
  vq::ThrowIfError(RequireOpen()->ReadInfo(selector, &text));
  return vq::StringOf(text);
}

VQSTATUS VQDatabase::SetInfoText(unsigned short selector, const VQString& text) {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? body->WriteInfo(selector, vq::ViewOf(text)) : status);
}

VQString VQDatabase::GetTitle() const {
  VQDatabaseBody* body = RequireOpen();
  std::string& cached = body->GetCachedTitle();
  if (cached.empty()) vq::ThrowIfError(body->ReadInfo(ENG_INFO_TITLE, &cached));
  return vq::StringOf(cached);
}

VQSTATUS VQDatabase::SetTitle(const VQString& title) {
  if (IsOpen()) GetDatabaseBody()->GetCachedTitle().clear();
  return SetInfoText(ENG_INFO_TITLE, title);
}

VQString VQDatabase::GetTemplateName() const { return GetInfoText(ENG_INFO_TEMPLATE); }
VQSTATUS VQDatabase::SetTemplateName(const VQString& name) { return SetInfoText(ENG_INFO_TEMPLATE, name); }
VQString VQDatabase::GetInheritsFromTemplateName() const { return GetInfoText(ENG_INFO_INHERITS); }
VQSTATUS VQDatabase::SetInheritsFromTemplateName(const VQString& name) { return SetInfoText(ENG_INFO_INHERITS, name); }

VQText VQDatabase::GetDatabaseCatalogCategories() const {
  std::string text;
  vq::ThrowIfError(RequireOpen()->ReadInfo(ENG_INFO_CATEGORIES, &text));
  VQText categories;
  for (std::size_t from = 0; !text.empty() && from <= text.size();) {
    const std::size_t comma = std::min(text.find(',', from), text.size());
    categories << vq::StringOf(std::string_view(text).substr(from, comma - from));
    from = comma + 1;
  }
  return categories;
}

VQSTATUS VQDatabase::SetDatabaseCatalogCategories(const VQText& categories) {
  VQString joined;
  const VQSTATUS status = vq::Caught([&] { return categories.GetText(&joined, vq::StringOf(",")); });
  return status == VQ_OK ? SetInfoText(ENG_INFO_CATEGORIES, joined) : vq::Apply(status);
}

VQString VQDatabase::GetOwnerName() const { return vq::StringOf(RequireOpen()->GetOwnerName()); }

VQSTATUS VQDatabase::SetOwnerName(const VQString& name) {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) body->GetOwnerName() = vq::ViewOf(name);
  return vq::Apply(status);
}

TIMEDATE VQDatabase::GetDatabaseID() const {
  TIMEDATE id{};
  vq::ThrowIfError(vq::FromEngine(EngDbGetID(RequireOpen()->GetHandle(), &id)));
  return id;
}

VQDatetime VQDatabase::GetCreated() const { return VQDatetime(GetDatabaseID()); }
TIMEDATE VQDatabase::GetReplicaID() const { return ReplicaOf(RequireOpen()).ID; }

VQDatetime VQDatabase::GetDataLastModified() const {
  TIMEDATE data{};
  TIMEDATE design{};
  vq::ThrowIfError(vq::FromEngine(EngDbGetModifiedTime(RequireOpen()->GetHandle(), &data, &design)));
  return VQDatetime(data);
}

VQDatetime VQDatabase::GetDesignLastModified() const {
  TIMEDATE data{};
  TIMEDATE design{};
  vq::ThrowIfError(vq::FromEngine(EngDbGetModifiedTime(RequireOpen()->GetHandle(), &data, &design)));
  return VQDatetime(design);
}

VQDatetime VQDatabase::GetLastModified() const {
  TIMEDATE data{};
  TIMEDATE design{};
  vq::ThrowIfError(vq::FromEngine(EngDbGetModifiedTime(RequireOpen()->GetHandle(), &data, &design)));
  return VQDatetime(EngTimeCompare(&data, &design) < 0 ? design : data);
}

double VQDatabase::GetPercentageUsed() const {
  std::uint64_t used = 0;
  std::uint64_t unused = 0;
  vq::ThrowIfError(vq::FromEngine(EngDbGetSpace(RequireOpen()->GetHandle(), &used, &unused)));
  const double total = static_cast<double>(used) + static_cast<double>(unused);
  return total == 0 ? 0 : static_cast<double>(used) * 100 / total;
}

double VQDatabase::GetSize() const {
  std::uint64_t used = 0;
  std::uint64_t unused = 0;
  vq::ThrowIfError(vq::FromEngine(EngDbGetSpace(RequireOpen()->GetHandle(), &used, &unused)));
  return static_cast<double>(used) + static_cast<double>(unused);
}

unsigned long VQDatabase::GetType() const {
  std::uint16_t type = 0;
  vq::ThrowIfError(vq::FromEngine(EngDbGetClass(RequireOpen()->GetHandle(), &type)));
  return type;
}

unsigned short VQDatabase::GetBuild() const {
  std::uint16_t build = 0;
  vq::ThrowIfError(vq::FromEngine(EngDbGetBuild(RequireOpen()->GetHandle(), &build)));
  return build;
}

VQSTATUS VQDatabase::ChangeFlags(unsigned short mask, unsigned short value) {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? body->ChangeReplicaFlags(mask, value) : status);
}

int VQDatabase::GetDisableReplication() const { return ReadBit(RequireOpen(), kDisableReplication); }
VQSTATUS VQDatabase::SetDisableReplication(int flag) {
  return ChangeFlags(kDisableReplication.Mask, ValueFor(kDisableReplication, flag));
}
int VQDatabase::GetHideDesign() const { return ReadBit(RequireOpen(), kHideDesign); }
VQSTATUS VQDatabase::SetHideDesign(int flag) { return ChangeFlags(kHideDesign.Mask, ValueFor(kHideDesign, flag)); }
int VQDatabase::GetListInDatabaseCatalog() const { return ReadBit(RequireOpen(), kListInCatalog); }
VQSTATUS VQDatabase::SetListInDatabaseCatalog(int flag) {
  return ChangeFlags(kListInCatalog.Mask, ValueFor(kListInCatalog, flag));
}
int VQDatabase::GetRemoveOldDocuments() const { return ReadBit(RequireOpen(), kRemoveOldDocuments); }
VQSTATUS VQDatabase::SetRemoveOldDocuments(int flag) {
  return ChangeFlags(kRemoveOldDocuments.Mask, ValueFor(kRemoveOldDocuments, flag));
}
int VQDatabase::GetNeverReplicate() const { return ReadBit(RequireOpen(), kNeverReplicate); }
VQSTATUS VQDatabase::SetNeverReplicate(int flag) {
  return ChangeFlags(kNeverReplicate.Mask, ValueFor(kNeverReplicate, flag));
}
int VQDatabase::GetReplicateReceiveSummaries() const { return ReadBit(RequireOpen(), kReceiveSummaries); }
VQSTATUS VQDatabase::SetReplicateReceiveSummaries(int flag) {
  return ChangeFlags(kReceiveSummaries.Mask, ValueFor(kReceiveSummaries, flag));
}
int VQDatabase::GetShowInOpenDatabaseDialog() const { return ReadBit(RequireOpen(), kShowInDialog); }
VQSTATUS VQDatabase::SetShowInOpenDatabaseDialog(int flag) {
  return ChangeFlags(kShowInDialog.Mask, ValueFor(kShowInDialog, flag));
}
int VQDatabase::GetDisableBackgroundAgents() const { return ReadBit(RequireOpen(), kDisableAgents); }
VQSTATUS VQDatabase::SetDisableBackgroundAgents(int flag) {
  return ChangeFlags(kDisableAgents.Mask, ValueFor(kDisableAgents, flag));
}
int VQDatabase::GetReplicateSendDeletions() const { return ReadBit(RequireOpen(), kSendDeletions); }
VQSTATUS VQDatabase::SetReplicateSendDeletions(int flag) {
  return ChangeFlags(kSendDeletions.Mask, ValueFor(kSendDeletions, flag));
}

VQREPLICATIONPRIORITY VQDatabase::GetReplicationPriority() const {
  return static_cast<VQREPLICATIONPRIORITY>(ReplicaOf(RequireOpen()).Flags & kPriorityMask);
}

VQSTATUS VQDatabase::SetReplicationPriority(VQREPLICATIONPRIORITY priority) {
  if ((priority & ~static_cast<unsigned>(kPriorityMask)) != 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  return ChangeFlags(kPriorityMask, static_cast<unsigned short>(priority));
}

unsigned long VQDatabase::GetRemoveOldDocumentsDays() const { return ReplicaOf(RequireOpen()).CutoffInterval; }

VQSTATUS VQDatabase::SetRemoveOldDocumentsDays(unsigned long days) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && days > 0xFFFF) status = VQERR_OUT_OF_RANGE;
  REPLICAINFO info{};
  if (status == VQ_OK) status = vq::FromEngine(EngDbGetReplicaInfo(body->GetHandle(), &info));
  if (status != VQ_OK) return vq::Apply(status);
  info.CutoffInterval = static_cast<std::uint16_t>(days);
  return vq::Apply(vq::FromEngine(EngDbSetReplicaInfo(body->GetHandle(), &info)));
}

// Whether the icon slate carries the info text is what replicas go by.
int VQDatabase::GetReplicateSendTitleAndCatalogInfo() const {
  const IconSlate icon(RequireOpen()->GetHandle());
  vq::ThrowIfError(icon.Status);
  return icon.Status == VQ_OK && icon.HasTitle();
}

VQSTATUS VQDatabase::SetReplicateSendTitleAndCatalogInfo(int flag) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return vq::Apply(status);
  ENGCHAR info[ENG_INFO_SIZE];
  status = vq::FromEngine(EngDbGetInfo(body->GetHandle(), info));
  if (status != VQ_OK) return vq::Apply(status);
  IconSlate icon(body->GetHandle());
  if (icon.Status != VQ_OK) return vq::Apply(icon.Status);
  if (flag != 0) return vq::Apply(icon.SetTitle(info, body->GetUpdateFlags()));
  return vq::Apply(icon.HasTitle() ? icon.DropTitle(body->GetUpdateFlags()) : VQ_OK);
}

int VQDatabase::IsFTIndexed() const {
  TIMEDATE indexed{};
  const ENGSTATUS result = EngFtGetInfo(RequireOpen()->GetHandle(), &indexed);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_NO_FULL_TEXT) return 0;
  vq::ThrowIfError(vq::FromEngine(result));
  return 1;
}

VQSTATUS VQDatabase::GetLastFTIndexed(VQDatetime* moment) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && moment == nullptr) status = VQERR_NULL_POINTER;
  TIMEDATE indexed{};
  if (status == VQ_OK) status = vq::FromEngine(EngFtGetInfo(body->GetHandle(), &indexed));
  if (status == VQ_OK) *moment = indexed;
  return vq::Apply(status);
}

VQSTATUS VQDatabase::GetFTIndexFlags(unsigned short* flags) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && flags == nullptr) status = VQERR_NULL_POINTER;
  TIMEDATE indexed{};
  if (status == VQ_OK) status = vq::FromEngine(EngFtGetInfo(body->GetHandle(), &indexed));
  if (status == VQ_OK) *flags = body->GetFTFlags();
  return vq::Apply(status);
}
