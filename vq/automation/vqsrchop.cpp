#include "vq/automation/vqsrchop.h"

#include "engine/formula.h"
#include "vq/automation/vqformula.h"
#include "vq/store/vqdbbody.h"
#include "vq/store/vqidtab.h"

namespace {

constexpr std::uint32_t kNotSet = 0xFFFFFFFF;
constexpr unsigned long kLastClassMask = 0xFFFF;

}  // namespace

VQSearchOptions::VQSearchOptions()
    : BeginDate{kNotSet, kNotSet},
      EndDate{kNotSet, kNotSet},
      CompletedDate{kNotSet, kNotSet},
      MaxSlates(0),
      SlateType(1) {}

bool VQSearchOptions::IsSet(const TIMEDATE& moment) { return moment.TimeWord != kNotSet || moment.DateWord != kNotSet; }

VQSTATUS VQSearchOptions::SetBeginDate(const VQDatetime& moment) {
  if (moment.IsUninitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  BeginDate = *moment.GetTIMEDATE();
  return VQ_OK;
}

VQSTATUS VQSearchOptions::SetEndDate(const VQDatetime& moment) {
  if (moment.IsUninitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  EndDate = *moment.GetTIMEDATE();
  return VQ_OK;
}

VQSTATUS VQSearchOptions::Parse(const VQString& text, TIMEDATE* moment) {
  unsigned long status = VQ_OK;
  const VQDatetime parsed(text, &status);
  if (status == VQ_OK) *moment = *parsed.GetTIMEDATE();
  return status;
}

VQSTATUS VQSearchOptions::SetBeginDate(const VQString& moment) { return vq::Apply(Parse(moment, &BeginDate)); }
VQSTATUS VQSearchOptions::SetEndDate(const VQString& moment) { return vq::Apply(Parse(moment, &EndDate)); }

VQSTATUS VQSearchOptions::SetCompletedDate(const TIMEDATE* moment) {
  if (moment == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  CompletedDate = *moment;
  return VQ_OK;
}

VQSTATUS VQSearchOptions::SetMaxSlates(unsigned long count) {
  if (count > UINT32_MAX) return vq::Apply(VQERR_INVALID_PARAMETER);
  MaxSlates = static_cast<std::uint32_t>(count);
  return VQ_OK;
}

VQSTATUS VQSearchOptions::SetSlateType(unsigned long type) {
  if (type > UINT32_MAX) return vq::Apply(VQERR_INVALID_PARAMETER);
  SlateType = static_cast<std::uint32_t>(type);
  return VQ_OK;
}

VQSTATUS VQDatabase::Search(const VQFormula& formula, VQSlateArray* slates, VQSearchOptions* options) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slates == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && formula.IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status == VQ_OK && formula.GetFormulaBody()->GetCode() == nullptr) status = VQERR_OBJECT_NOT_INITIALIZED;
  VQSearchOptions usual;
  VQSearchOptions& used = options != nullptr ? *options : usual;
  const unsigned long classes = used.GetSlateType();
  if (status == VQ_OK && (classes == 0 || classes > kLastClassMask)) status = VQERR_INVALID_PARAMETER;
  if (status != VQ_OK) return vq::Apply(status);
  const TIMEDATE begin = used.GetBeginDate();
  const TIMEDATE end = used.GetEndDate();
  TIMEDATE completed{};
  ENGHANDLE table = 0;
  status = vq::FromEngine(
      EngDbSearchFormula(body->GetHandle(), formula.GetCode(), static_cast<std::uint32_t>(formula.GetCodeLength()),
                         static_cast<std::uint16_t>(classes), VQSearchOptions::IsSet(begin) ? &begin : nullptr,
                         VQSearchOptions::IsSet(end) ? &end : nullptr, static_cast<std::uint32_t>(used.GetMaxSlates()),
                         &completed, &table));
  if (status == VQ_OK) status = FillArray(table, classes, slates);
  if (status == VQ_OK && options != nullptr) status = options->SetCompletedDate(&completed);
  return vq::Apply(status);
}
