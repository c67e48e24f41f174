// The full-text index of the SQLite store: FTS5 without contents, over the engine's own words.
#include <algorithm>

#include "qcore/store/sqlite_sql.h"
#include "qcore/text/tokens.h"

namespace qcore {

namespace {

constexpr std::uint32_t kSlateStep = 4;

int TokenizeForSqlite(Fts5Tokenizer*, void* context, int flags, const char* text, int length,
                      int (*give)(void*, int, const char*, int, int, int)) {
  struct Target {
    void* context;
    int (*give)(void*, int, const char*, int, int, int);
  } target{context, give};
  const auto use = (flags & FTS5_TOKENIZE_DOCUMENT) != 0 ? text::TokenUse::kDocument : text::TokenUse::kQuery;
  try {
    return text::Tokenize(text::AsText({text, static_cast<std::size_t>(length)}), use, &target,
                          [](void* to, const text::Token& token) {
                            const Target& found = *static_cast<Target*>(to);
                            return found.give(found.context, token.same_place ? FTS5_TOKEN_COLOCATED : 0,
                                              token.text.data(), static_cast<int>(token.text.size()),
                                              static_cast<int>(token.start), static_cast<int>(token.end));
                          });
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

// It has no state; SQLite asks for one all the same.
int CreateTokenizer(void*, const char**, int, Fts5Tokenizer** made) {
  static char nothing;
  *made = reinterpret_cast<Fts5Tokenizer*>(&nothing);
  return SQLITE_OK;
}

void DeleteTokenizer(Fts5Tokenizer*) {}

bool HasField(const TextQuery& query) {
  return query.kind == TextQuery::Kind::kField || std::ranges::any_of(query.parts, HasField);
}

void AppendPhrase(const TextQuery& query, std::string* expression) {
  *expression += '"';
  for (char c : query.text) {
    if (c == '"') *expression += '"';
    *expression += c == '\0' ? ' ' : c;
  }
  *expression += query.prefix ? "\"*" : "\"";
}

// What the words of a field take away is for the caller to tell: elsewhere in the document they take nothing away.
enum class Within { kDocument, kField };

void AppendQuery(const TextQuery& query, Within within, std::string* expression) {
  const auto join = [&](const char* word) {
    *expression += '(';
    for (std::size_t i = 0; i < query.parts.size(); ++i) {
      if (i != 0) *expression += word;
      AppendQuery(query.parts[i], within, expression);
    }
    *expression += ')';
  };
  switch (query.kind) {
    case TextQuery::Kind::kPhrase:
      return AppendPhrase(query, expression);
    case TextQuery::Kind::kAnd:
      return join(" AND ");
    case TextQuery::Kind::kOr:
      return join(" OR ");
    case TextQuery::Kind::kNot:
      if (within == Within::kDocument && !HasField(query.parts[1])) return join(" NOT ");
      return AppendQuery(query.parts[0], within, expression);
    case TextQuery::Kind::kNear:
      *expression += "NEAR";
      join(" ");
      expression->pop_back();
      *expression += "," + std::to_string(query.distance) + ")";
      return;
    case TextQuery::Kind::kField:
      return AppendQuery(query.parts[0], Within::kField, expression);
  }
}

bool Has(const std::vector<std::uint64_t>& numbers, std::uint64_t number) {
  return std::binary_search(numbers.begin(), numbers.end(), number);
}

}  // namespace

ENGSTATUS SqliteStore::UseTokenizer() {
  if (has_tokenizer_) return ENG_OK;
  fts5_api* api = nullptr;
  Statement statement;
  const int prepared = statement.Prepare(connection_.get(), "SELECT fts5(?)");
  if (prepared != SQLITE_OK) return Result(prepared);
  sqlite3_bind_pointer(statement.get(), 1, &api, "fts5_api_ptr", nullptr);
  Use use(statement.get(), prepared);
  if (!use.Row() || !api) return ENG_ERR_INTERNAL;
  fts5_tokenizer tokenizer{CreateTokenizer, DeleteTokenizer, TokenizeForSqlite};
  const ENGSTATUS status = Result(api->xCreateTokenizer(api, "quillon", nullptr, &tokenizer, nullptr));
  has_tokenizer_ = status == ENG_OK;
  return status;
}

ENGSTATUS SqliteStore::RequireTextIndex() {
  const ENGSTATUS status = UseTokenizer();
  if (status != ENG_OK) return status;
  Use use = Start(Sql::kTextExists);
  if (use.Row()) return ENG_OK;
  return use.code() == SQLITE_OK ? ENGSTATUS{ENG_ERR_NO_FULL_TEXT} : Result(use.code());
}

ENGSTATUS SqliteStore::CreateTextIndex() {
  const ENGSTATUS status = DeleteTextIndex();
  return status == ENG_OK ? Execute(connection_.get(), kTextSchema) : status;
}

ENGSTATUS SqliteStore::DeleteTextIndex() {
  text_end_.reset();
  const ENGSTATUS status = UseTokenizer();
  return status == ENG_OK ? Execute(connection_.get(), kDropTextSchema) : status;
}

ENGSTATUS SqliteStore::RunWith(Sql which, std::uint64_t number) {
  Use use = Start(which);
  use.Bind(1, number);
  return Finish(use);
}

ENGSTATUS SqliteStore::ReadNumbers(Sql which, std::vector<std::uint64_t>* numbers) {
  Use use = Start(which);
  while (use.Row()) numbers->push_back(use.Number(0));
  return Result(use.code());
}

// Later numbers are only for slates that have had their first. Texts come in ascending order, so that most are new.
ENGSTATUS SqliteStore::IsNewText(std::uint32_t slate, bool* is_new) {
  if (!text_end_ || !InTransaction()) {
    Use end = Start(Sql::kTextEnd);
    end.Bind(1, kFirstVersion);
    text_end_ = end.Row() ? end.Number(0) : 0;
    if (end.code() != SQLITE_OK) {
      text_end_.reset();
      return Result(end.code());
    }
  }
  *is_new = slate % kSlateStep == 0 && slate / kSlateStep > *text_end_;
  return ENG_OK;
}

ENGSTATUS SqliteStore::FindTextNumber(std::uint32_t slate, std::uint64_t* number) {
  *number = 0;
  bool is_new = false;
  const ENGSTATUS status = IsNewText(slate, &is_new);
  if (status != ENG_OK || is_new) return status;
  std::uint64_t candidate = 0;
  {
    Use version = Start(Sql::kTextVersion);
    version.Bind(1, slate);
    if (!version.Row()) return Result(version.code());
    if (!version.IsNull(0)) candidate = version.Number(0);
  }
  if (candidate == 0 && slate % kSlateStep == 0) {
    Use stored = Start(Sql::kTextStored);
    stored.Bind(1, slate / kSlateStep);
    if (stored.Row()) candidate = slate / kSlateStep;
    if (stored.code() != SQLITE_OK) return Result(stored.code());
  }
  if (candidate == 0) return ENG_OK;
  Use dead = Start(Sql::kTextIsDead);
  dead.Bind(1, candidate);
  if (!dead.Row()) *number = candidate;
  return Result(dead.code());
}

ENGSTATUS SqliteStore::NewTextNumber(std::uint32_t slate, std::uint64_t* number) {
  bool is_new = false;
  const ENGSTATUS status = IsNewText(slate, &is_new);
  if (status != ENG_OK) return status;
  if (is_new) {
    *number = slate / kSlateStep;
    return ENG_OK;
  }
  if (slate % kSlateStep == 0) {
    Use stored = Start(Sql::kTextStored);
    stored.Bind(1, slate / kSlateStep);
    const bool is_free = !stored.Row();
    if (stored.code() != SQLITE_OK) return Result(stored.code());
    *number = slate / kSlateStep;
    if (is_free) return ENG_OK;
  }
  {
    Use last = Start(Sql::kTextLastVersion);
    if (!last.Row()) return Result(last.code());
    *number = std::max(kFirstVersion, last.Number(0) + 1);
  }
  Use add = Start(Sql::kAddTextVersion);
  add.Bind(1, *number);
  add.Bind(2, slate);
  return Finish(add);
}

ENGSTATUS SqliteStore::PutText(std::uint32_t slate, std::string_view text, bool guarded, bool* replaced) {
  ENGSTATUS status = DropText(slate, replaced);
  std::uint64_t number = 0;
  if (status == ENG_OK) status = NewTextNumber(slate, &number);
  if (status == ENG_OK && guarded) status = RunWith(Sql::kGuardText, slate);
  if (status != ENG_OK) return status;
  Use add = Start(Sql::kAddText);
  add.Bind(1, number);
  add.BindText(2, text);
  status = Finish(add);
  if (status == ENG_OK && text_end_ && number < kFirstVersion) text_end_ = std::max(*text_end_, number);
  return status;
}

ENGSTATUS SqliteStore::DropText(std::uint32_t slate, bool* dropped) {
  *dropped = false;
  std::uint64_t number = 0;
  ENGSTATUS status = FindTextNumber(slate, &number);
  if (status != ENG_OK || number == 0) return status;
  status = RunWith(Sql::kAddDeadText, number);
  if (status == ENG_OK) status = RunWith(Sql::kUnguardText, slate);
  *dropped = status == ENG_OK;
  return status;
}

ENGSTATUS SqliteStore::TextWaste(std::uint32_t* percent) {
  *percent = 0;
  ENGSTATUS status = RequireTextIndex();
  std::vector<std::uint64_t> dead;
  if (status == ENG_OK) status = ReadNumbers(Sql::kReadDeadTexts, &dead);
  if (status != ENG_OK || dead.empty()) return status;
  Use all = Start(Sql::kCountTexts);
  if (!all.Row()) return Result(all.code());
  *percent = static_cast<std::uint32_t>(dead.size() * 100 / std::max<std::uint64_t>(all.Number(0), 1));
  return ENG_OK;
}

ENGSTATUS SqliteStore::FindText(const TextQuery& query, TextRank rank, const TextReader& reader) {
  ENGSTATUS status = RequireTextIndex();
  std::vector<std::uint64_t> dead;
  std::vector<std::uint64_t> guarded;
  if (status == ENG_OK) status = ReadNumbers(Sql::kReadDeadTexts, &dead);
  if (status == ENG_OK) status = ReadNumbers(Sql::kReadGuardedTexts, &guarded);
  if (status != ENG_OK) return status;
  std::string expression;
  AppendQuery(query, Within::kDocument, &expression);
  Use use = Start(rank == TextRank::kRanked ? Sql::kRankText : Sql::kFindText);
  use.BindText(1, expression);
  while (use.Row()) {
    const std::uint64_t number = use.Number(0);
    if (Has(dead, number)) continue;
    std::uint64_t slate = number * kSlateStep;
    if (number >= kFirstVersion) {
      Use version = Start(Sql::kSlateOfText);
      version.Bind(1, number);
      if (!version.Row()) return version.code() == SQLITE_OK ? ENGSTATUS{ENG_ERR_DB_DAMAGED} : Result(version.code());
      slate = version.Number(0);
    }
    reader({static_cast<std::uint32_t>(slate), Has(guarded, slate), rank == TextRank::kRanked ? use.Real(1) : 0.0});
  }
  return use.code() == SQLITE_ERROR ? ENGSTATUS{ENG_ERR_TEXT_QUERY} : Result(use.code());
}

}  // namespace qcore
