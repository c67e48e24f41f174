// The query language of full-text searches.
//
//   query  := and { OR and }                        |  stands for OR
//   and    := near { [AND] near | NOT near }        words side by side must all be there; & stands for AND, ! for NOT
//   near   := unit { NEAR[/n] unit }                at most n words between, 10 without a number; of words and phrases
//   unit   := word | word* | "phrase" | ( query ) | FIELD name CONTAINS unit | [name] CONTAINS unit
//
// The words in capitals stand in any case; in quotation marks they are words like others. A word* is the start of one.
// Words are found folded to one case and without accents.
#ifndef QUILLON_QCORE_FULLTEXT_QUERY_H
#define QUILLON_QCORE_FULLTEXT_QUERY_H

#include <string_view>

#include "engine/status.h"
#include "qcore/store/textquery.h"

namespace qcore {

// ENG_ERR_TEXT_QUERY for a text that is not of the language, has no word in it or is too large.
[[nodiscard]] ENGSTATUS ParseTextQuery(std::string_view text, TextQuery* query);

// Every word outside of phrases also in the forms that English makes of it ("run": runs, running, runner).
void AddWordForms(TextQuery* query);

// Every word outside of phrases also in its synonyms: the lines of the file that the settings key FullTextThesaurus
// names are lists of words that stand for each other, with commas between. ENG_ERR_FILE_OPEN, ENG_ERR_FILE_READ.
[[nodiscard]] ENGSTATUS AddSynonyms(TextQuery* query);

bool HasFields(const TextQuery& query);

}  // namespace qcore

#endif
