// VQRichTextParser: turns the record stream of a rich text into its tree.
#ifndef QUILLON_VQ_RICHTEXT_VQRTINIT_H
#define QUILLON_VQ_RICHTEXT_VQRTINIT_H

#include <array>

#include "vq/richtext/vqrtbody.h"

// One load. Records become views on the loaded blocks; those that no rule knows, or that stand where no rule expects
// them, become VQRTTYPE_COMPOSITE_DATA. No record is dropped or moved, so that a tree writes back what was read.
class VQRichTextParser {
 public:
  // Containers that may be open at one place of a stream.
  static constexpr unsigned kStackSize = 10;

  explicit VQRichTextParser(VQRichTextBody& body);
  ~VQRichTextParser();
  VQRichTextParser(const VQRichTextParser&) = delete;
  VQRichTextParser& operator=(const VQRichTextParser&) = delete;

  [[nodiscard]] VQSTATUS Run();

  // What a record becomes that has no class of its own yet, if that is part of a structure; else
  // VQRTTYPE_COMPOSITE_DATA.
  static VQRTTYPE StructureType(const unsigned char* bytes, std::uint32_t size);
  // Whether records of the signature become something else than VQRTTYPE_COMPOSITE_DATA where they stand right.
  static bool HasClass(std::uint16_t signature) { return FindRule(signature) != nullptr; }
  // By data type and flags; VQRTTYPE_NONE for a record that is no field of a known kind.
  static VQRTTYPE FieldType(const unsigned char* bytes, std::uint32_t size);

 private:
  struct Record {
    vq::RecordSource* Source;
    std::uint32_t Offset;  // in the value
    std::uint32_t Size;    // padded, as far as bytes are there
    std::uint16_t Signature;
    const unsigned char* Bytes;
  };
  // What to do with a signature; the table is in the source.
  using Handler = VQSTATUS (VQRichTextParser::*)(const Record&);
  struct Rule {
    std::uint16_t Signature;
    Handler Handle;
    unsigned char Type;
  };
  static const Rule kRules[];
  static const Rule* FindRule(std::uint16_t signature);

  // An open container. New objects go into AddTo, which differs for a link hotspot that spans table cells.
  struct Open {
    VQRTBaseContainerBody* Object;
    VQRTBaseContainerBody* AddTo;
  };

  [[nodiscard]] VQSTATUS ParseBlock(std::size_t index);
  [[nodiscard]] VQSTATUS Dispatch(const Record& record);
  [[nodiscard]] VQSTATUS Finish();
  std::uint16_t NextSignature(std::size_t index, const unsigned char* value, std::uint32_t offset) const;

  // Handlers.
  VQSTATUS AddPlain(const Record& record);
  VQSTATUS AddElement(const Record& record);
  VQSTATUS AddDefinition(const Record& record);
  VQSTATUS AddStyleName(const Record& record);
  VQSTATUS AddPABObject(const Record& record);
  VQSTATUS AddText(const Record& record);
  VQSTATUS AddTextStyle(const Record& record);
  VQSTATUS AddFieldExtension(const Record& record);
  VQSTATUS AddField(const Record& record);
  VQSTATUS BeginTable(const Record& record);
  VQSTATUS AddCell(const Record& record);
  VQSTATUS EndTable(const Record& record);
  VQSTATUS BeginHotspot(const Record& record);
  VQSTATUS EndHotspot(const Record& record);
  VQSTATUS BeginOLE(const Record& record);
  VQSTATUS EndOLE(const Record& record);
  VQSTATUS AddPart(const Record& record);
  VQSTATUS BeginGraphic(const Record& record);
  VQSTATUS AddGraphicHeader(const Record& record);
  VQSTATUS AddGraphicPart(const Record& record);
  VQSTATUS AddOpaque(const Record& record);

  // Objects get their index values in passing, a fixed gap apart; see SpreadIndex.
  void SpreadIndex();
  void Add(VQRTObjectBody* object);
  // A record that leads its object in the stream becomes its first child.
  void TakePending(VQRTBaseContainerBody* object);
  [[nodiscard]] VQSTATUS Push(VQRTBaseContainerBody* object);
  void Pop();
  [[nodiscard]] VQSTATUS AddAndPush(VQRTBaseContainerBody* object);
  VQRTBaseContainerBody* Container() const;
  VQRTBaseContainerBody* StackTop() const { return Depth == 0 ? nullptr : Stack[Depth - 1].Object; }
  bool TopIs(VQRTTYPE type) const { return StackTop() && StackTop()->IsType(type); }

  static VQRTTYPE HotspotType(const unsigned char* bytes, std::uint32_t size);
  void Register(const Record& record, std::uint32_t offset);
  void FlushPending();
  void CloseGraphic();
  [[nodiscard]] VQSTATUS GraphicFailed(const Record& record);
  // The session's handler decides; without one the status stands.
  [[nodiscard]] VQSTATUS Report(VQSTATUS status, const Record* record);

  VQRichTextBody& Body;
  std::array<Open, kStackSize> Stack;
  unsigned Depth = 0;
  VQRTObjectBody* Pending = nullptr;    // a record that goes to the text or field that comes next, counted
  VQRTObjectBody* LastAdded = nullptr;  // into whatever container
  VQRTObjectBody* LastRead = nullptr;   // may be gone, with the block's source then outdated
  std::uint64_t Index = 0;              // the highest value given so far
  std::uint32_t Gap = 0;
  std::uint16_t Next = 0;  // signature of the record behind the present one
  unsigned char RuleType = 0;
  bool HotspotEndSeen = true;
  bool GraphicGood = true;
  std::uint32_t StreamOffset = 0;  // of the present block over all items
};

#endif
