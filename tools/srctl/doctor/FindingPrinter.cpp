#include "doctor/FindingPrinter.h"

#include "doctor/Finding.h"
#include "libs/Terminal/TerminalText.h"

#include <ostream>
#include <string>

namespace Srctl::Printing {
namespace {

using JsonOutput::Json;

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
          {"text", finding.text},
          {"next", TextOrNull(finding.next)}};
}

std::string Line(const Finding& finding) {
  std::string line = std::string(WordFor(finding.result)) + ": ";
  if (!finding.storeID.empty()) line += "store \"" + finding.storeName + "\" (" + finding.storeID + "), ";
  line += finding.check + ": " + finding.text;
  if (!finding.next.empty()) line += " Next: " + finding.next;
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
    JsonOutput::PrintLine(out_, Object(finding));
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
