#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace DomLib {

// Something that is wrong with a document. All text is UTF-8 and may hold any character of the document.
struct DocumentProblem {
  enum class Gravity {
    Warning,  // something that it names cannot be had, say
    Error,    // it is read on
    Fatal,    // nothing is read from there on
  };

  Gravity gravity = Gravity::Error;
  // Where it lies: a file that the document names, empty for the document itself; from 1, 0 where that is not
  // known.
  std::string file = {};
  std::uint64_t line = 0;
  std::uint64_t column = 0;
  std::string text = {};
};

// Is told each of them as it is found.
using ProblemReport = std::function<void(const DocumentProblem& problem)>;

}  // namespace DomLib
