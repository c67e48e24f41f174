// VQVFColumnBodyArray: the columns of a view, in order, each counted.
//
// Operations return their status, and a failed one changes nothing. A change marks the view's design, renumbers the
// columns, and moves or switches off secondary sorts that point at a column which moved or went.
#ifndef QUILLON_VQ_VIEWS_VCOLBARR_H
#define QUILLON_VQ_VIEWS_VCOLBARR_H

#include <memory>

#include "vq/views/vcolbody.h"

class VQ_API VQVFColumnBodyArray : public VQQuillonClass {
 public:
  static constexpr std::uint32_t kMaximum = 65535;

  explicit VQVFColumnBodyArray(VQViewFolderBody* owner);
  ~VQVFColumnBodyArray() override;
  VQVFColumnBodyArray(const VQVFColumnBodyArray&) = delete;
  VQVFColumnBodyArray& operator=(const VQVFColumnBodyArray&) = delete;
  VQCLASSID GetClassID() const override;

  std::uint32_t GetCount() const { return Count; }
  VQVFColumnBody* operator[](std::uint32_t index) const { return Items[index]; }
  // VQERR_INSUFFICIENT_MEMORY.
  [[nodiscard]] VQSTATUS Reserve(std::uint32_t count);
  // VQERR_OUT_OF_RANGE behind the count, VQERR_NULL_POINTER, VQERR_CANT_ADD_COLUMNS at the maximum.
  [[nodiscard]] VQSTATUS Insert(std::uint32_t at, VQVFColumnBody* body);
  // At the end, without a mark on the design: a column that was read.
  [[nodiscard]] VQSTATUS Load(VQVFColumnBody* body);
  // `count` columns with the defaults.
  [[nodiscard]] VQSTATUS InsertNew(std::uint32_t at, std::uint32_t count);
  // VQERR_OUT_OF_RANGE unless all of them are there.
  [[nodiscard]] VQSTATUS Delete(std::uint32_t at, std::uint32_t count);
  // Lets all columns go, without a mark on the design.
  void Release();
  // By title, without case and accents; the first match, or VQERR_NOT_FOUND.
  [[nodiscard]] VQSTATUS Find(const VQString& title, std::uint32_t* index) const;
  // Whether a column goes by that internal name.
  bool HasName(std::string_view name) const;

 private:
  // Moves the columns from `from` on to `to`.
  void Shift(std::uint32_t from, std::uint32_t to);
  void Place(std::uint32_t at, VQVFColumnBody* body);
  void LetGo(VQVFColumnBody* body);
  void MarkChanged();

  std::uint32_t Capacity;
  std::uint32_t Count;
  std::unique_ptr<VQVFColumnBody*[]> Items;
  VQViewFolderBody* Owner;
};

#endif
