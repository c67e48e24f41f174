// VQDatabase::Check.
#include "engine/database.h"
#include "vq/store/vqdbbody.h"
#include "vq/values/vqstring.h"

VQSTATUS VQDatabase::Check(VQString* report) const {
  VQDatabaseBody* body = nullptr;
  if (const VQSTATUS status = CheckOpen(&body)) return vq::Apply(status);
  char words[512] = "";
  const VQSTATUS status = vq::FromEngine(EngDbCheck(body->GetHandle(), words, sizeof words));
  if (report != nullptr) report->Setup(words);
  return vq::Apply(status);
}
