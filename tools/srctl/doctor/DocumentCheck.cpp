#include "doctor/DocumentCheck.h"

#include "SRLib/SRXMLProvider.h"
#include "libs/DomLib/DocumentBounds.h"
#include "libs/Text/TextHelpers.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace Srctl::DocumentCheck {
namespace {

using Wording::Message;
using Wording::Worded;

using DomLib::DocumentProblem;
using Gravity = DocumentProblem::Gravity;

// A document of the wrong kind can break a rule in each of its lines.
constexpr std::size_t kMostProblems = 20;

std::filesystem::path InstalledResources() {
  std::error_code ignored;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return program.parent_path().parent_path() / SR_RESOURCES_DIR;
}

Result Failed(const Message& problem, const Message& next) {
  Result result;
  result.problem = problem;
  result.next = next;
  return result;
}

bool IsFatal(const DocumentProblem& problem) {
  return problem.gravity == Gravity::Fatal;
}

bool IsError(const DocumentProblem& problem) {
  return problem.gravity != Gravity::Warning;
}

// What ends the document comes last, and is told in any case. So are errors behind however many warnings.
void Take(Result& result, const DocumentProblem& problem) {
  const auto told =
      std::count_if(result.problems.begin(), result.problems.end(),
                    [&](const DocumentProblem& one) { return IsError(one) == IsError(problem); });
  if (static_cast<std::size_t>(told) < kMostProblems || IsFatal(problem)) {
    result.problems.push_back(problem);
  } else if (IsError(problem)) {
    ++result.furtherProblems;
  }
}

// Without the prefix, the root of a document of either kind is called like this.
Message ProblemWithRoot(const std::string& name) {
  const std::string local = name.substr(name.find(':') + 1);
  if (name.empty() || local == "Services" || local == "Discovery") return {};
  return Worded(
      "its root element is {name}; that of a service record is Services, that of a discovery document "
      "Discovery",
      {{"name", name}});
}

Message Needs() {
  return Worded(
      "each Service element, in the namespace urn:morvane:servicerecord, needs an SRID, a Name, an Address "
      "and a type");
}

// The parser's own problems have a place; the reading's, which come after it, have none.
Message WhyWithoutStores(const Result& result, bool wasRead) {
  const DocumentProblem* const fatal = result.End();
  const Message end = fatal != nullptr ? Sentence(*fatal, "") : Message();
  if (fatal != nullptr && (!wasRead || fatal->line != 0))
    return Worded("it cannot be parsed: {problem}", {{"problem", end}});
  if (!result.problemWithRoot.IsEmpty()) return result.problemWithRoot;
  if (fatal != nullptr) {
    return Worded("it describes no complete store: {problem}; {needs}",
                  {{"problem", end}, {"needs", Needs()}});
  }
  return Worded("it describes no complete store; {needs}", {{"needs", Needs()}});
}

}  // namespace

bool Result::IsValid() const {
  return namesSchema && problems.empty();
}

bool Result::HasErrors() const {
  return std::any_of(problems.begin(), problems.end(), IsError);
}

const DocumentProblem* Result::End() const {
  const auto fatal = std::find_if(problems.begin(), problems.end(), IsFatal);
  return fatal != problems.end() ? &*fatal : nullptr;
}

Result Check(const std::string& document) {
  // The schemas are found from the current directory, which all threads have in common.
  static ThreadSafety::Mutex one;
  const ThreadSafety::MutexLock lock(one);
  if (document.size() > DomLib::kMaximumDocumentBytes) {
    return Failed(Worded("it is larger than a document may be: {size} MiB",
                         {{"size", std::to_string(DomLib::kMaximumDocumentBytes >> 20)}}),
                  Worded("Ask whoever wrote it for a smaller one."));
  }
  if (!util::IsUTF8(document))
    return Failed(Worded("it is not UTF-8 text"), Worded("Save it in that encoding and try again."));
  std::error_code missing;
  std::filesystem::current_path(InstalledResources(), missing);
  if (missing) {
    return Failed(Worded("the schemas to check it with are not in {folder}",
                         {{"folder", InstalledResources().string()}}),
                  Worded("Install the program again."));
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

Message Sentence(const DocumentProblem& problem, const std::string& document) {
  const std::string place = problem.file.empty() ? document : problem.file;
  std::string text = problem.text;
  if (text.ends_with('.')) text.pop_back();
  const std::vector<Wording::Place> places{{"place", place},
                                           {"line", std::to_string(problem.line)},
                                           {"column", std::to_string(problem.column)},
                                           {"problem", text}};
  if (problem.line == 0) return place.empty() ? Message(text) : Worded("{place}: {problem}", places);
  return place.empty() ? Worded("line {line}, column {column}: {problem}", places)
                       : Worded("{place}, line {line}, column {column}: {problem}", places);
}

Message Sentences(const Result& result) {
  Message text = Sentence(result.problems.front(), "");
  for (auto problem = result.problems.begin() + 1; problem != result.problems.end(); ++problem)
    text = Worded("{problems}; {further}", {{"problems", text}, {"further", Sentence(*problem, "")}});
  if (result.furtherProblems == 0) return text;
  return Worded("{problems}; and {count} more",
                {{"problems", text}, {"count", std::to_string(result.furtherProblems)}});
}

}  // namespace Srctl::DocumentCheck
