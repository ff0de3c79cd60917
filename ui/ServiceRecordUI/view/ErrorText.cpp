#include "view/ErrorText.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "request/Details.h"

namespace Dialogs {

using namespace Windows;

namespace {

using PropertyList::Dictionary;

void AddLine(std::string& text, const std::string& line) {
  if (!line.empty()) text += line + "\n";
}

// Not isolated: the marks would go along, unseen, into whatever the value is pasted into.
void AddLabelled(std::string& text, const char* label, const std::string& value) {
  if (!value.empty()) AddLine(text, std::string(label) + ": " + value);
}

}  // namespace

ErrorText ErrorText::Of(const Dictionary& details) {
  ErrorText text;
  text.title = ShownText::Name(Details::Text(details, "ErrorTitle"));
  text.message = ShownText::Lines(Details::Text(details, "ErrorMessage"));
  text.reason = ShownText::Lines(Details::Text(details, "ErrorReason"));
  text.store = ShownText::Name(Details::Text(details, "StoreName"));
  text.server = ShownText::Whole(Details::Text(details, "Server"));
  text.file = ShownText::Whole(Details::Text(details, "DocumentPath"));
  text.details = ShownText::Lines(Details::Text(details, "ErrorDetails"));
  return text;
}

std::string ErrorText::ForCopying() const {
  std::string text;
  for (const std::string& line : {title, message, reason}) AddLine(text, line);
  AddLabelled(text, Translated("Store"), store);
  AddLabelled(text, Translated("Server"), server);
  AddLabelled(text, Translated("File"), file);
  AddLine(text, details);
  return text;
}

}  // namespace Dialogs
