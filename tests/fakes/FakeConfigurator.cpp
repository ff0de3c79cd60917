#include "fakes/FakeConfigurator.h"

#include "libs/Text/TextHelpers.h"

#include <stdexcept>

namespace TestSupport {
namespace {

void Describe(const PropertyList::Dictionary& container, const std::wstring& path,
              std::vector<std::wstring>& lines) {
  for (const auto& [key, value] : container.Entries()) {
    const std::wstring entry = path + util::widen(key);
    if (const auto* inner = value.As<PropertyList::Dictionary>()) {
      lines.push_back(entry + L"\\");
      Describe(*inner, entry + L"\\", lines);
    } else if (const auto* truth = value.As<bool>()) {
      lines.push_back(entry + L" = " + (*truth ? L"true" : L"false"));
    } else if (const auto* text = value.As<std::string>()) {
      lines.push_back(entry + L" = \"" + util::widen(*text) + L"\"");
    } else if (const auto number = value.AsNumber()) {
      lines.push_back(entry + L" = " + std::to_wstring(*number));
    }
  }
}

}  // namespace

std::vector<std::wstring> FakeConfigurator::Dump() {
  std::vector<std::wstring> lines;
  Describe(*Load(), L"", lines);
  return lines;
}

bool FakeConfigurator::SetString(const std::wstring& key, const std::wstring& value) const {
  if (beforeWrite) beforeWrite();
  return ConfigurationTree::SetString(key, value);
}

bool FakeConfigurator::SetBinary(const std::wstring& /*key*/, const std::uint8_t* /*bytes*/,
                                 std::uint32_t /*size*/) const {
  throw std::logic_error("the configuration does not offer this operation");
}

}  // namespace TestSupport
