// ID tables and the arrays of slates on top of them.
//
// A VQSlateArray is an ordered set of slate identifiers of one database. Handles that it gives out for one slate
// share one open body. Handles on an array share it; Copy makes a set of its own.
//
// Operations on an array that was never initialised give VQERR_OBJECT_NOT_INITIALIZED, or throw it where the result
// is no status. A failed change leaves the set as the engine left it.
#ifndef QUILLON_VQ_STORE_VQIDTAB_H
#define QUILLON_VQ_STORE_VQIDTAB_H

#include <vector>

#include "engine/records.h"
#include "vq/store/vqdbbody.h"

class VQDocument;
class VQSlate;
class VQSlateBody;
class VQVFNavigator;
class VQViewFolder;

// The set itself. Operations return their status; those without one throw. Closed, every one gives
// VQERR_OBJECT_NOT_INITIALIZED.
class VQ_API VQIDTable : public VQBody {
 public:
  // Takes the engine's table over.
  explicit VQIDTable(ENGHANDLE table);
  ~VQIDTable() override;
  VQIDTable(const VQIDTable&) = delete;
  VQIDTable& operator=(const VQIDTable&) = delete;
  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  virtual VQSTATUS Add(std::uint32_t id);
  // Both tables stay the caller's.
  virtual VQSTATUS AddTable(ENGHANDLE table);
  // Registers an open slate, counted; one that is registered already is left alone.
  virtual VQSTATUS AddBody(VQSlateBody* body);
  virtual int Contains(std::uint32_t id);
  virtual unsigned long GetCount();
  // Null when no open slate of that identifier is registered.
  virtual VQSlateBody* FindBody(std::uint32_t id);
  // Constant time for the position asked for last, its neighbours, the first and the last; throws
  // VQERR_BAD_SUBSCRIPT.
  virtual std::uint32_t GetID(unsigned long index);
  virtual ENGHANDLE GetHandle();
  virtual VQSTATUS Remove(std::uint32_t id);
  virtual VQSTATUS RemoveTable(ENGHANDLE table);
  virtual VQSTATUS RemoveAll();
  virtual VQSTATUS RemoveBody(VQSlateBody* body);
  // The result of a full text search takes no changes.
  virtual int IsFullText() const { return 0; }
  // The hit's score; 0 where there are none.
  virtual unsigned short GetScore(unsigned long /*index*/) const { return 0; }

 protected:
  // For a set that is not an engine's table.
  VQIDTable();
  VQSTATUS CheckUsable() const;

 private:
  struct Registration {
    std::uint32_t ID;
    VQSlateBody* Body;  // counted
  };

  void Refresh();
  void ReadRuns(std::uint32_t size);
  void LockTable();
  void UnlockTable();
  VQSTATUS Changed(ENGSTATUS result);
  unsigned Extra() const { return RunPtr[0]; }
  void MoveForward(unsigned long distance);
  void MoveBackward(unsigned long distance);
  void StepRun(bool forward);
  std::uint32_t ScanTo(std::uint32_t index);
  void FillWindow(std::uint32_t stride);

  int Closed;
  std::uint8_t RunOffset;
  std::uint32_t CurrentID;
  std::uint32_t CurrentIndex;
  const unsigned char* RunPtr;
  const unsigned char* FirstRun;
  int UseScan;
  const unsigned char* LastRun;
  std::uint32_t Count;
  ENGHANDLE Handle;
  unsigned char* LockedPtr;
  IDTABLEHEADER Header;
  std::vector<Registration> Bodies;  // by identifier
  // In scan mode: the IDs at every 16th position that a scan has passed, and all of one such stretch.
  std::vector<std::uint32_t> ScanMarks;
  std::vector<std::uint32_t> ScanWindow;
  std::uint32_t WindowStride;
};

class VQ_API VQSlateArray : public VQSmartPtr {
 public:
  VQSlateArray();
  // An empty array of an open database; a closed one throws VQERR_UNINITIALIZED_ARGUMENT.
  explicit VQSlateArray(const VQDatabase& database);
  // The documents of the entries, in a set of the array's own. Throws VQERR_UNINITIALIZED_ARGUMENT for a null source,
  // or the status that says why entries can't be read.
  explicit VQSlateArray(const VQViewFolder& view);
  explicit VQSlateArray(const VQVFNavigator& navigator);
  VQSlateArray(const VQSlateArray& other);
  VQSlateArray& operator=(const VQSlateArray& other);
  VQCLASSID GetClassID() const override;

  // A bound slate. VQERR_BAD_SUBSCRIPT.
  VQSlate operator[](unsigned long index) const;

  // A slate that was never saved gives VQERR_SLATE_NOT_SAVED, one of another database VQERR_DIFFERENT_DATABASE.
  virtual VQSTATUS Add(const VQSlate& slate);
  virtual VQSTATUS Add(unsigned long id);
  virtual VQSTATUS Add(const VQSlateArray& other);
  // The documents of a view's or navigator's entries as it has them now.
  virtual VQSTATUS Add(const VQViewFolder& view);
  virtual VQSTATUS Add(const VQVFNavigator& navigator);
  // An engine table that stays the caller's; VQERR_EMPTY_ARRAY when it has no entries.
  virtual VQSTATUS Add(void* idtable);
  virtual VQSTATUS Copy(VQSlateArray* copy) const;
  virtual int Contains(const VQSlate& slate) const;
  virtual int Contains(unsigned long id) const;
  virtual VQSTATUS Remove(const VQSlate& slate);
  virtual VQSTATUS Remove(unsigned long id);
  virtual VQSTATUS Remove(const VQSlateArray& other);
  virtual VQSTATUS Remove(const VQViewFolder& view);
  virtual VQSTATUS Remove(const VQVFNavigator& navigator);
  virtual VQSTATUS Remove(void* idtable);
  virtual VQSTATUS RemoveAll();

  // 0 for an array that was never initialised.
  unsigned long GetCount() const;
  // The engine's table, good until the array changes or goes.
  ENGHANDLE GetIDTable() const;
  // Throws on null and on a bad index.
  VQSTATUS GetSlate(unsigned long index, VQSlate* slate) const;
  unsigned long GetSlateID(unsigned long index) const;
  unsigned long GetSlateClass() const { return SlateClass; }
  const VQDatabase& GetDatabase() const { return Database; }

  // For the library's own code: with a table that one is taken, without a fresh, empty one is made.
  VQSTATUS Assign(VQDatabaseBody* database, VQIDTable* table, unsigned long slate_class);
  // Takes the engine's table over.
  void CreateVQIDTable(ENGHANDLE table);

 protected:
  VQIDTable* Table() const { return static_cast<VQIDTable*>(Body); }
  VQIDTable* RequireTable() const;
  VQSTATUS CheckChange() const;

 private:
  template <typename Source>
  void TakeEntries(const Source& source);
  template <typename Source>
  VQSTATUS ChangeByEntries(const Source& source, bool add);

  VQDatabase Database;
  std::uint32_t SlateClass;
};

class VQ_API VQDocumentArray : public VQSlateArray {
 public:
  using VQSlateArray::VQSlateArray;
  VQCLASSID GetClassID() const override;
  VQDocument operator[](unsigned long index) const;
  int IsFTSearch() const;
  // 0 where the array is no search result.
  unsigned short GetFTSearchScore(unsigned long index) const;
};

#endif
