#include "vq/vq.h"

// Makes the first "colour" in a store's first document a "color".
int main(int, char** argv) {
  VQSetThrowAllErrors(1);  // a failure is thrown as its status
  VQQuillonSession session;
  session.Init();  // finds QUILLON.INI
  VQDatabase papers;
  session.GetDatabase(argv[1], &papers);
  papers.Open();
  VQDocumentArray documents;
  papers.GetDocuments(&documents);
  VQDocument document(documents[0]);
  document.Open();
  VQRichText body;
  document.GetItem("Body", &body);
  VQRTCursor cursor;
  body.GetCursor(&cursor);
  if (cursor.GotoFirst("colour") != VQ_OK) return 3;
  body.Delete(&cursor, 6);
  body.Insert("color", &cursor);
  document.Save();  // writes the one record anew, every other byte as it was
}
