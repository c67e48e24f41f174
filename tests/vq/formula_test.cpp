// Formulas and scripts of the class library.
#include "engine/formula.h"

#include "tests/vq/support/store_fixture.h"
#include "vq/automation/vqformula.h"
#include "vq/automation/vqscript.h"
#include "vq/values/vqdts.h"
#include "vq/values/vqnumber.h"
#include "vq/values/vqtext.h"

namespace {

using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::TextOf;

class Formula : public vqtest::StoreFixture {
 protected:
  static std::string EvaluatedText(const VQFormula& formula) {
    VQText text;
    EXPECT_EQ(formula.Evaluate(&text), VQ_OK);
    return TextOf(VQString(text[0]));
  }
};

TEST_F(Formula, GoesIntoItemsByTheirClass) {
  const VQFormula text(VQString("\"a\" : \"b\""));
  const VQFormula number(VQString("1 + 1"));
  const VQFormula time(VQString("[03/05/1997]"));
  VQText texts;
  VQNumbers numbers;
  VQDatetimes times;
  VQItem any;
  EXPECT_EQ(text.Evaluate(&texts), VQ_OK);
  EXPECT_EQ(texts.GetCount(), 2u);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Evaluate(&numbers); }), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_TRUE(numbers.IsNull());
  EXPECT_EQ(number.Evaluate(&numbers), VQ_OK);
  EXPECT_EQ(static_cast<double>(numbers[0]), 2.0);
  EXPECT_EQ(time.Evaluate(&times), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return time.Evaluate(&texts); }), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_EQ(texts.GetCount(), 2u) << "a refused result leaves the item";
  for (const VQFormula& formula : {text, number, time}) EXPECT_EQ(formula.Evaluate(&any), VQ_OK);
  EXPECT_EQ(any.GetType(), TYPE_TIME);
  EXPECT_EQ(ReturnedStatusOf([&] { return number.Evaluate(nullptr); }), VQERR_INVALID_PARAMETER);
}

TEST_F(Formula, ReadsADocumentAndLeavesIt) {
  VQDocument document;
  VQText subject;
  VQItem result;
  unsigned short flags = 0xFFFF;
  const VQFormula formula(VQString("FIELD Subject := Subject + \"!\"; SELECT Subject = \"Hi!\""));
  EXPECT_EQ(ReturnedStatusOf([&] { return formula.Evaluate(&result, document, &flags); }),
            VQERR_UNINITIALIZED_ARGUMENT);
  ASSERT_EQ(Db.CreateDocument(&document), VQ_OK);
  ASSERT_EQ(document.CreateItem("Subject", TYPE_TEXT, "Hi", 2, 4, VQITEMOPTION_UNIQUE, &subject), VQ_OK);
  EXPECT_EQ(formula.Evaluate(&result, document, &flags), VQ_OK);
  EXPECT_EQ(flags, ENG_FORMULA_SELECTED | ENG_FORMULA_MODIFIED);
  EXPECT_EQ(TextOf(VQString(subject[0])), "Hi");
  EXPECT_EQ(formula.Evaluate(&result, document, nullptr), VQ_OK);
  ASSERT_EQ(document.Close(), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return formula.Evaluate(&result, document, &flags); }), VQERR_SLATE_NOT_OPEN);
}

TEST_F(Formula, KeepsTextAndCodeInStep) {
  VQFormula formula;
  EXPECT_EQ(StatusOf([&] { return formula.GetCodeLength(); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(formula.SetText("\"one\"  "), VQ_OK);
  EXPECT_EQ(TextOf(formula.GetText()), "\"one\"  ");
  EXPECT_EQ(EvaluatedText(formula), "one");
  const VQFormula other(VQString("\"t\"+\"wo\""));
  EXPECT_EQ(formula.SetCode(other.GetCode(), other.GetCodeLength(), 0), VQ_OK);
  // Its own code, to be shared: the bytes outlive what held them.
  const std::string code(formula.GetCode(), formula.GetCodeLength());
  EXPECT_EQ(formula.SetCode(formula.GetCode(), formula.GetCodeLength(), 1), VQ_OK);
  EXPECT_EQ(std::string(formula.GetCode(), formula.GetCodeLength()), code);
  EXPECT_EQ(EvaluatedText(formula), "two") << "the old code's evaluation goes with it";
  EXPECT_EQ(TextOf(formula.GetText()), "\"t\" + \"wo\"");

  unsigned long offset = 0, length = 0;
  EXPECT_EQ(ReturnedStatusOf([&] { return formula.SetText("1 + @Nothing", &offset, &length); }),
            VQSTATUS{ENG_ERR_FORMULA_FUNCTION});
  EXPECT_EQ(offset, 4u);
  EXPECT_EQ(length, 8u);
  EXPECT_EQ(EvaluatedText(formula), "two") << "a text that does not compile changes nothing";
  EXPECT_EQ(ReturnedStatusOf([&] { return formula.SetText(""); }), VQERR_NULL_STRING);
}

TEST_F(Formula, ChecksStrangeCodeBeforeItIsUsed) {
  const VQFormula good(VQString("Subject + 1"));
  VQItem result;
  for (unsigned long length = 1; length < good.GetCodeLength(); ++length) {
    const VQFormula cut(good.GetCode(), length, 0);
    EXPECT_EQ(StatusOf([&] { return cut.Evaluate(&result); }), VQSTATUS{ENG_ERR_FORMULA_CODE}) << length;
    EXPECT_EQ(StatusOf([&] { return cut.GetText(); }), VQSTATUS{ENG_ERR_FORMULA_CODE}) << length;
  }
}

TEST_F(Formula, ScriptsPartAtTheFirstChange) {
  VQTamarinScript script(VQString("Sub Main"), "\1\2\3", 3);
  VQTamarinScript other = script;
  EXPECT_EQ(other.SetSource("Sub Other"), VQ_OK);
  EXPECT_EQ(TextOf(script.GetSource()), "Sub Main");
  EXPECT_EQ(other.GetSourceCodeLength(), 9u);
  EXPECT_EQ(other.WriteObjectCode(2, "xyz", 3), VQ_OK);
  EXPECT_EQ(std::string(other.GetObjectCode(), other.GetObjectCodeLength()), "\1\2xyz");
  EXPECT_EQ(std::string(script.GetObjectCode(), script.GetObjectCodeLength()), "\1\2\3");
  EXPECT_EQ(other.WriteObjectCode(7, "!", 1), VQ_OK);
  EXPECT_EQ(std::string(other.GetObjectCode(), other.GetObjectCodeLength()), std::string("\1\2xyz\0\0!", 8));

  char buffer[8] = "-------";
  EXPECT_EQ(script.ReadObjectCode(1, buffer, 8), VQ_OK);
  EXPECT_EQ(std::string(buffer), "\2\3-----");
  EXPECT_EQ(script.ReadObjectCode(3, buffer, 1), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return script.ReadObjectCode(4, buffer, 1); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(script.SetObjectCodeLength(0), VQ_OK);
  EXPECT_FALSE(script.HasObjectCode());
  EXPECT_TRUE(script.HasSource());
  EXPECT_EQ(StatusOf([] { return VQTamarinScript().GetSource(); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(ReturnedStatusOf([&] { return VQTamarinScript().ReadObjectCode(0, buffer, 1); }),
            VQERR_OBJECT_NOT_INITIALIZED);
}

}  // namespace
