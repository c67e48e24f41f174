#include "vq/richtext/rtedit.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "vq/richtext/vqrtbody.h"

namespace vq {

namespace {

constinit thread_local Edit* tInnermost = nullptr;

VQRTObjectBody* TopOf(VQRTObjectBody* object) {
  while (object->GetParent()) object = object->GetParent();
  return object;
}

VQRTContainerBody* AsContainer(VQRTObjectBody* top) {
  return top->IsType(VQRTTYPE_CONTAINER) ? static_cast<VQRTContainerBody*>(top) : nullptr;
}

}  // namespace

Edit::Edit(VQRTObjectBody& object) : Outer(tInnermost) {
  if (Of(object)) return;
  Top = TopOf(&object);
  HoldTop = VQRTObject(Top);
  if (VQRTContainerBody* container = AsContainer(Top)) HighestPABID = container->GetHighestPABID();
  tInnermost = this;
}

Edit::~Edit() {
  if (!Top) return;
  Leave();
  TakeBack();
}

void Edit::Keep() {
  if (!Top) return;
  Leave();
  Top = nullptr;
}

void Edit::Leave() {
  if (tInnermost == this) tInnermost = Outer;
}

Edit* Edit::Of(const VQRTObjectBody& object) {
  if (!tInnermost) return nullptr;
  const VQRTObjectBody* top = TopOf(const_cast<VQRTObjectBody*>(&object));
  Edit* edit = tInnermost;
  while (edit && edit->Top != top) edit = edit->Outer;
  return edit;
}

void Edit::Abandon(const VQRTObjectBody& top) {
  if (Edit* edit = Of(top)) {
    edit->Changes.clear();
    edit->Runs.clear();
    edit->Handles.clear();
  }
}

void Edit::Forget(VQRTObject* handle) {
  for (Edit* edit = tInnermost; edit; edit = edit->Outer) edit->Handles.erase(handle);
}

// Objects that are put into a container side by side.
struct Edit::LinkChange : Change {
  LinkChange(VQRTBaseContainerBody& parent, VQRTObjectBody& first, VQRTObjectBody& last)
      : Parent(&parent), First(&first), Last(&last) {}
  void Undo() override {
    auto& parent = static_cast<VQRTBaseContainerBody&>(*Parent.GetRTObjectBody());
    VQRTObjectBody* child = First.GetRTObjectBody();
    const VQRTObjectBody* behind = Last.GetRTObjectBody()->GetNext();
    while (child && child != behind && child->GetParent() == &parent) {
      VQRTObjectBody* next = child->GetNext();
      parent.UnlinkPointers(child);
      child = next;
    }
  }

  VQRTObject Parent, First, Last;
};

void Edit::Links(VQRTBaseContainerBody& parent, VQRTObjectBody& first, VQRTObjectBody& last) {
  Add(std::make_unique<LinkChange>(parent, first, last));
}

struct Edit::UnlinkChange : Change {
  explicit UnlinkChange(VQRTObjectBody& child)
      : Child(&child), Parent(child.GetParent()), Previous(child.GetPrevious()), Next(child.GetNext()) {}
  void Undo() override {
    VQRTObjectBody* child = Child.GetRTObjectBody();
    if (child->GetParent()) return;  // it never went
    static_cast<VQRTBaseContainerBody&>(*Parent.GetRTObjectBody()).LinkPointers(child, Previous, Next);
  }

  VQRTObject Child, Parent;
  VQRTObjectBody *Previous, *Next;
};

void Edit::Unlinks(VQRTObjectBody& child) { Add(std::make_unique<UnlinkChange>(child)); }

struct Edit::ContentChange : Change {
  explicit ContentChange(VQRTObjectBody& object)
      : Object(&object), Type(object.Type), Flags(object.RTObjectBodyFlags), Closed(object.Closed) {}
  void Undo() override {
    VQRTObjectBody& object = *Object.GetRTObjectBody();
    object.Content = std::move(Before);
    object.Type = Type;
    object.RTObjectBodyFlags = Flags;
    object.Closed = Closed;
    object.ContentRestored();
  }

  VQRTObject Object;
  RecordContent Before;
  unsigned char Type, Flags;
  bool Closed;
};

void Edit::TakesContent(VQRTObjectBody& object) {
  auto made = std::make_unique<ContentChange>(object);
  ContentChange& change = *made;
  Add(std::move(made));
  if (RecordSource* source = object.Content.GetSource()) source->SetOutdated();
  change.Before = std::move(object.Content);
}

struct Edit::WriteChange : Change {
  WriteChange(VQRTObjectBody& object, std::uint32_t offset, std::uint32_t size)
      : Object(&object), Offset(offset), Size(object.Content.GetSize()) {
    const unsigned char* bytes = object.Content.GetBytes();
    if (offset < Size) Before.assign(bytes + offset, bytes + offset + std::min(size, Size - offset));
  }
  void Undo() override {
    VQRTObjectBody& object = *Object.GetRTObjectBody();
    object.Content.Resize(Size);
    std::copy(Before.begin(), Before.end(), object.Content.GetBytes() + Offset);
    object.ContentRestored();
  }

  VQRTObject Object;
  std::uint32_t Offset, Size;
  std::basic_string<unsigned char> Before;
};

void Edit::Writes(VQRTObjectBody& object, std::uint32_t offset, std::uint32_t size) {
  Add(std::make_unique<WriteChange>(object, offset, size));
}

struct Edit::SpliceChange : Change {
  static constexpr std::uint32_t kHeader = 4;

  SpliceChange(VQStylizedTextBody& run, std::uint32_t end, std::uint32_t offset, std::uint32_t oldBytes,
               std::uint32_t newBytes)
      : Run(&run), End(end), Offset(offset), NewBytes(newBytes) {
    const unsigned char* bytes = run.Content.GetBytes();
    std::copy_n(bytes, kHeader, Header);
    Removed.assign(bytes + offset, bytes + offset + oldBytes);
    Padding.assign(bytes + end, bytes + run.Content.GetSize());
  }
  void Undo() override {
    VQStylizedTextBody& run = static_cast<VQStylizedTextBody&>(*Run.GetRTObjectBody());
    RecordContent& content = run.Content;
    const auto removed = static_cast<std::uint32_t>(Removed.size());
    content.Resize(End - removed + NewBytes);
    content.Splice(Offset, NewBytes, removed);
    std::copy(Removed.begin(), Removed.end(), content.GetBytes() + Offset);
    content.Resize(End + static_cast<std::uint32_t>(Padding.size()));
    std::copy(Padding.begin(), Padding.end(), content.GetBytes() + End);
    std::copy_n(Header, kHeader, content.GetBytes());
    run.ContentRestored();
  }

  VQRTObject Run;
  std::uint32_t End, Offset, NewBytes;
  unsigned char Header[kHeader];
  std::basic_string<unsigned char> Removed, Padding;
};

void Edit::Splices(VQStylizedTextBody& run, std::uint32_t end, std::uint32_t offset, std::uint32_t oldBytes,
                   std::uint32_t newBytes) {
  Add(std::make_unique<SpliceChange>(run, end, offset, oldBytes, newBytes));
}

void Edit::MovesCharacters(VQStylizedTextBody& run) {
  if (Runs.contains(&run)) return;
  Touched touched{VQRTObject(&run), run.RTChars ? std::make_unique<Characters>(*run.RTChars) : nullptr};
  if (run.RTChars) {
    for (VQRTObject* handle : run.RTChars->Handles) {
      Handles.try_emplace(handle, Place{&run, handle->Offset, handle->GetEdge()});
    }
  }
  Runs.emplace(&run, std::move(touched));
}

// Objects that the edit has made are there until all is back, as handles may stand on them.
void Edit::TakeBack() {
  if (Top->IsClosed()) return;
  if (VQRTContainerBody* container = AsContainer(Top)) container->SetHighestPABID(HighestPABID);
  if (Changes.empty() && Runs.empty()) return;
  for (auto change = Changes.rbegin(); change != Changes.rend(); ++change) (*change)->Undo();
  RestoreCharacters();
  auto* top = Top->AsBase();
  if (!top) return;
  if (top->RichText) {
    top->RichText->DropPABIndex();
    top->RichText->NoteStructure();
  }
  top->NumberAgain();
}

void Edit::RestoreCharacters() {
  for (auto& [run, touched] : Runs) {
    if (!run->RTChars) continue;
    for (VQRTObject* handle : run->RTChars->Handles) handle->Offset = 0;
    run->RTChars.reset();
  }
  for (auto& [run, touched] : Runs) {
    if (!touched.Before) continue;
    std::erase_if(touched.Before->Handles, [this, wanted = run](VQRTObject* handle) {
      const auto known = Handles.find(handle);
      return known == Handles.end() || known->second.Run != wanted;
    });
    if (touched.Before->Handles.empty()) continue;
    touched.Before->Count = Characters::kUnknown;
    touched.Before->Last = {};
    run->RTChars = std::move(touched.Before);
    for (VQRTObject* handle : run->RTChars->Handles) {
      const Place& place = Handles.at(handle);
      handle->PutBack(run, place.Offset, place.Edge);
    }
  }
}

}  // namespace vq
