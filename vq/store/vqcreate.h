// What a new database is made with.
#ifndef QUILLON_VQ_STORE_VQCREATE_H
#define QUILLON_VQ_STORE_VQCREATE_H

#include "vq/values/vqstring.h"

// Options of VQQuillonSession::CreateDatabase. A plain value; all defaults make an ordinary, untitled database and
// refuse a path that exists. Setters store and give 0 unless told otherwise.
class VQ_API VQCreateDatabaseOptions : public VQQuillonClass {
 public:
  VQCreateDatabaseOptions();
  VQCreateDatabaseOptions(const VQCreateDatabaseOptions& other);
  VQCreateDatabaseOptions& operator=(const VQCreateDatabaseOptions& other);
  VQCLASSID GetClassID() const override;

  // The engine's class word of the new file, 0 by default; VQERR_OUT_OF_RANGE above 65,535.
  unsigned long GetDatabaseType() const { return DatabaseType; }
  VQSTATUS SetDatabaseType(unsigned long type);
  // The four texts of the database's info; together they fit in 127 bytes, what does not is cut.
  VQString GetTitle() const { return Title; }
  VQSTATUS SetTitle(const VQString& title);
  VQString GetCategories() const { return Categories; }
  VQSTATUS SetCategories(const VQString& categories);
  // The template that the new database is.
  VQString GetTemplateName() const { return TemplateName; }
  VQSTATUS SetTemplateName(const VQString& name);
  // The template that it takes its design from.
  VQString GetInheritsFrom() const { return InheritsFrom; }
  VQSTATUS SetInheritsFrom(const VQString& name);
  // Whether an existing database at the path is replaced, once the new one is complete.
  int GetOverwriteExisting() const { return OverwriteExisting; }
  VQSTATUS SetOverwriteExisting(int flag);

 private:
  std::uint16_t DatabaseType;
  VQString Title;
  VQString Categories;
  VQString TemplateName;
  VQString InheritsFrom;
  int OverwriteExisting;
};

#endif
