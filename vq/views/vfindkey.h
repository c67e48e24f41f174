// What a find looks for: keys by value, a list of them, and how they compare.
#ifndef QUILLON_VQ_VIEWS_VFINDKEY_H
#define QUILLON_VQ_VIEWS_VFINDKEY_H

#include <memory>

#include "vq/frame/objlist.h"
#include "vq/frame/vqcommon.h"

class VQDatetime;
class VQString;

// One key: a text, a moment or a number. Conversion to another type throws VQERR_INCORRECT_ITEM_TYPE.
class VQ_API VQVFFindKey : public VQQuillonClass {
 public:
  // The status goes to *status while the throw switch is off and the pointer is not null; else an error is thrown.
  // VQERR_STRING_TOO_LONG above 65,533 bytes, VQERR_OUT_OF_RANGE for an empty text, VQERR_UNINITIALIZED_ARGUMENT for a
  // moment that is not set.
  explicit VQVFFindKey(const VQString& text, unsigned long* status = nullptr);
  explicit VQVFFindKey(const VQDatetime& moment, unsigned long* status = nullptr);
  explicit VQVFFindKey(const double& number, unsigned long* status = nullptr);
  VQVFFindKey(const VQVFFindKey& other);
  ~VQVFFindKey() override;
  VQVFFindKey& operator=(const VQVFFindKey& other);
  VQCLASSID GetClassID() const override;

  operator VQString() const;
  operator VQDatetime() const;
  operator double() const;

  // For the library's own code: type word and value.
  const unsigned char* GetValue() const { return Value.get(); }
  unsigned short GetLength() const { return Length; }

 private:
  VQSTATUS Assign(const void* value, unsigned long length, unsigned short type);
  unsigned short Type() const;

  std::unique_ptr<unsigned char[]> Value;
  std::uint16_t Length;
};

// Keys in the order of the sorted columns. The list owns them.
class VQ_API VQVFFindKeys : public VQQuillonClass {
 public:
  VQVFFindKeys();
  VQVFFindKeys(const VQVFFindKeys& other);
  ~VQVFFindKeys() override;
  VQVFFindKeys& operator=(const VQVFFindKeys& other);
  VQCLASSID GetClassID() const override;

  // Throws VQERR_BAD_SUBSCRIPT.
  VQVFFindKey& operator[](unsigned long index) const;
  // The statuses of the key's constructor; VQERR_TOO_MANY_FIND_KEYS above 65,535 keys.
  VQSTATUS Append(const VQString& text);
  VQSTATUS Append(const VQDatetime& moment);
  VQSTATUS Append(const double& number);
  // Takes a key made with `new`, also on failure, unless it stands in a list already (VQERR_ALREADY_IN_LIST).
  // VQERR_UNINITIALIZED_ARGUMENT for a key without a value.
  VQSTATUS Append(VQVFFindKey* key);
  VQSTATUS Copy(const VQVFFindKeys& other);
  // Lets all keys go.
  void Free();
  // The keys as the engine takes them, good until the list changes; VQERR_ITEM_TABLE_SIZE above 65,535 bytes.
  VQSTATUS GetItemTable(const void** table) const;
  unsigned long GetCount() const { return Keys.GetCount(); }
  // GetItemTable without the throw rule.
  [[nodiscard]] VQSTATUS BuildTable(const void** table) const;

 private:
  [[nodiscard]] VQSTATUS FillItemTable() const;

  mutable std::unique_ptr<unsigned char[]> ItemTable;  // null until built
  VQObjectList Keys;
};

enum VQVFCOMPARISON : unsigned short {
  VQVFCOMPARISON_EQUAL = 0x00,       // the first of the rows that match
  VQVFCOMPARISON_LESS = 0x40,        // the last of the rows before the key
  VQVFCOMPARISON_LAST_EQUAL = 0x80,  // the last of the rows that match
  VQVFCOMPARISON_GREATER = 0xC0,     // the last of the rows behind the key
};

class VQ_API VQVFFindOptions : public VQQuillonClass {
 public:
  // What a find without options uses.
  static constexpr unsigned short kDefaultFlags = 0x000B;
  static constexpr unsigned short kComparisonMask = 0x00C0;

  VQVFFindOptions();
  VQVFFindOptions(const VQVFFindOptions& other);
  VQVFFindOptions& operator=(const VQVFFindOptions& other);
  VQCLASSID GetClassID() const override;

  VQVFCOMPARISON GetComparison() const;
  // VQERR_INVALID_PARAMETER for another value.
  VQSTATUS SetComparison(VQVFCOMPARISON comparison);
  int GetFlag(unsigned short mask) const;
  VQSTATUS SetFlag(unsigned short mask, int on);
  unsigned short GetFlags() const { return Flags; }

 private:
  std::uint16_t Flags;
};

#endif
