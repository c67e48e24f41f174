#include "vq/richtext/rthistory.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "engine/memory.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/signature.h"
#include "vq/richtext/vqrtcrsr.h"

namespace {

constexpr std::size_t kTypeWord = 2;
constexpr std::uint16_t kMemoryFlags = 16384;

void AddRecord(const VQRTObjectBody& object, std::vector<unsigned char>* bytes) {
  const vq::RecordBytes record(object);
  if (record.GetSize() == 0) return;
  bytes->insert(bytes->end(), record.Get(), record.Get() + record.GetSize());
  bytes->resize(vq::Padded(static_cast<std::uint32_t>(bytes->size())));
}

// In stream order: what leads an object stands ahead of it.
void AddRecords(const VQRTObjectBody& object, std::vector<unsigned char>* bytes) {
  const VQRTBaseContainerBody* container = object.AsBase();
  const VQRTObjectBody* child = container ? container->GetFirstChild() : nullptr;
  for (; child && child->LeadsParent(); child = child->GetNext()) AddRecord(*child, bytes);
  AddRecord(object, bytes);
  for (; child; child = child->GetNext()) AddRecords(*child, bytes);
}

VQSTATUS ParseRecords(const std::vector<unsigned char>& records, VQRichText* text) {
  const auto size = static_cast<std::uint32_t>(records.size() + kTypeWord);
  ENGHANDLE memory = 0;
  VQSTATUS status = vq::FromEngine(EngMemAlloc(kMemoryFlags, size, &memory));
  if (status != VQ_OK) return status;
  {
    const vq::MemoryLock lock(memory);
    lock.GetBytes()[0] = 1;
    lock.GetBytes()[1] = 0;
    if (!records.empty()) std::memcpy(lock.GetBytes() + kTypeWord, records.data(), records.size());
  }
  *text = VQRichText(new VQRichTextBody(memory, size));
  return text->GetRichTextBody()->Initialize();
}

// Closes the objects from `first` up to `behind`.
VQSTATUS CloseRange(VQRTObjectBody* first, const VQRTObjectBody* behind) {
  while (first != behind) {
    const VQRTObject hold(first);
    first = first->GetNext();
    const VQSTATUS status = hold.GetRTObjectBody()->Close();
    if (VQIsError(status)) return status;
  }
  return VQ_OK;
}

template <typename Operation>
VQSTATUS Run(Operation operation) {
  return vq::Apply(operation());
}

}  // namespace

VQRTHistory::VQRTHistory() = default;
VQRTHistory::~VQRTHistory() = default;

VQSTATUS VQRTHistory::Watch(const VQRichText& richText) {
  if (richText.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return Run([&] {
    VQRTContainer top;
    VQRTCursor start;  // an empty text gets the run that it is edited from
    VQSTATUS status = richText.GetRichTextBody()->Initialize();
    if (status == VQ_OK) status = richText.GetRichTextBody()->GetTop()->GetCursor(&start);
    if (VQIsError(status)) return status;
    const VQRichText before = Text;
    Text = richText;
    Stream stream;
    status = Read(&stream);
    if (status != VQ_OK) {
      Text = before;
      return status;
    }
    Current = std::move(stream);
    Done.clear();
    Undone.clear();
    StepBytes = 0;
    InGroup = false;
    return VQ_OK;
  });
}

VQSTATUS VQRTHistory::Check() const {
  if (Text.IsNull()) return VQERR_NOT_INITIALIZED;
  return Text.GetRichTextBody()->Initialize();
}

VQSTATUS VQRTHistory::Read(Stream* stream) const {
  if (const VQSTATUS status = Check()) return status;
  stream->Records.reserve(Current.Records.size());
  stream->Starts.reserve(Current.Starts.size());
  const VQRTObjectBody* child = Text.GetRichTextBody()->GetTop()->GetFirstChild();
  for (; child; child = child->GetNext()) {
    stream->Starts.push_back(stream->Records.size());
    AddRecords(*child, &stream->Records);
  }
  return VQ_OK;
}

VQRTHistory::Step VQRTHistory::Compare(const Stream& before, const Stream& after) {
  const Bytes &old = before.Records, &now = after.Records;
  const auto differ = std::mismatch(old.begin(), old.end(), now.begin(), now.end());
  std::size_t head = static_cast<std::size_t>(differ.first - old.begin());
  // Back to where an object starts on both sides.
  const auto last = [](const Stream& stream, std::size_t at) {
    const auto behind = std::ranges::upper_bound(stream.Starts, at);
    return behind == stream.Starts.begin() ? std::size_t{0} : *(behind - 1);
  };
  const auto is_end = [](const Stream& stream, std::size_t at) {
    return at == stream.Records.size() || std::ranges::binary_search(stream.Starts, at);
  };
  while (!is_end(before, head) || !is_end(after, head)) {
    head = std::min(is_end(before, head) ? head : last(before, head), is_end(after, head) ? head : last(after, head));
  }
  const std::size_t most = std::min(old.size(), now.size()) - head;
  std::size_t tail = 0;
  while (tail < most && old[old.size() - 1 - tail] == now[now.size() - 1 - tail]) ++tail;
  const auto next = [](const Stream& stream, std::size_t at) {
    const auto start = std::ranges::lower_bound(stream.Starts, at);
    return start == stream.Starts.end() ? stream.Records.size() : *start;
  };
  while (!is_end(before, old.size() - tail) || !is_end(after, now.size() - tail)) {
    tail = std::min(old.size() - next(before, old.size() - tail), now.size() - next(after, now.size() - tail));
  }
  const auto part = [&](const Bytes& bytes) {
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(head), bytes.end() - static_cast<std::ptrdiff_t>(tail));
  };
  return {head, part(old), part(now)};
}

VQSTATUS VQRTHistory::Record() {
  Stream now;
  if (const VQSTATUS status = Read(&now)) return status;
  if (now.Records == Current.Records) return VQ_OK;
  Done.push_back(Compare(Current, now));
  StepBytes += Done.back().GetSize();
  Current = std::move(now);
  ForgetUndone();
  Trim();
  return VQ_OK;
}

void VQRTHistory::ForgetUndone() {
  for (const Step& step : Undone) StepBytes -= step.GetSize();
  Undone.clear();
}

void VQRTHistory::Trim() {
  while (Limit != 0 && StepBytes > Limit && Done.size() > 1) {
    StepBytes -= Done.front().GetSize();
    Done.pop_front();
  }
}

VQSTATUS VQRTHistory::Begin() {
  return Run([this] {
    if (InGroup) return VQERR_WRONG_SITUATION;
    const VQSTATUS status = Record();
    if (status == VQ_OK) InGroup = true;
    return status;
  });
}

VQSTATUS VQRTHistory::End() {
  return Run([this] {
    if (!InGroup) return Text.IsNull() ? VQERR_NOT_INITIALIZED : VQERR_WRONG_SITUATION;
    const VQSTATUS status = Record();
    if (status == VQ_OK) InGroup = false;
    return status;
  });
}

VQSTATUS VQRTHistory::Cancel() {
  return Run([this] {
    if (!InGroup) return Text.IsNull() ? VQERR_NOT_INITIALIZED : VQERR_WRONG_SITUATION;
    Stream now;
    VQSTATUS status = Read(&now);
    if (status != VQ_OK) return status;
    if (now.Records != Current.Records) {
      const Step step = Compare(Current, now);
      Stream before = std::move(Current);
      Current = std::move(now);
      status = Replace(step.Offset, step.After.size(), step.Before, nullptr);
      if (status != VQ_OK) {
        Current = std::move(before);
        return status;
      }
    }
    InGroup = false;
    return VQ_OK;
  });
}

VQSTATUS VQRTHistory::Undo(VQRTCursor* cursor) {
  return Run([&] {
    if (InGroup) return VQERR_WRONG_SITUATION;
    const VQSTATUS status = Record();
    return status == VQ_OK ? Move(Done, Undone, true, cursor) : status;
  });
}

VQSTATUS VQRTHistory::Redo(VQRTCursor* cursor) {
  return Run([&] {
    if (InGroup) return VQERR_WRONG_SITUATION;
    const VQSTATUS status = Record();
    return status == VQ_OK ? Move(Undone, Done, false, cursor) : status;
  });
}

VQSTATUS VQRTHistory::Move(std::list<Step>& from, std::list<Step>& to, bool back, VQRTCursor* cursor) {
  if (from.empty()) return VQWARN_NOT_FOUND;
  const Step& step = from.back();
  const VQSTATUS status =
      Replace(step.Offset, (back ? step.After : step.Before).size(), back ? step.Before : step.After, cursor);
  if (status == VQ_OK) to.splice(to.end(), from, std::prev(from.end()));
  return status;
}

VQSTATUS VQRTHistory::SetLimit(std::size_t bytes) {
  Limit = bytes;
  Trim();
  return VQ_OK;
}

VQSTATUS VQRTHistory::Clear() {
  return Run([this] {
    Stream now;
    if (const VQSTATUS status = Read(&now)) return status;
    Current = std::move(now);
    Done.clear();
    Undone.clear();
    StepBytes = 0;
    InGroup = false;
    return VQ_OK;
  });
}

VQRTObjectBody* VQRTHistory::ChildAt(std::size_t offset) const {
  const auto start = std::ranges::lower_bound(Current.Starts, offset);
  VQRTObjectBody* child = Text.GetRichTextBody()->GetTop()->GetFirstChild();
  for (auto at = Current.Starts.begin(); at != start && child; ++at) child = child->GetNext();
  return child;
}

VQSTATUS VQRTHistory::Exchange(std::size_t offset, std::size_t size, const Bytes& with) {
  VQRichText part;
  if (const VQSTATUS status = ParseRecords(with, &part)) return status;
  VQRTContainerBody* top = Text.GetRichTextBody()->GetTop();
  VQRTObjectBody* const first = ChildAt(offset);
  const VQRTObjectBody* const behind = ChildAt(offset + size);
  // The text may have been read anew since, without these.
  vq::Edit edit(*top);
  top->RegisterPABID(part.GetRichTextBody()->GetTop()->GetHighestPABID());
  VQSTATUS status = part.GetRichTextBody()->MoveInto(*top, first);
  if (status == VQ_OK) status = CloseRange(first, behind);
  if (status == VQ_OK) edit.Keep();
  return status;
}

VQSTATUS VQRTHistory::ReplaceAll(std::size_t offset, std::size_t size, const Bytes& with) {
  const Bytes& now = Current.Records;
  Bytes all;
  all.reserve(now.size() - size + with.size());
  all.insert(all.end(), now.begin(), now.begin() + static_cast<std::ptrdiff_t>(offset));
  all.insert(all.end(), with.begin(), with.end());
  all.insert(all.end(), now.begin() + static_cast<std::ptrdiff_t>(offset + size), now.end());
  return Exchange(0, now.size(), all);
}

VQSTATUS VQRTHistory::Replace(std::size_t offset, std::size_t size, const Bytes& with, VQRTCursor* cursor) {
  VQSTATUS status = Exchange(offset, size, with);
  // Parts of some structures stand at the top level, where they cannot be read alone.
  if (status != VQ_OK) status = ReplaceAll(offset, size, with);
  Stream now;
  if (status == VQ_OK) status = Read(&now);
  if (status != VQ_OK) return status;
  Current = std::move(now);
  VQRTObjectBody* changed = cursor ? ChildAt(offset) : nullptr;
  if (!cursor) return VQ_OK;
  VQRTContainerBody* top = Text.GetRichTextBody()->GetTop();
  if (changed && !changed->IsType(VQRTTYPE_ELEMENT)) changed = top->NextOfType(changed, VQRTTYPE_ELEMENT);
  return changed ? cursor->Assign(VQRTElement(VQRTObject(changed)), 0) : top->GetEndCursor(cursor);
}
