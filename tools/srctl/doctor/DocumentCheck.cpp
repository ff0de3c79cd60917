#include "doctor/DocumentCheck.h"

#include "SRLib/SRXMLProvider.h"
#include "libs/DomLib/DocumentBounds.h"
#include "libs/Text/TextHelpers.h"

#include <filesystem>
#include <mutex>
#include <system_error>

namespace Srctl::DocumentCheck {
namespace {

std::filesystem::path InstalledResources() {
  std::error_code ignored;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return program.parent_path().parent_path() / SR_RESOURCES_DIR;
}

}  // namespace

Result Check(const std::string& document) {
  // The schemas are found from the current directory, which all threads have in common.
  static std::mutex one;
  const std::lock_guard lock(one);
  if (document.size() > DomLib::kMaximumDocumentBytes) {
    return {{},
            "it is larger than a document may be: " + std::to_string(DomLib::kMaximumDocumentBytes >> 20) +
                " MiB"};
  }
  if (!util::IsUTF8(document)) return {{}, "it is not UTF-8 text; save it in that encoding and try again"};
  std::error_code missing;
  std::filesystem::current_path(InstalledResources(), missing);
  if (missing) {
    return {{},
            "the schemas to check it with are not in " + InstalledResources().string() +
                "; reinstall the program"};
  }
  Result result;
  if (!ServiceRecords::SRXMLProvider().ProcessNewDocument(util::widen(document), result.stores)) {
    result.problem =
        "it cannot be parsed: it is not well-formed XML, which `xmllint --noout` (package libxml2-utils) "
        "shows, or it takes more to "
        "parse than a document may";
  } else if (result.stores.empty()) {
    result.problem =
        "it describes no complete store; each Service element, in the namespace urn:morvane:servicerecord, "
        "needs "
        "an SRID, a Name, an Address and a type";
  }
  return result;
}

}  // namespace Srctl::DocumentCheck
