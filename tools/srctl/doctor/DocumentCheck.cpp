#include "doctor/DocumentCheck.h"

#include "SRLib/SRXMLProvider.h"
#include "libs/DomLib/DocumentBounds.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

namespace Srctl::DocumentCheck {
namespace {

using DomLib::DocumentProblem;
using Gravity = DocumentProblem::Gravity;

// A document of the wrong kind can break a rule in each of its lines.
constexpr std::size_t kMostProblems = 20;

std::filesystem::path InstalledResources() {
  std::error_code ignored;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return program.parent_path().parent_path() / SR_RESOURCES_DIR;
}

Result Failed(const std::string& problem) {
  Result result;
  result.problem = problem;
  return result;
}

bool IsFatal(const DocumentProblem& problem) {
  return problem.gravity == Gravity::Fatal;
}

bool IsError(const DocumentProblem& problem) {
  return problem.gravity != Gravity::Warning;
}

// What ends the document comes last, and is told in any case.
void Take(Result& result, const DocumentProblem& problem) {
  const bool isTold = result.problems.size() < kMostProblems || IsFatal(problem);
  if (isTold) {
    result.problems.push_back(problem);
  } else {
    ++result.furtherProblems;
  }
}

// Without the prefix, the root of a document of either kind is called like this.
std::string ProblemWithRoot(const std::string& name) {
  const std::string local = name.substr(name.find(':') + 1);
  if (name.empty() || local == "Services" || local == "Discovery") return {};
  return "its root element is " + name +
         "; that of a service record is Services, that of a discovery document Discovery";
}

// The parser's own problems have a place; the reading's, which come after it, have none.
std::string WhyWithoutStores(const Result& result, bool wasRead) {
  const auto fatal = std::find_if(result.problems.begin(), result.problems.end(), IsFatal);
  const std::string end = fatal == result.problems.end() ? "" : ": " + Sentence(*fatal, "");
  if (!end.empty() && (!wasRead || fatal->line != 0)) return "it cannot be parsed" + end;
  if (!result.problemWithRoot.empty()) return result.problemWithRoot;
  return "it describes no complete store" + end +
         "; each Service element, in the namespace urn:morvane:servicerecord, needs an SRID, a Name, an "
         "Address and a type";
}

}  // namespace

bool Result::IsValid() const {
  return namesSchema && problems.empty();
}

bool Result::HasErrors() const {
  return std::any_of(problems.begin(), problems.end(), IsError);
}

bool Result::IsCutShort() const {
  return std::any_of(problems.begin(), problems.end(), IsFatal);
}

Result Check(const std::string& document) {
  // The schemas are found from the current directory, which all threads have in common.
  static std::mutex one;
  const std::lock_guard lock(one);
  if (document.size() > DomLib::kMaximumDocumentBytes) {
    return Failed("it is larger than a document may be: " +
                  std::to_string(DomLib::kMaximumDocumentBytes >> 20) + " MiB");
  }
  if (!util::IsUTF8(document)) return Failed("it is not UTF-8 text; save it in that encoding and try again");
  std::error_code missing;
  std::filesystem::current_path(InstalledResources(), missing);
  if (missing) {
    return Failed("the schemas to check it with are not in " + InstalledResources().string() +
                  "; reinstall the program");
  }
  Result result;
  ServiceRecords::SRXMLProvider provider;
  provider.ReportTo([&result](const DocumentProblem& problem) { Take(result, problem); });
  const bool wasRead = provider.ProcessNewDocument(util::widen(document), result.stores);
  result.problemWithRoot = ProblemWithRoot(util::narrow(provider.RootName()));
  result.namesSchema = provider.NamesSchema();
  if (result.stores.empty()) result.problem = WhyWithoutStores(result, wasRead);
  return result;
}

std::string Sentence(const DocumentProblem& problem, const std::string& document) {
  std::string place = problem.file.empty() ? document : problem.file;
  if (problem.line != 0) {
    if (!place.empty()) place += ", ";
    place += "line " + std::to_string(problem.line) + ", column " + std::to_string(problem.column);
  }
  std::string text = problem.text;
  if (text.ends_with('.')) text.pop_back();
  return place.empty() ? text : place + ": " + text;
}

std::string Sentences(const Result& result) {
  std::string text;
  for (const DocumentProblem& problem : result.problems) {
    if (!text.empty()) text += "; ";
    text += Sentence(problem, "");
  }
  if (result.furtherProblems > 0) text += "; and " + std::to_string(result.furtherProblems) + " more";
  return text;
}

}  // namespace Srctl::DocumentCheck
