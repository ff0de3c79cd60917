#pragma once

#include "print/JsonOutput.h"
#include "print/Printing.h"

#include <cstddef>
#include <iosfwd>

namespace Srctl {
struct Finding;
}

namespace Srctl::Printing {

// Prints findings: text at once, one line for each, that begins with its result in a word; JSON at the end,
// or at once as a line for each.
class FindingPrinter {
 public:
  FindingPrinter(std::ostream& out, Format format) : out_(out), format_(format) {}

  void Print(const Finding& finding);
  // After the last finding.
  void Finish();

  [[nodiscard]] std::size_t Problems() const { return problems_; }

 private:
  std::ostream& out_;
  const Format format_;
  std::size_t problems_ = 0;
  JsonOutput::Json checks_ = JsonOutput::Json::array();
};

}  // namespace Srctl::Printing
