#include "doctor/FindingPrinter.h"

#include "doctor/Finding.h"
#include "libs/Terminal/TerminalText.h"

#include <ostream>
#include <string>
#include <utility>

namespace Srctl::Printing {
namespace {

using JsonOutput::Json;
using Wording::Message;

const char* WordFor(Finding::Result result) {
  switch (result) {
    case Finding::Result::Ok:
      return "ok";
    case Finding::Result::Note:
      return "note";
    case Finding::Result::Problem:
      break;
  }
  return "problem";
}

Json TextOrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

Json Object(const Finding& finding) {
  return {{"result", WordFor(finding.result)},
          {"check", finding.check},
          {"store", TextOrNull(finding.storeID)},
          {"text", finding.text.English()},
          {"next", TextOrNull(finding.next.English())}};
}

// A foreign text as it is, one of ours as its pattern with what is filled in.
Json Translatable(const Message& message) {
  if (!message.IsOurs()) return message.Text();
  Json places = Json::object();
  for (const Wording::Place& place : message.Places()) places[place.name] = Translatable(place.message);
  return {{"pattern", message.Text()}, {"places", std::move(places)}};
}

Json TranslatableObject(const Finding& finding) {
  Json object = Object(finding);
  object["textMessage"] = Translatable(finding.text);
  object["nextMessage"] = Translatable(finding.next);
  return object;
}

std::string Line(const Finding& finding) {
  std::string line = std::string(WordFor(finding.result)) + ": ";
  if (!finding.storeID.empty()) line += "store \"" + finding.storeName + "\" (" + finding.storeID + "), ";
  line += finding.check + ": " + finding.text.English();
  if (!finding.next.IsEmpty()) line += " Next: " + finding.next.English();
  return Terminal::OneLine(line);
}

}  // namespace

void FindingPrinter::Print(const Finding& finding) {
  if (finding.result == Finding::Result::Problem) ++problems_;
  if (format_ == Format::Text) {
    out_ << Line(finding) << std::endl;  // the next check may take a while
    return;
  }
  if (format_ == Format::Json) {
    checks_.push_back(Object(finding));
  } else {
    JsonOutput::PrintLine(out_, TranslatableObject(finding));
    out_.flush();
  }
}

void FindingPrinter::Finish() {
  if (format_ == Format::Json) {
    JsonOutput::Print(out_, {{"problems", problems_}, {"checks", checks_}});
  } else if (format_ == Format::JsonLines) {
    return;
  } else if (problems_ == 0) {
    out_ << "Nothing is wrong.\n";
  } else {
    out_ << (problems_ == 1 ? "One problem was" : std::to_string(problems_) + " problems were")
         << " found.\n";
  }
}

}  // namespace Srctl::Printing
