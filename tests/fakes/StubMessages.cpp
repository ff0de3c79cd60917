#include "fakes/StubMessages.h"

#include "SRLib/Platform/Messages.h"

namespace TestSupport {
namespace {

bool HasArgument(int id) {
  return id == util::kMessageServerNotContacted || id == util::kMessageEmptyHostName ||
         id == util::kMessageCertificatesNotFetched;
}

}  // namespace

std::wstring StubMessage(int id) {
  return L"message " + std::to_wstring(id) + (HasArgument(id) ? L" about %S" : L"");
}

}  // namespace TestSupport
