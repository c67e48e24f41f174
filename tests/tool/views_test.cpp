// Views, folders, full text, formulas and notes, as a user runs the commands.
#include "tests/tool/commands_fixture.h"

namespace tool_test {
namespace {

class ViewCommands : public Commands {
 protected:
  // Documents 4 (deep/two.md) and 8 (one.txt) with notes 12 on 8 and 16 on 12, and a view of them all.
  void SetUp() override {
    Commands::SetUp();
    Import();
    ASSERT_EQ(Run("note s.vlt one.txt 'first note'").output, "document 12: a note on document 8\n");
    ASSERT_EQ(Run("--json note s.vlt 12 deeper").output, "{\"document\":16,\"parent\":12}\n");
    ASSERT_EQ(Run("set s.vlt 4 Size number:30").code, 0);
    ASSERT_EQ(Run("set s.vlt 8 Size number:70").code, 0);
    const Outcome made =
        Run("view-create s.vlt All --column Category:categorized=Categories --column Note:responses=Subject "
            "--column Size:total=Size --column Subject:sorted=Subject --column 'Twice:hidden=Size * 2'");
    ASSERT_EQ(made.code, 0) << made.output;
  }
};

TEST_F(ViewCommands, RowsOfAView) {
  const CommandRow rows[] = {
      {"view s.vlt All", 0,
       "1\tcategory\tdeep\n1.1\t4\t30 | deep/two.md\n2\tcategory\tmd\n2.1\t4\t30 | deep/two.md\n"
       "3\tcategory\tsmall\n3.1\t4\t30 | deep/two.md\n3.2\t8\t70 | one.txt\n3.2.1\t12\t  first note\n"
       "3.2.1.1\t16\t    deeper\n4\tcategory\ttxt\n4.1\t8\t70 | one.txt\n4.1.1\t12\t  first note\n"
       "4.1.1.1\t16\t    deeper\n5\ttotal\t230\n"},
      {"view s.vlt All --from 7 --count 2", 0, "3.2\t8\t70 | one.txt\n3.2.1\t12\t  first note\n"},
      {"view s.vlt All --from 99", 0, ""},
      {"view s.vlt All --categories --from 2 --count 2", 0, "2\tcategory\tmd\n3\tcategory\tsmall\n"},
      {"--json view s.vlt All --from 6 --count 1", 0,
       R"([{"position":"3.1","kind":"document","id":4,"indent":0,"unread":false,"columns":{"Size":30,)"},
      {"view s.vlt None", 3, "no view or folder is called \"None\""},
      {"view s.vlt All --from 0", 2, "--from"},
      {"views s.vlt", 0, "view\tAll\tCategory | Note | Size | Subject | Twice\n"},
      {"view-create s.vlt Bad --column 'A=1 + )'", 1, "  1 + )\n      ^"},
      {"view-create s.vlt Bad --column A:loud=Size", 2, "no column option is called \"loud\""},
      {"view-create s.vlt Bad --select 'SELECT @Nix' --column A=Size", 1, "  SELECT @Nix\n         ^^^^"},
      {"view s.vlt Bad", 3, "no view or folder"},
      {"find s.vlt All small", 0, "3\tcategory\tsmall\n"},
      {"find s.vlt All small ONE", 0, "3.2\t8\t70 | one.txt\n"},
      {"find s.vlt All md --comparison less", 0, "1\tcategory\tdeep\n"},
      {"find s.vlt All md --comparison greater", 0, "3\tcategory\tsmall\n4\tcategory\ttxt\n"},
      {"find s.vlt All small one --comparison less", 0, "3.1\t4\t30 | deep/two.md\n"},
      {"find s.vlt All number:3", 3, "no row"},
      {"find s.vlt All number:3x", 2, "no number: 3x"},
      {"find s.vlt All a b c", 1, "number of search keys exceeds"},
      {"set s.vlt 4 Due time:2026-03-05", 0, ""},
      {"set s.vlt 4 Empty ''", 0, ""},
      {"show s.vlt 4", 0, "Empty (text"},
      {"set s.vlt 8 Due time:2026-03-05T10:30:15Z", 0, ""},
      {"view-create s.vlt Due --column Due:sorted=Due --column Subject=Subject", 0, ""},
      {"find s.vlt Due time:2026-03-05T10:30:15Z", 0, "8\t2026-03-05T10:30:15.00Z | one.txt\n"},
      {"find s.vlt Due time:2026-03-05", 0, "4\t2026-03-05T* | deep/two.md\n"},
      {"find s.vlt Due time:2026-03-05T10:30Z", 3, "no row"},
      {"find s.vlt Due time:2026-02-30", 2, "no time: 2026-02-30"},
      {"find s.vlt Due time:2026-03-05T24:00Z", 2, "no time: 2026-03-05T24:00Z"},
      {"set s.vlt 4 Due time:2026-03-05 text", 2, "texts, numbers and times"},
      {"ls s.vlt --select 'SELECT Size > 40'", 0, "\tone.txt\n"},
      {"ls s.vlt --select 'SELECT Size > 70'", 0, ""},
      {"ls s.vlt --select 'SELECT ('", 1, "  SELECT (\n"},
      {"ls s.vlt --since time:2999-01-01T00:00Z", 0, ""},
      {"ls s.vlt --since yesterday", 2, "--since takes"},
      {"--json ls s.vlt --limit 1", 0, R"("subject":"deep/two.md"}])"},
  };
  RunRows(rows);
}

TEST_F(ViewCommands, AViewFollowsAChange) {
  const CommandRow rows[] = {
      {"set s.vlt 8 Categories alpha --watch All", 0, "inserted\t1\tcategory\nmoved\t1.1\t8\nmoved\t1.1.1\t12\n"},
      {"view s.vlt All --count 4", 0, "1\tcategory\talpha\n1.1\t8\t70 | one.txt\n1.1.1\t12\t  first note\n1.1.1.1\t16"},
      {"set s.vlt 8 Categories alpha --watch All", 0, ""},
      {"set s.vlt 8 Size number:71 --watch All", 0, "changed\t1.1\t8\n"},
      {"set s.vlt 8 Size number:1 two", 2, "texts, numbers and times"},
      {"set s.vlt 8 Size number:1 --watch None", 3, "no view or folder"},
      {"view s.vlt All --from 2 --count 1", 0, "1.1\t8\t71 | one.txt\n"},
      {"note s.vlt 4711 text", 3, "no document 4711"},
  };
  RunRows(rows);
}

TEST_F(ViewCommands, FoldersAndUnreadDocuments) {
  const CommandRow rows[] = {
      {"folder s.vlt Kept --create --like All --add one.txt 4", 0, "4\tdeep/two.md\n8\tone.txt\n"},
      {"folder s.vlt Kept --create", 1, "there is a view or folder \"Kept\""},
      {"folder s.vlt Kept --add 4711 --remove 4", 3, "no document 4711"},
      {"--json folder s.vlt Kept", 0, R"([{"id":4,"subject":"deep/two.md"},{"id":8,"subject":"one.txt"}])"},
      {"folder s.vlt Kept --remove 4", 0, "8\tone.txt\n"},
      {"view s.vlt Kept --count 2", 0, "1\tcategory\tsmall\n1.1\t8\t70 | one.txt\n"},
      {"folder s.vlt Kept --clear", 0, ""},
      {"folder s.vlt All", 1, "\"All\" is no folder"},
      {"folder s.vlt None", 3, "no view or folder"},
      {"unread s.vlt --user Ann --mark-read 4 8 12", 0, "16\tdeeper\n"},
      {"unread s.vlt --user Ann --mark-unread 4", 0, "4\tdeep/two.md\n16\tdeeper\n"},
      {"unread s.vlt --user Zoe", 0, "4\tdeep/two.md\n8\tone.txt\n12\tfirst note\n16\tdeeper\n"},
      {"unread s.vlt --mark-read 4 --mark-unread 8", 2, "excludes"},
      {"unread s.vlt --mark-read 4 12 16", 0, "8\tone.txt\n"},
      {"view s.vlt All --unread --from 6 --count 2", 0, "3.1\t4\t30 | deep/two.md\n3.2*\t8\t70 | one.txt\n"},
  };
  RunRows(rows);
}

TEST_F(ViewCommands, FullText) {
  const CommandRow rows[] = {
      {"search s.vlt colour", 1, "no full text index (0x"},
      {"search s.vlt colour --index", 0, "100\t8\tone.txt\n"},
      {"index s.vlt", 0, "added: 0\nupdated: 0\ndeleted: 0\n"},
      {"index s.vlt --anew", 0, "added: 4\n"},
      {"search s.vlt colours", 0, "8\tone.txt"},
      {"search s.vlt colours --exact", 3, "nothing found"},
      {"search s.vlt nothing --field Body", 0, "100\t4\tdeep/two.md\n"},
      {"search s.vlt nothing --field Subject", 3, "nothing found"},
      {"search s.vlt 'colour AND ('", 1, "query is not understood (0x"},
      {"--json search s.vlt colour", 0, R"([{"score":100,"id":8,"subject":"one.txt"}])"},
      {"search s.vlt colour --view All", 0, "\t8\t70 | one.txt\n"},
      {"search s.vlt colour --view None", 3, "no view or folder"},
      {"search s.vlt colour --limit 70000", 2, "--limit"},
      {"index s.vlt --delete", 0, ""},
      {"search s.vlt colour", 1, "no full text index (0x"},
  };
  RunRows(rows);
}

TEST_F(ViewCommands, Formulas) {
  const std::string code = Run("formula compile 'Size * 2'").output;
  EXPECT_EQ(Run("formula decompile " + code.substr(0, code.size() - 1)).output, "Size * 2\n");
  const CommandRow rows[] = {
      {"formula eval '1 + 2 : 3'", 0, "3; 4\n"},
      {"formula eval 'Subject + \"!\"' --store s.vlt --document 8", 0, "one.txt!\n"},
      {"--json formula eval 'FIELD x := 1; SELECT Size > 90; Size' --store s.vlt --document 8", 0,
       R"({"type":"number","value":70,"selected":false,"modified":true,"deleted":false})"},
      {"formula eval '1 / 0'", 1, "divides by zero (0x"},
      {"formula eval '\"ü\" + @Nix(3)'", 1, "unknown @function\n  \"ü\" + @Nix(3)\n        ^^^^\n"},
      {"formula eval '1;\n 2 + )'", 1, "   2 + )\n       ^\n"},
      {"formula compile ''", 1, "(0x"},
      {"formula decompile 0102", 1, "damaged (0x"},
      {"formula decompile 01x", 2, "hexadecimal"},
      {"formula eval 1 --document 8", 2, "--store"},
      {"formula eval 1 --store s.vlt --document 4711", 3, "no document 4711"},
  };
  RunRows(rows);
}

}  // namespace
}  // namespace tool_test
