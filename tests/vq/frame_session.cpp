// Sessions: their start and end, and the services that need no database.
#include <thread>

#include "tests/vq/support/engine_fixture.h"

using namespace vqtest;

namespace {

class Lifecycle : public HomeFixture, public ::testing::WithParamInterface<int> {
 protected:
  Lifecycle() { VQSetThrowAllErrors(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Switch, Lifecycle, ::testing::Values(0, 1));

TEST_P(Lifecycle, StartsAndEndsMoreThanOnce) {
  VQQuillonSession session;
  EXPECT_EQ(session.GetSession(), nullptr);
  EXPECT_EQ(session.Term(), VQERR_NOT_INITIALIZED);  // never thrown
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(session.Init(), VQ_OK);
    EXPECT_EQ(StatusOf([&] { return session.Init(); }), VQERR_ALREADY_INITIALIZED);
    EXPECT_EQ(StatusOf([&] { return session.InitThread(); }), VQERR_ALREADY_INITIALIZED);
    EXPECT_EQ(VQIsQuillonInitialized(), 1);
    EXPECT_EQ(session.Term(1), VQ_OK);
    EXPECT_EQ(VQIsQuillonInitialized(), 0);
  }
}

TEST_P(Lifecycle, RefusedStartsLeaveNothing) {
  VQQuillonSession session;
  char* const no_arguments[] = {nullptr};
  EXPECT_EQ(StatusOf([&] { return session.InitThread(); }), VQERR_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([&] { return session.TermThread(); }), VQERR_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([&] { return session.Initialize(200, 0, nullptr, nullptr); }), VQERR_INCOMPATIBLE_VERSION);
  EXPECT_EQ(StatusOf([&] { return session.Initialize(201, 0, const_cast<char**>(no_arguments), "x"); }),
            VQERR_ASSERTION_FAILED);
  EXPECT_EQ(StatusOf([&] { return session.Init("/nonexistent/place"); }), VQSTATUS{ENG_ERR_NO_CONFIG});
  EXPECT_EQ(VQIsQuillonInitialized(), 0);
  EXPECT_EQ(session.Init(Home.Path("QUILLON.INI").c_str()), VQ_OK);
}

TEST_P(Lifecycle, SecondSessionCounts) {
  VQQuillonSession first;
  ASSERT_EQ(first.Init(), VQ_OK);
  {
    VQQuillonSession second;
    EXPECT_EQ(second.Initialize(7, 0, nullptr, nullptr), VQ_OK);  // only the first is asked for its version
  }
  EXPECT_EQ(VQIsQuillonInitialized(), 1);
  EXPECT_EQ(VQString("up").GetLength(), 2u);
}

TEST_P(Lifecycle, LeaksAreReportedOnRequest) {
  for (const int report : {1, 0}) {
    VQQuillonSession session;
    ASSERT_EQ(session.Init(), VQ_OK);
    new VQStringBody;
    const VQString held("outlives the session");
    EXPECT_EQ(session.Term(report), report ? VQWARN_LEAKED : VQ_OK);
    EXPECT_EQ(TextOf(held), "outlives the session");
    EXPECT_EQ(StatusOf([&] { held.GetLength(); }), VQERR_NOT_INITIALIZED);
  }
  EXPECT_EQ(vq::CountTrackedObjects(), 0u);
}

TEST_P(Lifecycle, ThreadsHaveTheirOwnSession) {
  VQQuillonSession process;
  ASSERT_EQ(process.Init(), VQ_OK);
  std::thread([] {
    VQQuillonSession session;
    EXPECT_EQ(session.InitThread(), VQ_OK);
    EXPECT_EQ(session.GetEnvironmentValue("absent"), 0);
    EXPECT_EQ(session.TermThread(), VQ_OK);
    EXPECT_EQ(session.InitThread(), VQ_OK);  // the destructor ends this one
  }).join();
}

class Services : public SwitchFixture {};

INSTANTIATE_TEST_SUITE_P(Switch, Services, ::testing::Values(0, 1));

TEST_P(Services, EnvironmentKeys) {
  EXPECT_EQ(Session->SetEnvironmentString("Greeting", "h\xC3\xA9llo"), VQ_OK);
  EXPECT_EQ(TextOf(Session->GetEnvironmentString("GREETING")), "h\xC3\xA9llo");
  EXPECT_EQ(Session->SetEnvironmentValue("Count", -12), VQ_OK);
  EXPECT_EQ(Session->GetEnvironmentValue("Count"), -12);
  EXPECT_EQ(Session->SetEnvironmentString("Greeting", VQString()), VQ_OK);
  EXPECT_EQ(TextOf(Session->GetEnvironmentString("Greeting")), "");
  EXPECT_EQ(StatusOf([&] { return Session->SetEnvironmentString(VQString(), "x"); }), VQERR_NULL_STRING);
  EXPECT_EQ(StatusOf([&] { return Session->SetEnvironmentValue(VQString(), 1); }), VQERR_NULL_STRING);
  EXPECT_EQ(Session->SetEnvironmentString("Long", std::string(400, 'x').c_str()), VQ_OK);
  EXPECT_EQ(Session->GetEnvironmentString("Long").GetLength(), 254u);
}

TEST_P(Services, OpenFlags) {
  EXPECT_EQ(Session->SetDatabaseOpenFlags(0x10001), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return Session->SetDatabaseOpenFlags(0x40000); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(Session->GetDatabaseOpenFlags(), 0x10001u);
  EXPECT_EQ(Session->SetDatabaseOpenFlags(0), VQ_OK);
}

TEST_P(Services, RefusedOnANewSession) {
  VQQuillonSession fresh;
  unsigned long size = 0;
  unsigned short build = 0;
  char path[ENG_PATH_SIZE];
  const VQSTATUS seen[] = {
      StatusOf([&] { fresh.GetDataDirectory(); }),
      StatusOf([&] { fresh.GetUserNameText(); }),
      StatusOf([&] { fresh.GetEnvironmentString("x"); }),
      StatusOf([&] { fresh.GetDatabaseOpenFlags(); }),
      StatusOf([&] { return fresh.SetDatabaseOpenFlags(0); }),
      StatusOf([&] { fresh.GetRTParserErrorHandler(); }),
      StatusOf([&] { return fresh.CompactDatabase("x", &size, &size); }),
      StatusOf([&] { return fresh.DeleteDatabase("x"); }),
      StatusOf([&] { return fresh.ConstructNetPathname("s", "f", path); }),
      StatusOf([&] { return fresh.GetQuillonVersion(&build); }),
  };
  for (const VQSTATUS status : seen) EXPECT_EQ(status, VQERR_NOT_INITIALIZED);
}

TEST_P(Services, PathsAndMissingDatabases) {
  char path[ENG_PATH_SIZE];
  EXPECT_EQ(Session->ConstructNetPathname("hub", "sales/leads.vlt", path), VQ_OK);
  EXPECT_STREQ(path, "hub!!sales/leads.vlt");
  EXPECT_EQ(StatusOf([&] { return Session->ConstructNetPathname("hub", "x", nullptr); }), VQERR_ASSERTION_FAILED);
  EXPECT_EQ(TextOf(Session->GetDataDirectory()), Home.Path());
  EXPECT_EQ(StatusOf([&] { return Session->DeleteDatabase(VQString()); }), VQERR_NULL_STRING);
  EXPECT_EQ(StatusOf([&] { return Session->DeleteDatabase("absent.vlt"); }), VQSTATUS{ENG_ERR_DB_NOT_FOUND});
  EXPECT_EQ(StatusOf([&] { return Session->CompactDatabase(VQString(), nullptr, nullptr); }), VQERR_NULL_STRING);
  EXPECT_EQ(StatusOf([&] { return Session->GetQuillonVersion(nullptr); }), VQERR_NULL_POINTER);
}

}  // namespace
