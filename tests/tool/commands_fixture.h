// A folder with a settings file, and the tool run in it.
#ifndef QUILLON_TESTS_TOOL_COMMANDS_FIXTURE_H
#define QUILLON_TESTS_TOOL_COMMANDS_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

namespace tool_test {

namespace fs = std::filesystem;
using testing::HasSubstr;

struct Outcome {
  int code;
  std::string output;  // both streams
};

struct CommandRow {
  const char* arguments;
  int code;
  const char* output;
};

class Commands : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "quillon-tool-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    setenv("QUILLON_HOME", folder_.c_str(), 1);
    ASSERT_EQ(Run("init . --converters " QUILLON_CONVERTERS).code, 0);
  }
  void TearDown() override { fs::remove_all(folder_); }

  Outcome Run(const std::string& arguments) const {
    const std::string line = "cd " + folder_.string() + " && " QUILLON_TOOL " " + arguments + " 2>&1";
    FILE* pipe = popen(line.c_str(), "r");
    Outcome outcome{-1, {}};
    char buffer[4096];
    for (std::size_t count; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;) outcome.output.append(buffer, count);
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
  }

  // In order, so that a row sees what the rows before it did.
  void RunRows(std::span<const CommandRow> rows) const {
    for (const CommandRow& row : rows) {
      const Outcome outcome = Run(row.arguments);
      EXPECT_EQ(outcome.code, row.code) << row.arguments << ": " << outcome.output;
      EXPECT_THAT(outcome.output, HasSubstr(row.output)) << row.arguments;
    }
  }

  void Write(const std::string& name, const std::string& text) const {
    fs::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }

  std::string Read(const std::string& name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // A store of two documents with a title, a heading and a quotation each.
  void Import() const {
    Write("in/one.txt", "A TITLE\n\nThe colour of the first colour.\nHEADING\n    quoted colour\nend\n");
    Write("in/deep/two.md", "Second\n\nnothing here\n");
    Write("in/none.bin", std::string("\0\1", 2));
    ASSERT_EQ(Run("create s.vlt --title Papers").code, 0);
    const Outcome outcome = Run("import s.vlt in");
    ASSERT_EQ(outcome.code, 0) << outcome.output;
    ASSERT_THAT(outcome.output, HasSubstr("imported 2 documents"));
  }

  fs::path folder_;
};

}  // namespace tool_test

#endif
