// VQDocument: a slate of the data class, with its form, its categories and its place among responses.
#ifndef QUILLON_VQ_STORE_VQDOC_H
#define QUILLON_VQ_STORE_VQDOC_H

#include "vq/store/vqslate.h"

class VQDocumentArray;
class VQForm;

enum VQMAILMSGTYPE : unsigned int {
  VQMAILMSGTYPE_FORWARD = 0,
  VQMAILMSGTYPE_REPLY = 1,
  VQMAILMSGTYPE_REPLY_WITH_HISTORY = 2,
  VQMAILMSGTYPE_REPLY_TO_ALL = 3,
  VQMAILMSGTYPE_REPLY_TO_ALL_WITH_HISTORY = 4,
  VQMAILMSGTYPE_DOCUMENT = 5,
  VQMAILMSGTYPE_MEMO = 6,
  VQMAILMSGTYPE_INVITATION = 7,
};

class VQ_API VQDocumentBody : public VQSlateBody {
 public:
  VQDocumentBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);
  VQCLASSID GetClassID() const override;

  VQSTATUS SetForm(std::string_view name);
  VQSTATUS MakeResponse(const UNIVERSALSLATEID& parent);
  // The engine's table of direct responses, a copy that the caller destroys.
  VQSTATUS CopyResponses(ENGHANDLE* table);
  // Adds all documents below to the table.
  VQSTATUS CollectResponses(ENGHANDLE total);
  VQMAILMSGTYPE GetMailType() const { return MailType; }
  void SetMailType(VQMAILMSGTYPE type) { MailType = type; }

 private:
  VQMAILMSGTYPE MailType;
};

// Operations give VQERR_OBJECT_NOT_INITIALIZED on an unbound document and VQERR_SLATE_NOT_OPEN on a closed one, or
// throw it where the result is no status. A slate of another class is refused with VQERR_INCORRECT_SLATE_TYPE.
class VQ_API VQDocument : public VQSlate {
 public:
  VQDocument();
  VQDocument(VQDatabaseBody* database, unsigned long id, unsigned long reserved = 0);
  VQDocument(const VQDocument& other);
  explicit VQDocument(const VQSlate& other, unsigned long reserved = 0);
  explicit VQDocument(VQDocumentBody* body);
  ~VQDocument();
  VQDocument& operator=(const VQDocument& other);
  VQDocument& operator=(const VQSlate& other);
  VQDocument& operator=(VQSlateBody* body);
  VQCLASSID GetClassID() const override;

  VQSTATUS Close() override;
  using VQSlate::ValidateSlateType;
  VQSTATUS ValidateSlateType(unsigned long type) const override;

  // The item Categories, or an empty text.
  VQText GetCategories() const;
  // The form's name; empty when no form is named.
  VQSTATUS GetFormSlate(VQString* name) const;
  // Bound, not opened. A document that names no form, or one that the database does not have, leaves the handle
  // unbound.
  VQSTATUS GetFormSlate(VQForm* form) const;
  // Runs the document through its form (of no name: the database's default one): default values, computed fields, input
  // translation and validation, as engine/compute.h describes. A compute error comes before one of reading the items
  // back. Handles on items that get new values are on deleted items afterwards.
  VQSTATUS ComputeWithForm(int continue_on_error) const;
  // An addition: which field failed, and what its formula had to say; both may be null and are empty after a success.
  VQSTATUS ComputeWithForm(int continue_on_error, VQString* field, VQString* message) const;
  // An empty string gives VQERR_NULL_STRING, an empty text VQERR_NULL_POINTER.
  VQSTATUS SetFormSlate(const VQString& name) const;
  VQSTATUS SetFormSlate(const VQText& name) const;
  int IsAbstracted() const;
  // Whether there is an item $REF.
  int IsResponse() const;
  // The parent must be a saved, open document of this database: VQERR_RESPONSE_DATABASE,
  // VQERR_UNINITIALIZED_ARGUMENT.
  VQSTATUS MakeResponse(const VQDocument& parent) const;
  // Bound, not opened. VQWARN_NOT_FOUND for a document that is no response or whose parent is gone;
  // VQERR_INVALID_PARAMETER for a null output.
  VQSTATUS GetParentDocument(VQDocument* parent) const;
  // Direct responses as saved.
  VQSTATUS GetResponses(VQDocumentArray* responses) const;
  // The whole tree below the document, each document once.
  VQSTATUS GetAllResponses(VQDocumentArray* responses) const;
  unsigned long GetResponseCount() const;
  // Set when the handle came out of a full text search.
  unsigned short GetFTSearchScore() const { return FTSearchScore; }
  // Whether closing the document closes its database too.
  void SetCloseDatabase(int flag) { CloseDatabase = flag; }

  // For the library's own code.
  void SetFTSearchScore(unsigned short score) { FTSearchScore = score; }

 private:
  VQSTATUS CheckDocument(VQDocumentBody** body) const;

  std::uint16_t FTSearchScore;
  int CloseDatabase;
};

#endif
