#include "qcore/settings/statustext.h"

#include <algorithm>
#include <iterator>

#include "engine/status.h"

namespace qcore {

namespace {

struct Text {
  ENGSTATUS status;
  const char* text;
};

constexpr Text kTexts[] = {
    {ENG_ERR_MEMORY, "The engine is out of memory"},
    {ENG_ERR_INVALID_HANDLE, "The handle is stale or of another kind"},
    {ENG_ERR_MEMORY_LOCKED, "The memory block is locked"},
    {ENG_ERR_TOO_MANY_HANDLES, "Too many handles are open"},
    {ENG_ERR_NOT_STARTED, "The engine has not been started"},
    {ENG_ERR_ARGUMENT, "Invalid argument to an engine operation"},
    {ENG_ERR_INTERNAL, "Internal engine error"},
    {ENG_ERR_BUFFER_SIZE, "The buffer is too small for the result"},
    {ENG_ERR_ODS_CODE, "Unknown structure code"},
    {ENG_ERR_LOAD_LIBRARY, "The library could not be loaded"},
    {ENG_ERR_THREAD, "The engine has not been started for this thread"},
    {ENG_ERR_FILE_OPEN, "The file could not be opened"},
    {ENG_ERR_FILE_READ, "The file could not be read"},
    {ENG_ERR_FILE_WRITE, "The file could not be written"},
    {ENG_ERR_NO_CONFIG, "The settings file QUILLON.INI was not found"},
    {ENG_ERR_CONFIG_WRITE, "The settings file could not be written"},
    {ENG_ERR_CONFIG_READ, "The settings file could not be read"},
    {ENG_ERR_DB_NOT_FOUND, "The database file does not exist"},
    {ENG_ERR_DB_EXISTS, "A file of that name exists already"},
    {ENG_ERR_DB_NOT_STORE, "The file is not a database"},
    {ENG_ERR_DB_DAMAGED, "The database is damaged"},
    {ENG_ERR_DB_NEWER, "The database was written by a newer release"},
    {ENG_ERR_DB_IN_USE, "The database is in use"},
    {ENG_ERR_DB_READ_ONLY, "The database can only be read"},
    {ENG_ERR_DB_FULL, "The disk is full"},
    {ENG_ERR_DB_IO, "The database could not be read or written"},
    {ENG_ERR_DB_TRANSACTION, "There is a transaction in progress, or none to end"},
    {ENG_ERR_DB_FAILED_SYNC, "An earlier write did not reach the disk; the database must be reopened"},
    {ENG_ERR_DB_IS_DIRECTORY, "The path names a directory, not a database"},
    {ENG_ERR_PATH, "The path is not valid"},
    {ENG_ERR_SERVER, "The server cannot be reached"},
    {ENG_ERR_DB_NO_ACCESS, "No permission for the database or its directory"},
    {ENG_ERR_NO_ITEM, "The slate has no such item"},
    {ENG_ERR_ITEM_EXISTS, "The slate has an item of that name already"},
    {ENG_ERR_ITEM_DAMAGED, "The item's value is damaged"},
    {ENG_ERR_SLATE_DELETED, "The slate has been deleted"},
    {ENG_ERR_NO_SLATE, "There is no such slate"},
    {ENG_ERR_SLATE_CONFLICT, "The slate was saved by another since it was opened"},
    {ENG_ERR_HEADER_MEMBER, "Unknown member of a slate header"},
    {ENG_ERR_ITEM_NAME, "The item name is not valid"},
    {ENG_ERR_ITEM_SIZE, "The item value is too large"},
    {ENG_ERR_NO_SPECIAL_SLATE, "The database has no such special slate"},
    {ENG_ERR_NO_OBJECT, "There is no such object in the database"},
    {ENG_ERR_OBJECT_RANGE, "The range lies outside the object"},
    {ENG_ERR_OBJECT_CONTENT, "The object does not hold what its record says"},
    {ENG_ERR_FOLDER_NAME, "The folder name is empty or too long"},
    {ENG_ERR_FOLDER_EXISTS, "There is a view or folder of that name already"},
    {ENG_ERR_NOT_FOLDER, "The slate is not a folder"},
    {ENG_ERR_NOT_DOCUMENT, "The slate is not a document"},
    {ENG_ERR_USER_NAME, "The user name is empty or too long"},
    {ENG_ERR_FORMULA_EMPTY, "The formula has no expression to compute"},
    {ENG_ERR_FORMULA_SYNTAX, "The formula is not understood at this place"},
    {ENG_ERR_FORMULA_CHARACTER, "A character has no meaning in a formula"},
    {ENG_ERR_FORMULA_TEXT, "A text or bracket in the formula is not closed"},
    {ENG_ERR_FORMULA_NUMBER, "A number in the formula is not valid"},
    {ENG_ERR_FORMULA_TIME, "A date or time in the formula is not valid"},
    {ENG_ERR_FORMULA_FUNCTION, "The formula names an unknown @function"},
    {ENG_ERR_FORMULA_ARGUMENTS, "The @function takes another number of arguments"},
    {ENG_ERR_FORMULA_KEYWORD, "The @function does not know this keyword"},
    {ENG_ERR_FORMULA_TARGET, "The formula assigns to something that cannot take a value"},
    {ENG_ERR_FORMULA_NESTING, "The formula is nested too deep"},
    {ENG_ERR_FORMULA_TOO_LARGE, "The formula is too large"},
    {ENG_ERR_FORMULA_CODE, "The compiled formula is damaged"},
    {ENG_ERR_FORMULA_VERSION, "The formula was compiled by a newer release"},
    {ENG_ERR_FORMULA_STEPS, "The formula takes too many steps"},
    {ENG_ERR_FORMULA_MEMORY, "The formula takes too much memory"},
    {ENG_ERR_FORMULA_TYPE, "A value in the formula has the wrong type"},
    {ENG_ERR_FORMULA_VALUE, "A value in the formula is out of range"},
    {ENG_ERR_FORMULA_DIVISION, "The formula divides by zero"},
    {ENG_ERR_FORMULA_DOCUMENT, "The formula needs a document"},
    {ENG_ERR_FORMULA_LOOKUP, "The formula looks up data where that is not possible"},
    {ENG_ERR_FORMULA_RESULT, "The formula's result is too large for an item"},
    {ENG_ERR_FORMULA_FAILED, "The formula ended with an error of its own"},
    {ENG_ERR_NO_FORM, "The document's form cannot be found"},
    {ENG_ERR_FORM_DESIGN, "Stored design of a form cannot be read"},
    {ENG_ERR_COMPUTE_REFUSED, "A field's validation formula refuses its value"},
    {ENG_ERR_NO_COLLECTION, "View or folder has no index"},
    {ENG_ERR_VIEW_DESIGN, "Stored design of a view or folder cannot be read"},
    {ENG_ERR_TOO_MANY_KEYS, "Too many keys"},
    {ENG_ERR_NO_ENTRY, "Entry not found"},
    {ENG_ERR_NUMBER_PARSE, "The text is not a number"},
    {ENG_ERR_NO_DESIGN_ELEMENT, "There is no such design element"},
    {ENG_ERR_TIME_PARSE, "The text is not a date or time"},
    {ENG_ERR_TIME_VALUE, "The date or time is out of range"},
    {ENG_ERR_LIST_DAMAGED, "The list value is damaged"},
    {ENG_ERR_LIST_INDEX, "The list has no such entry"},
    {ENG_ERR_LIST_FULL, "The list value would be too large"},
    {ENG_ERR_COUNT_UNSUPPORTED, "The count is not supported"},
    {ENG_ERR_NO_FULL_TEXT, "The database has no full text index"},
    {ENG_ERR_TEXT_QUERY, "The full text query is not understood"},
    {ENG_ERR_NO_HITS, "No documents match the query"},
    {ENG_ERR_TEXT_NOT_FOUND, "The text was not found"},
    {ENG_ERR_TEXT_END, "The text ended early"},
    {ENG_ERR_RECORD_DAMAGED, "A composite record is damaged"},
    {ENG_ERR_TEXT_NESTING, "Parts of the text lie too deep in each other"},
};

static_assert(std::ranges::is_sorted(kTexts, {}, &Text::status));

}  // namespace

const char* StatusText(ENGSTATUS status) {
  const Text* found = std::ranges::lower_bound(kTexts, status, {}, &Text::status);
  return found != std::end(kTexts) && found->status == status ? found->text : nullptr;
}

}  // namespace qcore
