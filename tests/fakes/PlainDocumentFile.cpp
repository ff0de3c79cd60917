#include "fakes/PlainDocumentFile.h"

#include "libs/Text/TextHelpers.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace TestSupport {

bool ReadPlainDocument(const std::wstring& path, std::wstring& text, std::wstring& reason) {
  reason = L"not read";
  const std::filesystem::path file(util::narrow(path));
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return false;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return false;
  text = util::widen(std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()));
  return true;
}

}  // namespace TestSupport
