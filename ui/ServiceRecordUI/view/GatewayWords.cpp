#include "view/GatewayWords.h"

#include "Shared/Translations.h"

#include <vector>

namespace Dialogs {

using namespace Windows;

namespace GatewayWords {
namespace {

std::string WordAt(const std::vector<const char*>& words, std::optional<std::uint64_t> number) {
  if (!number) return {};
  return *number < words.size() ? words[*number] : std::to_string(*number);
}

}  // namespace

std::string OfAuthentication(std::optional<std::uint64_t> authentication) {
  return WordAt(
      {Translated("RSA code"), Translated("No log-on"), Translated("Domain"),
       Translated("Domain and RSA code"), Translated("SMS code"), Translated("As the gateway asks")},
      authentication);
}

// Names, the same in each language.
std::string OfEdition(std::optional<std::uint64_t> edition) {
  return WordAt({"Standard", "Advanced", "Enterprise"}, edition);
}

std::string OfRewriteMode(std::optional<std::uint64_t> mode) {
  return WordAt({"NONE", "SG_RW", "FB_RW", "ENTCVPN_RW"}, mode);
}

}  // namespace GatewayWords

}  // namespace Dialogs
