// Status texts and the throw rule.
#include <thread>

#include "tests/vq/support/engine_fixture.h"
#include "vq/frame/throwrule.h"

using namespace vqtest;

namespace {

std::string MessageOf(VQSTATUS status, unsigned long size = 600) {
  std::string buffer(size, '#');
  const unsigned long length = VQGetErrorMessageText(status, buffer.data(), size);
  EXPECT_EQ(buffer[length], '\0');
  return buffer.substr(0, length);
}

struct MessageRow {
  VQSTATUS Status;
  const char* Text;
};

class Messages : public ::testing::TestWithParam<MessageRow> {};

// No session: engine statuses have no text, but for the missing settings file.
TEST_P(Messages, WithoutSession) { EXPECT_EQ(MessageOf(GetParam().Status), GetParam().Text); }

INSTANTIATE_TEST_SUITE_P(
    Rows, Messages,
    ::testing::Values(MessageRow{0, ""}, MessageRow{0xC000000B, "Quillon session has not been initialized"},
                      MessageRow{0xC00000FC, "Specified 'By Form Used' search is invalid"},
                      MessageRow{0xD00000FD, "No match found"}, MessageRow{0xC00000FD, "No match found"},
                      MessageRow{0xD0000109, "The input tab stop is already in the tab array "},
                      MessageRow{0xC0000000, "(no error message available)"},
                      MessageRow{0xC000011A, "(no error message available)"},
                      MessageRow{512, "(no error message available)"},
                      MessageRow{421, "The QUILLON.INI file cannot be found on the search path (PATH)"},
                      MessageRow{0x81A5, "The QUILLON.INI file cannot be found on the search path (PATH)"}));

TEST(Status, BufferLimits) {
  char buffer[16];
  EXPECT_EQ(StatusOf([&] { VQGetErrorMessageText(1, nullptr, 10); }), VQERR_NULL_POINTER);
  EXPECT_EQ(StatusOf([&] { VQGetErrorMessageText(1, buffer, 0); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(StatusOf([&] { VQGetErrorMessageText(1, buffer, 65536); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(MessageOf(0xC0000028, 65535), "Insufficient memory");
  EXPECT_EQ(MessageOf(0xC0000028, 6), "Insuf");
  EXPECT_EQ(MessageOf(0xC0000028, 1), "");
}

TEST(Status, LastAssertionIsKept) {
  EXPECT_EQ(StatusOf([] { VQ_ASSERT_TEXT(1 == 2, "Count && First", "OBJLIST"); }), VQERR_ASSERTION_FAILED);
  const std::string text = MessageOf(VQERR_ASSERTION_FAILED);
  EXPECT_THAT(text, ::testing::StartsWith("Assertion failed in file OBJLIST at line "));
  EXPECT_THAT(text, ::testing::EndsWith(".\n\nExpression: Count && First\n\n"));
}

TEST(Status, ThrowRuleSparesWarnings) {
  const vq::ThrowScope scope;
  EXPECT_EQ(vq::Apply(VQWARN_NOT_FOUND), VQWARN_NOT_FOUND);
  EXPECT_EQ(vq::Apply(VQ_OK), VQ_OK);
  EXPECT_THROW(vq::Apply(VQERR_OUT_OF_RANGE), VQSTATUS);
  EXPECT_THROW(vq::Apply(513), VQSTATUS);
}

// A form that is saved by one thread must not make another one throw.
TEST(Status, OwnThrowRuleIsTheThreadsOwn) {
  {
    const vq::OwnThrowRule throwing(true);
    EXPECT_THROW(vq::Apply(VQERR_OUT_OF_RANGE), VQSTATUS);
    int elsewhere = -1;
    std::thread([&] { elsewhere = VQGetThrowAllErrors(); }).join();
    EXPECT_EQ(elsewhere, 0);
    VQSetThrowAllErrors(0);
    EXPECT_EQ(vq::Apply(VQERR_OUT_OF_RANGE), VQERR_OUT_OF_RANGE);
    VQSetThrowAllErrors(1);
  }
  EXPECT_EQ(VQGetThrowAllErrors(), 0);
}

class EngineMessages : public EngineFixture {};

TEST_F(EngineMessages, ComeFromTheEngine) {
  EXPECT_NE(MessageOf(ENG_ERR_DB_EXISTS), "(no error message available)");
  EXPECT_EQ(MessageOf(ENG_ERR_DB_EXISTS, 8), MessageOf(ENG_ERR_DB_EXISTS).substr(0, 7));
  EXPECT_EQ(MessageOf(0x3FFE), "(no error message available)");
}

}  // namespace
