// VQDatabaseArray: the databases that a directory search found.
//
// The entries are closed databases; the client opens those that it wants. Handles share the array.
#ifndef QUILLON_VQ_STORE_DBARRAY_H
#define QUILLON_VQ_STORE_DBARRAY_H

#include <string>
#include <vector>

#include "vq/store/vqdbbody.h"

class VQ_API VQDatabaseArrayBody : public VQBody {
 public:
  // Searches a directory of the server's data directory. `kinds` bits: 0 databases, 1 directories too (both set),
  // 2 go down. *error is VQWARN_NOT_FOUND for an empty result.
  VQDatabaseArrayBody(VQQuillonSession* session, const char* directory, unsigned short kinds, VQSTATUS* error);
  ~VQDatabaseArrayBody() override;
  VQCLASSID GetClassID() const override;

  unsigned long GetCount() const { return static_cast<unsigned long>(Entries.size()); }
  VQDatabaseBody* GetDatabaseBody(unsigned long index) const { return Entries[index].Database; }
  // The info text that the search gave; empty for a directory.
  const std::string& GetInfo(unsigned long index) const { return Entries[index].Info; }

 private:
  struct Entry {
    VQDatabaseBody* Database;  // counted
    std::string Info;
  };

  VQSTATUS Search(const char* directory, unsigned short kinds);
  VQSTATUS AddEntry(const char* path, const ENGCHAR* info);

  VQQuillonSession* Owner;
  std::string Server;
  std::string Port;
  std::vector<Entry> Entries;
};

class VQ_API VQDatabaseArray : public VQSmartPtr {
 public:
  VQDatabaseArray();
  VQDatabaseArray(const VQDatabaseArray& other);
  explicit VQDatabaseArray(VQDatabaseArrayBody* body);
  VQDatabaseArray& operator=(const VQDatabaseArray& other);
  VQDatabaseArray& operator=(VQDatabaseArrayBody* body);
  VQCLASSID GetClassID() const override;
  // Throws VQERR_BAD_SUBSCRIPT.
  VQDatabase operator[](unsigned long index) const;
  // 0 for an array that was never filled.
  unsigned long GetCount() const;
  // The info text of the entry (its first line is the title) without opening it.
  VQString GetInfo(unsigned long index) const;
};

#endif
