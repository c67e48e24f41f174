// A database in a scratch directory, and one document in it.
#ifndef QUILLON_TESTS_VQ_SUPPORT_STORE_FIXTURE_H
#define QUILLON_TESTS_VQ_SUPPORT_STORE_FIXTURE_H

#include "tests/vq/support/engine_fixture.h"
#include "vq/store/vqcreate.h"
#include "vq/store/vqdoc.h"
#include "vq/store/vqidtab.h"
#include "vq/values/vqtext.h"

namespace vqtest {

class StoreFixture : public EngineFixture {
 protected:
  void SetUp() override {
    EngineFixture::SetUp();
    ASSERT_EQ(Session->CreateDatabase("main", &Db, VQCreateDatabaseOptions()), VQ_OK);
  }
  void TearDown() override {
    Db = VQDatabase();
    EngineFixture::TearDown();
  }

  // A saved, open document with item Subject.
  VQDocument NewDocument(const std::string& subject) {
    VQDocument document;
    EXPECT_EQ(Db.CreateDocument(&document), VQ_OK);
    SetText(document, "Subject", subject);
    EXPECT_EQ(document.Save(), VQ_OK);
    return document;
  }

  static void SetText(VQSlate& slate, const std::string& name, const std::string& text) {
    EXPECT_EQ(
        slate.CreateItem(Store(name), TYPE_TEXT, text.data(), text.size(), VQITEMFLAGS_SUMMARY, VQITEMOPTION_REPLACE),
        VQ_OK);
  }

  // The entries of a text item joined by "|"; "-" when there is none.
  static std::string TextAt(const VQSlate& slate, const std::string& name) {
    VQText text;
    if (slate.GetItem(Store(name), &text) != VQ_OK) return "-";
    VQString joined;
    text.GetText(&joined, "|");
    return TextOf(joined);
  }

  // The same as another handle reads it from the file.
  std::string StoredText(const VQSlate& slate, const std::string& name) {
    VQDocument other;
    EXPECT_EQ(Db.GetDocument(slate.GetSlateID(), &other), VQ_OK);
    EXPECT_EQ(other.Open(), VQ_OK);
    return TextAt(other, name);
  }

  VQDatabase Db;
};

}  // namespace vqtest

#endif
