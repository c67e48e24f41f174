// Options for new databases.
#include "vq/store/vqcreate.h"

VQCreateDatabaseOptions::VQCreateDatabaseOptions() : DatabaseType(0), OverwriteExisting(0) {}

VQCreateDatabaseOptions::VQCreateDatabaseOptions(const VQCreateDatabaseOptions& other) = default;

VQCreateDatabaseOptions& VQCreateDatabaseOptions::operator=(const VQCreateDatabaseOptions& other) = default;

VQCLASSID VQCreateDatabaseOptions::GetClassID() const { return VQCLASSID_VQCREATEDATABASEOPTIONS; }

VQSTATUS VQCreateDatabaseOptions::SetDatabaseType(unsigned long type) {
  if (type > 0xFFFF) return vq::Apply(VQERR_OUT_OF_RANGE);
  DatabaseType = static_cast<std::uint16_t>(type);
  return VQ_OK;
}

VQSTATUS VQCreateDatabaseOptions::SetTitle(const VQString& title) {
  Title = title;
  return VQ_OK;
}

VQSTATUS VQCreateDatabaseOptions::SetCategories(const VQString& categories) {
  Categories = categories;
  return VQ_OK;
}

VQSTATUS VQCreateDatabaseOptions::SetTemplateName(const VQString& name) {
  TemplateName = name;
  return VQ_OK;
}

VQSTATUS VQCreateDatabaseOptions::SetInheritsFrom(const VQString& name) {
  InheritsFrom = name;
  return VQ_OK;
}

VQSTATUS VQCreateDatabaseOptions::SetOverwriteExisting(int flag) {
  OverwriteExisting = flag != 0;
  return VQ_OK;
}
