#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "qcore/abi/later.h"
#include "qcore/settings/inifile.h"
#include "tests/qcore/engine.h"

namespace {

std::string Setting(const char* key) {
  char buffer[256] = "?";
  const std::uint16_t length = EngEnvGetString(key, buffer, sizeof buffer);
  return std::string(buffer, length);
}

TEST(IniFile, EditsChangeTheirLineAndNothingElse) {
  const struct {
    std::string before, key, value, after;
  } rows[] = {
      {"; note\r\n[Part]\r\n a = 1 \r\njunk\r\n", "A", "2", "; note\r\n[Part]\r\nA=2\r\njunk\r\n"},
      {"a=1", "b", "2", "a=1\nb=2\n"},
      {"", "b", "2", "b=2\n"},
      {"a=1\nA=2\nb=3", "a", "9", "a=9\nA=2\nb=3"},
      {"a=1\nA=2\nb=3", "a", "", "b=3"},
      {"a=1\r\n", "b", "2", "a=1\r\nb=2\r\n"},
      {"\xEF\xBB\xBF"
       "A=1\n",
       "a", "2", "a=2\n"},
      {std::string("\xFF\0=\xFE\n=\n;a=0\n", 12), "a", "x=y", std::string("\xFF\0=\xFE\n=\n;a=0\na=x=y\n", 18)},
  };
  for (const auto& row : rows) {
    qcore::IniFile file(row.before);
    ASSERT_TRUE(file.Set(row.key, row.value)) << row.before;
    EXPECT_EQ(file.Bytes(), row.after);
    EXPECT_EQ(file.Get(row.key).value_or(""), row.value);
  }
}

TEST(IniFile, WhatCouldNotBeReadBackIsRefused) {
  const std::pair<std::string, std::string> rows[] = {{"", "1"},   {"a=b", "1"},  {"[a", "1"},
                                                      {";a", "1"}, {"a\nb", "1"}, {"a", "1\n2"},
                                                      {"a", " 1"}, {" a", "1"},   {"a", std::string("1\0", 2)}};
  for (const auto& [key, value] : rows) {
    qcore::IniFile file("a=1\n");
    EXPECT_FALSE(file.Set(key, value)) << key << "|" << value;
    EXPECT_EQ(file.Bytes(), "a=1\n");
  }
}

struct Process : qtest::Engine {
  Process()
      : Engine(
            "[Main]\nDirectory=data\nNumber= -12 apples\nLong=\xC3\xA9\xC3\xA9\xC3\xA9\nHuge=99999999999999999999\n") {}
};

TEST_F(Process, SettingsReadWithoutCaseAndCutBetweenCharacters) {
  EXPECT_EQ(EngEnvGetInt("NUMBER"), -12);
  EXPECT_EQ(EngEnvGetInt("Long"), 0);
  EXPECT_EQ(EngEnvGetInt("Huge"), std::numeric_limits<long>::max());
  EXPECT_EQ(EngEnvGetInt("Missing"), 0);
  EXPECT_EQ(Setting("Missing"), "");
  char buffer[6];
  EXPECT_EQ(EngEnvGetString("long", buffer, sizeof buffer), 4);
  EXPECT_STREQ(buffer, "\xC3\xA9\xC3\xA9");
}

TEST_F(Process, AWriteReplacesTheFileAndKeepsWhatOthersWrote) {
  ASSERT_EQ(chmod(folder_.File("QUILLON.INI").c_str(), 0640), 0);
  folder_.Write("QUILLON.INI", "; mine\nOther=new\n");
  ASSERT_EQ(EngEnvSetInt("Count", 7), ENG_OK);
  EXPECT_EQ(folder_.Read("QUILLON.INI"), "; mine\nOther=new\nCount=7\n");
  EXPECT_EQ(Setting("other"), "new");
  struct stat info {};
  ASSERT_EQ(stat(folder_.File("QUILLON.INI").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
}

TEST_F(Process, AFailedWriteChangesNothing) {
  EXPECT_EQ(EngEnvSetString("A", "1\n2"), ENG_ERR_ARGUMENT);
  std::filesystem::remove(folder_.File("QUILLON.INI"));
  EXPECT_EQ(EngEnvSetString("A", "1"), ENG_ERR_CONFIG_WRITE);
  EXPECT_EQ(Setting("A"), "");
}

TEST_F(Process, StartsAreCounted) {
  ASSERT_EQ(EngInit(0, nullptr), ENG_OK);
  EngTerm();
  EXPECT_EQ(Setting("Directory"), "data");
  char directory[256];
  EXPECT_EQ(EngDataDirectory(directory), folder_.path().size() + 5);
  EXPECT_EQ(directory, folder_.File("data"));
}

TEST_F(Process, ThreadsStartAndEndInPairs) {
  std::jthread([] {
    EXPECT_EQ(EngThreadTerm(), ENG_ERR_THREAD);
    EXPECT_EQ(EngThreadInit(), ENG_OK);
    EXPECT_EQ(EngThreadTerm(), ENG_OK);
    EXPECT_EQ(EngThreadTerm(), ENG_ERR_THREAD);
  }).join();
}

TEST(ProcessSearch, FollowsItsOrder) {
  const qtest::TempFolder named, home, along;
  const std::string working = std::filesystem::current_path();
  const std::string path = getenv("PATH");
  const qtest::TempFolder empty;
  ASSERT_EQ(chdir(empty.path().c_str()), 0);
  setenv("PATH", ("/nowhere::" + along.path()).c_str(), 1);
  setenv("QUILLON_HOME", home.path().c_str(), 1);
  std::string argument = "=" + named.path();
  char* arguments[] = {arguments[0], argument.data()};
  arguments[0] = argument.data() + argument.size();
  const auto start = [&](int count) {
    const ENGSTATUS status = EngInit(count, arguments);
    const std::string where = status == ENG_OK ? Setting("Where") : std::to_string(status);
    EngTerm();
    return where;
  };
  EXPECT_EQ(start(0), "421");
  along.Write("QUILLON.INI", "Where=path");
  EXPECT_EQ(start(0), "path");
  home.Write("QUILLON.INI", "Where=home");
  EXPECT_EQ(start(0), "home");
  EXPECT_EQ(start(2), "421") << "a named place is the only one";
  named.Write("QUILLON.INI", "Where=named");
  EXPECT_EQ(start(2), "named");
  unsetenv("QUILLON_HOME");
  setenv("PATH", path.c_str(), 1);
  ASSERT_EQ(chdir(working.c_str()), 0);
}

TEST(ProcessDown, SaysSo) {
  EXPECT_EQ(EngEnvSetInt("A", 1), ENG_ERR_NOT_STARTED);
  EXPECT_EQ(EngThreadInit(), ENG_ERR_NOT_STARTED);
  const qtest::TempFolder folder;
  folder.Write("QUILLON.INI", "PlatformCharset=no-such-set\n");
  EXPECT_EQ(EngInitWithConfig(folder.path().c_str()), ENG_ERR_CONFIG_READ);
  EXPECT_EQ(EngEnvSetInt("A", 1), ENG_ERR_NOT_STARTED);
}

TEST(StatusText, EveryNumberHasOneThatFits) {
  char text[2048];
  for (ENGSTATUS status : {257, 267,  421,  423,  512,  525,  546,    554,    578,    580,
                           816, 1028, 1035, 1099, 3842, 3874, 0x1005, 0x1006, 0x1007, 0x8000 | 421}) {
    EXPECT_GT(EngStatusText(0, status, text, sizeof text), 0) << status;
  }
  EXPECT_EQ(EngStatusText(0, 9999, text, sizeof text), 0);
  EXPECT_EQ(EngStatusText(0, ENG_ERR_NOT_AVAILABLE + EngLater_SlateCompute, text, sizeof text), 58);
  EXPECT_STREQ(text, "Operation EngSlateCompute is not available in this release");
  EXPECT_EQ(EngStatusText(0, 257, text, 4), 3);
}

}  // namespace
