// VQFormula: a formula as text and as compiled code, and its evaluation.
//
// The engine compiles, decompiles and evaluates; its statuses are passed on. Code is taken as it stands and checked
// before it is used. A null handle gives VQERR_OBJECT_NOT_INITIALIZED, thrown where the result is no status.
// Handles share; operations that fail leave the formula as it was.
#ifndef QUILLON_VQ_AUTOMATION_VQFORMULA_H
#define QUILLON_VQ_AUTOMATION_VQFORMULA_H

#include "engine/formula.h"
#include "vq/frame/vqcommon.h"
#include "vq/values/vqstring.h"

class VQItem;
class VQSlate;

class VQ_API VQFormulaBody : public VQBody {
 public:
  VQFormulaBody() = default;
  ~VQFormulaBody() override;
  VQFormulaBody(const VQFormulaBody&) = delete;
  VQFormulaBody& operator=(const VQFormulaBody&) = delete;

  VQCLASSID GetClassID() const override { return VQCLASSID_VQFORMULABODY; }
  VQSTATUS Close() override;

  [[nodiscard]] VQSTATUS Compile(const VQString& text, unsigned long* errorOffset, unsigned long* errorLength);
  [[nodiscard]] VQSTATUS TakeCode(const char* code, unsigned long length, int shared);
  // Makes the text from the code when there is none.
  [[nodiscard]] VQSTATUS EnsureText();
  // `slate` 0 evaluates without a document; `flags` may be null.
  [[nodiscard]] VQSTATUS Evaluate(ENGHANDLE slate, VQItem* result, unsigned short* flags);

  const char* GetCode() const { return Code; }
  ENGHANDLE GetCodeHandle() const { return Block; }
  std::uint32_t GetCodeLength() const { return CodeLength; }
  const VQString& GetText() const { return Text; }

 private:
  // Lets go of the code, and of what the engine made from it.
  void DropCode();
  // The block, locked for as long as the formula has it, becomes the code.
  [[nodiscard]] VQSTATUS KeepBlock(ENGHANDLE block, std::uint32_t length);
  [[nodiscard]] VQSTATUS EnsureCompute();

  const char* Code = nullptr;
  ENGHANDLE Block = 0;  // 0 for code that is the caller's
  std::uint32_t CodeLength = 0;
  VQString Text;
  ENGHANDLE Compute = 0;
};

class VQ_API VQFormula : public VQSmartPtr {
 public:
  VQFormula() = default;
  VQFormula(const VQFormula&) = default;
  explicit VQFormula(VQFormulaBody* body);
  // Compiles; a failure throws.
  explicit VQFormula(const VQString& text);
  // As SetCode; a failure throws.
  VQFormula(const char* code, unsigned long length, int shared = 0);
  VQFormula& operator=(const VQFormula&) = default;
  VQFormula& operator=(const VQString& text);
  VQCLASSID GetClassID() const override { return VQCLASSID_VQFORMULA; }

  VQSTATUS Init(const VQString& text);
  // Compiled code in a copy; with `shared` the bytes stay the caller's and must live as long as the formula. The text
  // is made from the code when it is asked for. VQERR_INVALID_PARAMETER for no code.
  VQSTATUS SetCode(const char* code, unsigned long length, int shared = 0);
  // VQERR_NULL_STRING, VQERR_STRING_TOO_LONG above 65,535 bytes, or the compiler's status with the place of the error.
  VQSTATUS SetText(const VQString& text, unsigned long* errorOffset = nullptr, unsigned long* errorLength = nullptr);
  // The result goes into the item by the item's class: VQERR_INCORRECT_ITEM_TYPE for a VQText, VQNumbers or VQDatetimes
  // that cannot hold it, and for an item in a slate that has such a value. A plain VQItem takes any.
  VQSTATUS Evaluate(VQItem* result) const;
  // With an open document as context, which stays as it is; the flags are ENG_FORMULA_SELECTED, _MODIFIED (assignments
  // would change it) and _DELETED of engine/formula.h. They may be null.
  VQSTATUS Evaluate(VQItem* result, const VQSlate& slate, unsigned short* flags) const;
  // Good until the code is changed.
  const char* GetCode() const;
  // The engine block that holds the code, 0 for shared code.
  ENGHANDLE GetCodeHandle() const;
  unsigned long GetCodeLength() const;
  // VQERR_STRING_TOO_LONG for code whose text is longer than a string can be.
  VQString GetText() const;

  VQFormulaBody* GetFormulaBody() const { return static_cast<VQFormulaBody*>(Body); }

 private:
  VQFormulaBody& Checked() const;
  // The body whose code is to be set: a new one, so that a failure leaves the old formula.
  VQSTATUS Adopt(VQFormulaBody* body, VQSTATUS status);
};

#endif
