#pragma once

#include "SRLib/SRStore.h"
#include "libs/DomLib/DocumentProblem.h"
#include "libs/Wording/Message.h"

#include <cstddef>
#include <string>
#include <vector>

// A look at a document before the agent gets it, with the agent's own parser and schemas. Changes the
// process's current directory to the installed schemas. Any thread; one document at a time.
namespace Srctl::DocumentCheck {

struct Result {
  ServiceRecords::StoreMap stores;  // what the agent will find in the document
  // Why it will find nothing, with the fatal one of the problems; empty when there are stores.
  Wording::Message problem;
  // What to do when the problem is that nobody could look into the document; else empty.
  Wording::Message next;

  // What is wrong with the document, in the order in which it was found; the first ones of many.
  std::vector<DomLib::DocumentProblem> problems;
  std::size_t furtherProblems = 0;   // rules that it breaks besides
  Wording::Message problemWithRoot;  // why the document is of neither kind; empty when it is of one
  bool namesSchema = false;

  // It names a schema, which was found, and breaks no rule.
  [[nodiscard]] bool IsValid() const;
  // It breaks a rule.
  [[nodiscard]] bool HasErrors() const;
  // What ends the reading before its end; null where nothing does. The reading's own refusals come behind it.
  [[nodiscard]] const DomLib::DocumentProblem* End() const;
};

// The document is UTF-8.
[[nodiscard]] Result Check(const std::string& document);

// Where it lies and what it is, without a full stop. `document`: what the document is called; with an empty
// name the place alone is told.
[[nodiscard]] Wording::Message Sentence(const DomLib::DocumentProblem& problem, const std::string& document);
// The same of all of them, in one sentence; there are some.
[[nodiscard]] Wording::Message Sentences(const Result& result);

}  // namespace Srctl::DocumentCheck
