#include "vq/richtext/vqpabdef.h"

#include <algorithm>
#include <cstdlib>

#include "engine/ods.h"
#include "vq/richtext/rtcheck.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtcont.h"

namespace {

constexpr std::uint16_t kDefaultMargin = 1440;
constexpr std::int16_t kDefaultTab = 720;

CDPABDEFINITION DefaultRecord() {
  CDPABDEFINITION record{};
  record.LeftMargin = kDefaultMargin;
  record.FirstLineMargin = kDefaultMargin;
  record.Tabs[0] = kDefaultTab;
  record.Flags = PABFLAG_HIDE_UNLINK;
  return record;
}

// The bytes of one record in stored form.
template <typename Record>
VQSTATUS Encode(unsigned short code, const Record& record, std::string* bytes) {
  bytes->assign(EngOdsLength(code), '\0');
  void* cursor = bytes->data();
  return vq::FromEngine(EngOdsWrite(&cursor, code, &record, 1));
}

}  // namespace

VQPABDefinitionBody::VQPABDefinitionBody(VQUNITS units)
    : VQRTObjectBody(VQRTTYPE_PAB_DEFINITION, SIG_CD_PABDEFINITION),
      IndentationValue(kDefaultIndentation),
      Units(units),
      TabUnits(units) {
  vq::ThrowIfError(SetRecord(DefaultRecord()));
}

VQPABDefinitionBody::VQPABDefinitionBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTObjectBody(VQRTTYPE_PAB_DEFINITION, source, offset, length),
      IndentationValue(kFromRecord),
      Units(VQUNITS_DEFAULT),
      TabUnits(VQUNITS_DEFAULT) {}

std::uint16_t VQPABDefinitionBody::GetIndentation() const {
  if (IndentationValue != kFromRecord) return IndentationValue;
  CDPABDEFINITION record{};
  if (GetRecord(&record) != VQ_OK || record.FirstLineMargin == record.LeftMargin) return kDefaultIndentation;
  return static_cast<std::uint16_t>(std::abs(record.FirstLineMargin - record.LeftMargin));
}

VQSTATUS VQPABDefinitionBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (VQSTATUS status = VQRTObjectBody::Copy(source, options)) return status;
  const VQPABDefinitionBody& other = static_cast<const VQPABDefinitionBody&>(*source);
  if (vq::Edit* edit = vq::Edit::Of(*this)) {
    edit->Sets(*this, IndentationValue);
    edit->Sets(*this, Units);
    edit->Sets(*this, TabUnits);
  }
  IndentationValue = other.IndentationValue;
  Units = other.Units;
  TabUnits = other.TabUnits;
  return VQ_OK;
}

VQSTATUS VQPABDefinitionBody::GetRecord(CDPABDEFINITION* record) const {
  if (IsClosed()) return VQERR_OBJECT_CLOSED;
  VQ_ASSERT(GetCDSignature() == SIG_CD_PABDEFINITION, "VQPABDEF");
  return ReadODS(ODS_CDPABDEFINITION, record, 0);
}

VQSTATUS VQPABDefinitionBody::SetRecord(const CDPABDEFINITION& record) {
  CDPABDEFINITION stored = record;
  stored.Header = {SIG_CD_PABDEFINITION, static_cast<std::uint16_t>(vq::LengthWithRest(*this, ODS_CDPABDEFINITION))};
  return WriteODS(ODS_CDPABDEFINITION, &stored, 0);
}

VQPABDefinition::VQPABDefinition(const VQRTObject& object) { *this = object; }
VQPABDefinition::VQPABDefinition(VQPABDefinitionBody* body) { Attach(body, 0); }

void VQPABDefinition::ValidateRTType(const VQRTObjectBody* body) const {
  if (body != nullptr && !body->IsType(VQRTTYPE_PAB_DEFINITION)) vq::Throw(VQERR_CONVERSION_FAILED);
}

VQPABDefinitionBody* VQPABDefinition::GetPABDefinitionBody() const {
  return static_cast<VQPABDefinitionBody*>(GetRTObjectBody());
}

CDPABDEFINITION VQPABDefinition::GetCDPABDefinition() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  CDPABDEFINITION record{};
  vq::ThrowIfError(GetPABDefinitionBody()->GetRecord(&record));
  return record;
}

unsigned short VQPABDefinition::GetPABID() const { return GetCDPABDefinition().PABID; }

VQSTATUS VQPABDefinition::SetPABID(unsigned short pabid) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(vq::WritePABIDs(*GetRTObjectBody(), {pabid, pabid}));
}

namespace vq {

namespace {

// Every paragraph has a reference: its identifier, a word, is read and written where it stands.
constexpr std::uint32_t kReferencePABID = 2;

template <typename Record>
VQSTATUS SetRecordPABID(VQRTObjectBody& object, unsigned short code, std::uint16_t pabid) {
  Record record{};
  if (VQSTATUS status = object.ReadODS(code, &record, 0)) return status;
  if (record.PABID == pabid) return VQ_OK;
  record.PABID = pabid;
  return object.WriteODS(code, &record, 0);
}

template <typename Record>
VQSTATUS GetRecordPABID(const VQRTObjectBody& object, unsigned short code, PABIDs* ids) {
  Record record{};
  if (VQSTATUS status = object.ReadODS(code, &record, 0)) return status;
  *ids = {record.PABID, record.PABID};
  return VQ_OK;
}

VQSTATUS WriteReference(VQRTObjectBody& object, PABIDs ids) {
  if (ids.First == ids.Second && object.GetType() == VQRTTYPE_PAB_REFERENCE &&
      object.GetRecordSize() >= EngOdsLength(ODS_CDPABREFERENCE)) {
    PABIDs present;
    if (VQSTATUS status = ReadPABIDs(object, &present)) return status;
    const unsigned char id[] = {static_cast<unsigned char>(ids.First), static_cast<unsigned char>(ids.First >> 8)};
    return present.First == ids.First ? VQ_OK : object.WriteRecord(kReferencePABID, id, sizeof id);
  }
  PABIDs present;
  if (ReadPABIDs(object, &present) == VQ_OK && present.First == ids.First && present.Second == ids.Second) return VQ_OK;
  std::string bytes;
  VQSTATUS status = VQ_OK;
  VQRTTYPE type = VQRTTYPE_PAB_REFERENCE;
  if (ids.First == ids.Second) {
    CDPABREFERENCE record{{SIG_CD_PABREFERENCE, static_cast<uint8_t>(EngOdsLength(ODS_CDPABREFERENCE))}, ids.First};
    status = Encode(ODS_CDPABREFERENCE, record, &bytes);
  } else {
    type = VQRTTYPE_PAB_FORMULA_REFERENCE;
    uint8_t length = static_cast<uint8_t>(EngOdsLength(ODS_CDPABFORMULAREF));
    CDPABFORMULAREF record{{SIG_CD_PABFORMULAREF, length}, ids.First, ids.Second};
    status = Encode(ODS_CDPABFORMULAREF, record, &bytes);
  }
  if (status == VQ_OK) status = object.SetRecord(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  if (status == VQ_OK) object.SetType(type);
  return status;
}

}  // namespace

VQSTATUS ReadPABIDs(const VQRTObjectBody& object, PABIDs* ids) {
  switch (object.GetType()) {
    case VQRTTYPE_PAB_DEFINITION:
      return GetRecordPABID<CDPABDEFINITION>(object, ODS_CDPABDEFINITION, ids);
    case VQRTTYPE_PAB_REFERENCE: {
      if (object.IsClosed()) return VQERR_OBJECT_CLOSED;
      const RecordBytes bytes(object);
      if (bytes.GetSize() < kReferencePABID + sizeof ids->First) return VQERR_RT_INVALID;
      ids->First = ids->Second = LoadWord(bytes.Get() + kReferencePABID);
      return VQ_OK;
    }
    case VQRTTYPE_PAB_HIDE:
      return GetRecordPABID<CDPABHIDE>(object, ODS_CDPABHIDE, ids);
    case VQRTTYPE_PAB_STYLE_NAME:
      return GetRecordPABID<CDSTYLENAME>(object, ODS_CDSTYLENAME, ids);
    case VQRTTYPE_PAB_FORMULA_REFERENCE: {
      CDPABFORMULAREF record{};
      if (VQSTATUS status = object.ReadODS(ODS_CDPABFORMULAREF, &record, 0)) return status;
      *ids = {record.SourcePABID, record.DestPABID};
      return VQ_OK;
    }
    default:
      return VQERR_INAPPROPRIATE;
  }
}

VQSTATUS WritePABIDs(VQRTObjectBody& object, PABIDs ids) {
  VQRTBaseContainerBody* top = object.GetTop();
  if (top && top->IsType(VQRTTYPE_CONTAINER)) {
    static_cast<VQRTContainerBody*>(top)->RegisterPABID(std::max(ids.First, ids.Second));
  }
  switch (object.GetType()) {
    case VQRTTYPE_PAB_DEFINITION:
      return SetRecordPABID<CDPABDEFINITION>(object, ODS_CDPABDEFINITION, ids.First);
    case VQRTTYPE_PAB_HIDE:
      return SetRecordPABID<CDPABHIDE>(object, ODS_CDPABHIDE, ids.First);
    case VQRTTYPE_PAB_STYLE_NAME:
      return SetRecordPABID<CDSTYLENAME>(object, ODS_CDSTYLENAME, ids.First);
    case VQRTTYPE_PAB_REFERENCE:
    case VQRTTYPE_PAB_FORMULA_REFERENCE:
      return WriteReference(object, ids);
    default:
      return VQERR_INAPPROPRIATE;
  }
}

VQRTObject MakePABReference(PABIDs ids) {
  VQRTObject reference(new VQRTObjectBody(VQRTTYPE_PAB_REFERENCE, SIG_CD_PABREFERENCE));
  ThrowIfError(WriteReference(*reference.GetRTObjectBody(), ids));
  return reference;
}

VQRTObject MakePABHide(std::uint16_t pabid) {
  VQRTObject hide(new VQRTObjectBody(VQRTTYPE_PAB_HIDE, SIG_CD_PABHIDE));
  ThrowIfError(WriteHideFormula(*hide.GetRTObjectBody(), pabid, ""));
  return hide;
}

VQSTATUS ReadHideFormula(const VQRTObjectBody& hide, std::string* code) {
  std::uint32_t fixed = EngOdsLength(ODS_CDPABHIDE);
  std::uint32_t size = hide.GetRecordSize();
  if (size < fixed) return VQERR_CORRUPTED;
  CDPABHIDE record{};
  if (VQSTATUS status = hide.ReadODS(ODS_CDPABHIDE, &record, 0)) return status;
  // An odd length is told by the length word's low bit, which the eight-bit rule keeps; the pad byte is not code.
  std::uint32_t padding = record.Header.Length & 1;
  if (size - fixed < padding) return VQERR_CORRUPTED;
  code->resize(size - fixed - padding);
  if (code->empty()) return VQ_OK;
  return hide.ReadRecord(fixed, code->data(), static_cast<std::uint32_t>(code->size()));
}

VQSTATUS WriteHideFormula(VQRTObjectBody& hide, std::uint16_t pabid, const std::string& code) {
  std::uint32_t size = EngOdsLength(ODS_CDPABHIDE) + static_cast<std::uint32_t>(code.size());
  if (Padded(size) > kItemTarget) return VQERR_TEXT_TOO_LONG;
  CDPABHIDE record{{SIG_CD_PABHIDE, static_cast<uint16_t>(size & 0xFF)}, pabid, {}};
  std::string bytes;
  if (VQSTATUS status = Encode(ODS_CDPABHIDE, record, &bytes)) return status;
  bytes += code;
  return hide.SetRecord(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

}  // namespace vq
