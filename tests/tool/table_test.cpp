// Tables, seen and changed by the command-line client.
#include "tests/tool/commands_fixture.h"

namespace tool_test {
namespace {

TEST_F(Commands, TablesAreShownAndChanged) {
  Write("list.md", "# Stock\n\n| What | Count |\n|---|---|\n| pears | 3 |\n| plums | 40 |\n\nThe end.\n");
  Write("none.md", "no table\n");
  ASSERT_EQ(Run("create s.vlt").code, 0);
  const Outcome imported = Run("import s.vlt list.md none.md");
  ASSERT_EQ(imported.code, 0) << imported.output;
  const CommandRow rows[] = {
      {"table s.vlt list.md", 0, "table 1: 3 rows, 2 columns\nWhat\tCount\npears\t3\nplums\t40\n"},
      {"--json table s.vlt list.md", 0, R"([{"table":1,"rows":[["What","Count"],["pears","3"],["plums","40"]]}])"},
      {"table s.vlt none.md", 3, "the text has 0 tables"},
      {"table s.vlt list.md --table 2", 3, "the text has 1 tables"},
      {"table s.vlt list.md apples", 2, "--insert-row"},
      {"table s.vlt list.md --insert-row 1 --delete-row 1", 2, ""},
      {"table s.vlt list.md --insert-row 2 a b c", 2, "2 columns"},
      {"table s.vlt list.md --insert-row 5", 1, "Row position is out of range"},
      {"table s.vlt list.md --delete-column 3", 1, "Column position is out of range"},
      {"table s.vlt list.md --delete-row 3", 1, "Starting position plus count"},
      {"table s.vlt list.md", 0, "table 1: 3 rows, 2 columns\nWhat\tCount\npears\t3\nplums\t40\n"},
      {"table s.vlt list.md --insert-row 3 quinces", 0, "pears\t3\nquinces\t\nplums\t40\n"},
      {"table s.vlt list.md --insert-row 5 last 1", 0, "plums\t40\nlast\t1\n"},
      {"table s.vlt list.md --delete-row 2", 0, "4 rows, 2 columns\nWhat\tCount\nquinces\t\n"},
      {"table s.vlt list.md --insert-column 1 '' x", 0, "\tWhat\tCount\nx\tquinces\t\n"},
      {"table s.vlt list.md --delete-column 1", 0, "What\tCount\nquinces\t\nplums\t40\nlast\t1\n"},
      {"show s.vlt list.md --text", 0, "What\tCount\t\nquinces\t\t\nplums\t40\t\nlast\t1\t\n\nThe end."},
      {"check s.vlt", 0, "0 faults"},
  };
  RunRows(rows);
}

}  // namespace
}  // namespace tool_test
