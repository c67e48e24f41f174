#include <cstdio>

#include "vq/vq.h"

// Replaces the first "colour" of each document.
int main(int, char** argv) {
  VQQuillonSession session;
  VQSetThrowAllErrors(1);  // each failure is thrown as its status
  try {
    session.Init();  // finds QUILLON.INI
    VQDatabase papers;
    session.GetDatabase(argv[1], &papers);
    papers.Open();
    VQDocumentArray documents;
    papers.GetDocuments(&documents);
    for (unsigned long i = 0; i < documents.GetCount(); ++i) {
      VQDocument document(documents[i]);
      VQRichText body;
      VQRTCursor cursor;
      document.Open();
      document.GetItem("Body", &body);
      body.GetCursor(&cursor);
      if (cursor.GotoFirst("colour") == VQWARN_NOT_FOUND) continue;
      body.Delete(&cursor, 6);
      body.Insert("color", &cursor);
      document.Save();  // writes the one record anew, every other byte as it was
    }
  } catch (VQSTATUS status) {
    char words[256];
    VQGetErrorMessageText(status, words, sizeof words);
    return std::fprintf(stderr, "%s\n", words), 1;
  }
}
