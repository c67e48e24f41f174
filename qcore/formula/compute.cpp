#include "qcore/formula/compute.h"

#include "engine/formula.h"

namespace qcore::formula {

ENGSTATUS Compute::Start(Bytes code, std::uint16_t flags, ENGHANDLE* handle) {
  if ((flags & ~ENG_COMPUTE_ASSIGN) != 0) return ENG_ERR_ARGUMENT;
  std::shared_ptr<const Program> program;
  const ENGSTATUS status = Program::Load(code, &program);
  if (status != ENG_OK) return status;
  const auto length = static_cast<std::uint32_t>(code.size());
  std::unique_ptr<Compute> compute(new Compute(std::move(program), length, (flags & ENG_COMPUTE_ASSIGN) != 0));
  *handle = handle_table.Insert(Kind::kCompute, compute.get());
  if (*handle == 0) return ENG_ERR_TOO_MANY_HANDLES;
  compute.release();
  return ENG_OK;
}

ENGSTATUS Compute::Stop(ENGHANDLE handle) {
  const std::unique_ptr<Compute> compute(static_cast<Compute*>(handle_table.Remove(Kind::kCompute, handle)));
  return compute ? ENG_OK : ENG_ERR_INVALID_HANDLE;
}

void Compute::StopAll() {
  for (const ENGHANDLE handle : handle_table.All(Kind::kCompute)) static_cast<void>(Stop(handle));
}

}  // namespace qcore::formula
