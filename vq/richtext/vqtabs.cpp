#include "vq/richtext/tabstops.h"
#include "vq/richtext/vqpabdef.h"

VQTabs::VQTabs(VQUNITS units) : VQSmartPtr(new VQPABDefinitionBody(units)) {}
VQTabs::VQTabs(VQPABDefinitionBody* body) : VQSmartPtr(body) {}

CDPABDEFINITION VQTabs::Record() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  CDPABDEFINITION record{};
  vq::ThrowIfError(GetPABDefinitionBody()->GetRecord(&record));
  return record;
}

// Edits a copy of the record and stores it where that succeeded. `edit` is given the body for its units.
template <typename Edit>
VQSTATUS VQTabs::Change(Edit edit) {
  if (Body == nullptr) VQSmartPtr::operator=(new VQPABDefinitionBody);
  VQPABDefinitionBody& body = *GetPABDefinitionBody();
  CDPABDEFINITION record{};
  if (VQSTATUS status = body.GetRecord(&record)) return vq::Apply(status);
  if (VQSTATUS status = edit(record, body)) return vq::Apply(status);
  return vq::Apply(body.SetRecord(record));
}

double VQTabs::operator[](unsigned long index) const {
  CDPABDEFINITION record = Record();
  if (index >= vq::tabs::Count(record)) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return vq::FromTwips(record.Tabs[index], GetUnits());
}

unsigned long VQTabs::GetCount() const { return vq::tabs::Count(Record()); }

VQUNITS VQTabs::GetUnits() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return GetPABDefinitionBody()->GetTabUnits();
}

VQSTATUS VQTabs::SetUnits(VQUNITS units) {
  if (static_cast<unsigned>(units) > VQUNITS_DEFAULT) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (Body == nullptr) VQSmartPtr::operator=(new VQPABDefinitionBody);
  GetPABDefinitionBody()->SetTabUnits(units);
  return VQ_OK;
}

VQSTATUS VQTabs::Add(const double& position, VQTABALIGNMENT alignment) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    return vq::tabs::Add(&record, vq::ToTwips(position, body.GetTabUnits()), alignment);
  });
}

VQSTATUS VQTabs::GetAlignment(const double& position, VQTABALIGNMENT* alignment) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (alignment == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  CDPABDEFINITION record = Record();
  unsigned index = vq::tabs::Find(record, vq::ToTwips(position, GetUnits()));
  if (index == vq::tabs::kAbsent) return VQWARN_NOT_FOUND;
  *alignment = static_cast<VQTABALIGNMENT>(vq::tabs::Alignment(record, index));
  return VQ_OK;
}

VQSTATUS VQTabs::Remove(const double& position) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    return vq::tabs::Remove(&record, vq::ToTwips(position, body.GetTabUnits()));
  });
}

VQSTATUS VQTabs::RemoveAll() {
  return Change([](CDPABDEFINITION& record, VQPABDefinitionBody&) {
    vq::tabs::RemoveAll(&record);
    return VQ_OK;
  });
}

VQSTATUS VQTabs::SetAlignment(const double& position, VQTABALIGNMENT alignment) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    return vq::tabs::SetAlignment(&record, vq::ToTwips(position, body.GetTabUnits()), alignment);
  });
}

VQSTATUS VQTabs::SetInterval(const double& distance, VQTABALIGNMENT alignment) {
  return Change([&](CDPABDEFINITION& record, VQPABDefinitionBody& body) {
    return vq::tabs::SetInterval(&record, vq::ExactTwips(distance, body.GetTabUnits()), alignment);
  });
}
