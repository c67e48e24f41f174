// Rendering: documents, through a form or alone, and styled text, written one behind another into a rich text.
//
// The rich text becomes an item of a temporary slate, with the fonts, links and attached files that it refers to. What
// comes from different slates gets paragraph identifiers and faces of its own.
#ifndef QUILLON_QCORE_FORMS_RENDER_H
#define QUILLON_QCORE_FORMS_RENDER_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "qcore/forms/compute.h"

namespace qcore::forms {

class RenderTarget {
 public:
  [[nodiscard]] static ENGSTATUS Create(const std::shared_ptr<Database>& database, std::string_view name,
                                        ENGHANDLE* handle);
  [[nodiscard]] static ENGSTATUS Close(ENGHANDLE handle);
  static RenderTarget* Find(ENGHANDLE handle) { return handle_table.FindAs<RenderTarget>(Kind::kRender, handle); }
  // For the end of the engine.
  static void CloseAll();

  RenderTarget(std::string_view name, ENGHANDLE slate) : name_(name), slate_(slate) {}
  RenderTarget(const RenderTarget&) = delete;
  RenderTarget& operator=(const RenderTarget&) = delete;
  ~RenderTarget();

  // The paragraphs that follow have this style, whose name goes into the text. Null stands for the usual settings.
  [[nodiscard]] ENGSTATUS OpenStyle(std::string_view name, const CDPABDEFINITION* style, std::uint16_t* number);
  // Line ends start paragraphs; 0 is the style in force.
  [[nodiscard]] ENGSTATUS AppendText(std::uint16_t style, std::uint32_t font, std::string_view text);
  // Through the form's $Body, with those of its subforms, each field as what it shows; without a form (null) all items,
  // a paragraph each. A failure leaves what was there before.
  [[nodiscard]] ENGSTATUS AppendSlate(Slate* form, Slate& document);
  // Puts what was rendered into the slate's items. Nothing can be appended afterwards.
  [[nodiscard]] ENGSTATUS Finish();
  // The slate becomes the caller's. ENG_ERR_ARGUMENT before Finish, and the second time.
  [[nodiscard]] ENGSTATUS TakeSlate(ENGHANDLE* slate);

 private:
  // What the numbers and names of one slate's records stand for here.
  struct Source {
    explicit Source(Slate& from) : slate(from) {}
    Slate& slate;
    std::map<std::uint16_t, std::uint16_t> paragraphs;
    std::map<std::uint8_t, std::uint8_t> faces;
    std::map<std::string, std::string> files;  // attachments that its records show
    bool has_links = false;                    // those of others are left out
    bool has_table = false;                    // without one its links lead nowhere
    bool twice = false;                        // among the hotspots below the last begin was an older button's
    unsigned inside = 0;  // hotspots open in that of a subform, whose content stands for it where there is none
  };
  // A document on its way through a form.
  struct Reading {
    Slate& document;
    Source values;
    ShownFields shown;
    unsigned depth = 0;  // of subforms
    unsigned subforms = 0;
  };
  // A record ends below `end`, and the next one starts there.
  struct Piece {
    std::size_t end = 0;
  };

  [[nodiscard]] ENGSTATUS ReadFonts(Slate& slate, Source* source);
  [[nodiscard]] ENGSTATUS AppendItems(Slate& slate, std::string_view name, Source& source, Reading* reading);
  [[nodiscard]] ENGSTATUS AppendRecords(Bytes records, Source& source, Reading* reading);
  [[nodiscard]] ENGSTATUS AppendRecord(std::uint16_t signature, Bytes bytes, Source& source);
  [[nodiscard]] ENGSTATUS AppendField(Bytes record, Source& form, Reading& reading);
  [[nodiscard]] ENGSTATUS AppendSubform(std::string_view name, const Source& form, Reading& reading);
  [[nodiscard]] ENGSTATUS AppendThroughForm(Slate& form, Slate& target, Reading& reading);
  [[nodiscard]] ENGSTATUS AppendDocument(Slate* form, Slate& document);
  [[nodiscard]] ENGSTATUS AppendList(Slate& document, Source& values);
  // The slate's link table becomes the target's where that has none; links of a slate with another table are left out.
  [[nodiscard]] static ENGSTATUS ReadLinks(Slate& target, Slate& from, Source* source);
  // The attachment that a hotspot's record shows comes along; where another one here has its name, both get a new one.
  [[nodiscard]] ENGSTATUS CarryFile(std::vector<std::uint8_t>& record, Source& source);
  [[nodiscard]] ENGSTATUS AppendFile(const std::string& name, const std::string& made, Slate& from);
  [[nodiscard]] ENGSTATUS NewParagraphNumber(std::uint16_t* number);
  void AddRecord(Bytes record);
  void AddRun(std::uint32_t font, std::string_view text);
  void AddReference(std::uint16_t paragraph);
  void StartParagraph();
  // False when there is no number left.
  bool MapParagraph(std::vector<std::uint8_t>& record, std::size_t at, Source& source);
  static std::uint32_t MapFont(std::uint32_t font, const Source& source);
  static void MapFontAt(std::vector<std::uint8_t>& record, std::size_t at, const Source& source);

  std::string name_;
  ENGHANDLE handle_ = 0;
  ENGHANDLE slate_;
  bool finished_ = false;
  std::vector<std::uint8_t> records_;
  std::vector<Piece> pieces_;
  std::vector<std::uint8_t> faces_;  // face entries, one behind another
  std::set<std::string> files_;      // names of attachments
  std::uint32_t last_paragraph_ = 0;
  std::uint16_t in_force_ = 0;
};

}  // namespace qcore::forms

#endif
