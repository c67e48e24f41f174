#include "vq/richtext/rttext.h"

#include <algorithm>
#include <string>

#include "engine/text.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqrttabl.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

namespace vq {

TextPlace::TextPlace(const VQRTCursor& cursor) : Node(cursor.GetElementBody()), Before(0) {
  if (!Node) return;
  const unsigned long offset = cursor.GetOffset();
  if (offset == 0) {
    Before = cursor.GetRightEdge() ? 1 : 0;
  } else if (Run()->GetByteCount() > 0) {
    Before = cursor.GetRightEdge() ? offset : offset - 1;
  }
}

VQStylizedTextBody* TextPlace::Run() const {
  return Node && Node->GetType() == VQRTTYPE_STYLIZED_TEXT ? static_cast<VQStylizedTextBody*>(Node) : nullptr;
}

VQRTBaseContainerBody* EnclosingContainer(const VQRTObjectBody* object) { return object->GetParent(); }

const VQRTObjectBody* EnclosingTable(const VQRTObjectBody* object) {
  while (object && object->GetType() != VQRTTYPE_TABLE) object = object->GetParent();
  return object;
}

bool IsTextPlace(const VQRTObjectBody* object) {
  const VQRTObjectBody* around = object->GetParent();
  while (around && around->GetType() != VQRTTYPE_TABLE_CELL && around->GetType() != VQRTTYPE_TABLE) {
    around = around->GetParent();
  }
  return !around || around->GetType() == VQRTTYPE_TABLE_CELL;
}

namespace {

constexpr std::uint32_t kRunHead = 8;  // ahead of the characters in a text record

class Collector {
 public:
  Collector(const VQRTBaseContainerBody& container, const TextPlace* start, const TextPlace* end)
      : Container(container), Start(start), End(end) {}

  VQSTATUS Run(VQString* text) {
    const VQRTObjectBody* object = Start ? Start->Node : Container.GetFirstChild();
    while (object) {
      Enter(*object);
      if (Text.size() > VQStringBody::kMaximumBytes) return VQERR_STRING_TOO_LONG;
      if (End && object == End->Node) break;
      object = Next(object);
    }
    if (Text.size() > VQStringBody::kMaximumBytes) return VQERR_STRING_TOO_LONG;
    *text = VQString(reinterpret_cast<const VQCHAR*>(Text.data()), Text.size());
    return VQ_OK;
  }

 private:
  const VQRTObjectBody* Next(const VQRTObjectBody* object) {
    const VQRTBaseContainerBody* inside = object->AsBase();
    if (inside && inside->GetFirstChild()) return inside->GetFirstChild();
    while (object && object != &Container) {
      Leave(*object);
      if (object->GetNext()) return object->GetNext();
      object = object->GetParent();
    }
    return nullptr;
  }

  void Enter(const VQRTObjectBody& object) {
    if (object.GetType() == VQRTTYPE_NEW_PARAGRAPH) {
      if (!OpensCell(object)) Text += '\n';
    } else if (object.GetType() == VQRTTYPE_STYLIZED_TEXT) {
      AddRun(object);
    }
  }

  void Leave(const VQRTObjectBody& object) {
    if (object.GetType() != VQRTTYPE_TABLE_CELL) return;
    Text += '\t';
    const auto& cell = static_cast<const VQTableCellBody&>(object);
    const VQTableCellBody* next = VQTableBody::NextCell(&cell);
    if (!next || next->GetRow() != cell.GetRow()) Text += '\n';
  }

  // The paragraph record that a cell's content stands behind ends nothing of the cell.
  static bool OpensCell(const VQRTObjectBody& paragraph) {
    if (!paragraph.GetParent() || paragraph.GetParent()->GetType() != VQRTTYPE_TABLE_CELL) return false;
    const VQRTObjectBody* before = paragraph.GetPrevious();
    while (before && before->IsType(VQRTTYPE_PAB_OBJECT)) before = before->GetPrevious();
    return before == nullptr;
  }

  void AddRun(const VQRTObjectBody& object) {
    const RecordBytes record(object);
    RecordHeader header;
    if (!ReadRecordHeader(record.Get(), record.GetSize(), &header) || header.Length <= kRunHead) return;
    if (record.GetSize() <= kRunHead) return;
    const unsigned char* text = record.Get() + kRunHead;
    const std::uint32_t bytes = std::min(header.Length, record.GetSize()) - kRunHead;
    const std::uint32_t from = Start && Start->Node == &object ? Span(text, bytes, Start->Before) : 0;
    const std::uint32_t to = End && End->Node == &object ? Span(text, bytes, End->Before) : bytes;
    if (from >= to) return;
    const std::size_t at = Text.size();
    Text.append(reinterpret_cast<const char*>(text) + from, to - from);
    std::replace(Text.begin() + static_cast<std::ptrdiff_t>(at), Text.end(), '\0', '\n');
  }

  static std::uint32_t Span(const unsigned char* text, std::uint32_t length, unsigned long count) {
    std::uint32_t size = 0;
    EngTextSpanBytes(text, length, static_cast<std::uint32_t>(count), &size);  // fewer characters: all bytes
    return size;
  }

  const VQRTBaseContainerBody& Container;
  const TextPlace* Start;
  const TextPlace* End;
  std::string Text;
};

}  // namespace

VQSTATUS CollectText(const VQRTBaseContainerBody& container, const TextPlace* start, const TextPlace* end,
                     VQString* text) {
  return Collector(container, start, end).Run(text);
}

}  // namespace vq
