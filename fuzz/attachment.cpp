// Attachments of any bytes: the item's record and the bytes of the object it names, and what a rich text shows of it.
// Whatever they say, a file comes out whole or not at all, the slate can be saved, and the store stays sound.
#include <algorithm>
#include <filesystem>

#include "engine/database.h"
#include "engine/memory.h"
#include "engine/status.h"
#include "fuzz/support.h"

namespace {

using fuzz::Claim;

constexpr std::size_t kRecord = 36;

ENGHANDLE DatabaseOf(const VQDocument& document) { return vq::ToHandle(document.GetDatabase().GetDatabaseHandle()); }

std::string Out() { return fuzz::World::Get().folder() + "/out"; }

// A reserved object of the document's database with these bytes.
std::uint32_t MakeObject(ENGHANDLE db, const std::uint8_t* bytes, std::uint32_t size) {
  std::uint32_t object = 0;
  ENGHANDLE memory = 0;
  Claim(EngObjectCreate(db, 0, &object) == ENG_OK, "an object can be made");
  Claim(EngMemAlloc(0, size + 1, &memory) == ENG_OK, "there is memory");
  std::copy_n(bytes, size, static_cast<std::uint8_t*>(EngMemLock(memory)));
  EngMemUnlock(memory);
  Claim(EngObjectWrite(db, object, memory, size) == ENG_OK, "an object takes any bytes");
  EngMemFree(memory);
  return object;
}

void UseAttachment(VQDocument& document, const VQAttachment& attachment) {
  const unsigned long size = attachment.GetFileSize();
  const VQString name = attachment.GetAttachmentName();
  Claim(name.GetBufLength() > 0, "an attachment has a name");
  static_cast<void>(attachment.GetFilepath());
  static_cast<void>(attachment.GetFileLastModified());
  const VQSTATUS written = attachment.Detach(Out().c_str());
  std::error_code error;
  const std::uintmax_t there = std::filesystem::file_size(Out(), error);
  Claim((written == VQ_OK) == !error, "a failure leaves nothing");
  Claim(written != VQ_OK || there == size, "the file has the size that the record tells");
  if (written == VQ_OK) Claim(attachment.Check() == VQ_OK, "what can be detached is there");
  std::filesystem::permissions(Out(), std::filesystem::perms::owner_all, error);
  std::filesystem::remove(Out(), error);
  VQAttachment copy;
  if (document.CreateAttachment(attachment, &copy) != VQ_OK) return;
  Claim(copy.GetFileSize() == size && !attachment.IsSigned(), "a copy is like it");
  Claim(copy.Detach(Out().c_str()) == written, "and gives as much");
  std::filesystem::permissions(Out(), std::filesystem::perms::owner_all, error);
  std::filesystem::remove(Out(), error);
}

void UseShown(VQDocument& document, const VQRTAttachment& shown, bool remove) {
  unsigned short length = 0;
  char* data = nullptr;
  VQAttachment attachment;
  VQGraphic graphic;
  static_cast<void>(shown.GetData(&length, &data));
  static_cast<void>(shown.GetGraphic(&graphic));
  static_cast<void>(shown.GetDisplayText());
  static_cast<void>(VQRTAttachment(shown).SetDisplayText("shown"));
  static_cast<void>(shown.GetFilename());
  const VQString name = shown.GetAttachmentName();
  if (shown.GetAttachment(&attachment) == VQ_OK) {
    Claim(document.HasAttachment(name), "what is shown is there");
    VQRTAttachment(shown).SetAttachment(attachment);
  }
  VQRichText body;
  if (remove && document.GetItem("Body", &body) == VQ_OK) body.DeleteAttachment(name);
}

// Data: what to do | size of the record | the record | the object's bytes | the rich text.
void Run(VQDocument& document, const std::uint8_t* data, std::size_t size) {
  const std::uint8_t what = data[0];
  const std::size_t value = std::min<std::size_t>(data[1], size - 2);
  std::string record(reinterpret_cast<const char*>(data) + 2, value);
  const std::uint8_t* rest = data + 2 + value;
  const std::size_t left = size - 2 - value;
  const std::size_t stored = std::min<std::size_t>(left, (what & 1) ? left : left / 2);
  // The record names the object which is there, or any.
  const std::uint32_t object = MakeObject(DatabaseOf(document), rest, static_cast<std::uint32_t>(stored));
  if ((what & 2) && record.size() >= kRecord) {
    for (int i = 0; i < 4; ++i) record[2 + i] = static_cast<char>(object >> 8 * i);
  }
  if ((what & 4) && record.size() >= kRecord) {
    for (int i = 0; i < 4; ++i) record[16 + i] = static_cast<char>(stored >> 8 * i);
  }
  Claim(document.CreateItem("$FILE", TYPE_OBJECT, record.data(), record.size(), 0, VQITEMOPTION_APPEND) == VQ_OK,
        "an item takes any bytes");
  Claim(document.CreateItem("Body", TYPE_COMPOSITE, rest + stored, left - stored, 0, VQITEMOPTION_REPLACE) == VQ_OK,
        "and a rich text");
  if (what & 8) Claim(document.Save() == VQ_OK, "the slate can be saved");
  VQItemArray items;
  document.GetAttachments(&items);
  Claim(document.HasAttachments() == (items.GetCount() > 0), "some or none");
  for (unsigned long i = 0; i < items.GetCount() && i < 4; ++i) UseAttachment(document, VQAttachment(items[i]));
  VQRichText body;
  VQRTObject shown;
  if (document.GetItem("Body", &body) != VQ_OK) return;
  for (VQSTATUS status = body.FindFirst(VQRTTYPE_ATTACHMENT, &shown); status == VQ_OK;
       status = body.FindNext(VQRTObject(shown), VQRTTYPE_ATTACHMENT, &shown)) {
    UseShown(document, VQRTAttachment(shown), (what & 16) != 0);
    if (what & 16) break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VQDocument& document = fuzz::World::Get().document();
  if (size < 2 || size > 4000) return 0;
  try {
    Run(document, data, size);
  } catch (VQSTATUS) {
    // Operations without a status result throw theirs.
  }
  Claim(document.DeleteAllItems() == VQ_OK, "all of it goes again");
  if ((data[0] & 8) == 0) return 0;
  Claim(document.Save() == VQ_OK, "and the slate is saved without it");
  char report[200];
  Claim(EngDbCheck(DatabaseOf(document), report, sizeof report) == ENG_OK, "the store is sound");
  return 0;
}
