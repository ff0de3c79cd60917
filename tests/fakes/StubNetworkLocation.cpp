#include "fakes/StubNetworkLocation.h"

#include "SRLib/NetworkLocation.h"

#include <atomic>

namespace {

std::atomic<std::uint32_t> answer = 2;

}  // namespace

void testsupport::AnswerLocationWith(std::uint32_t location) {
  answer = location;
}

std::uint32_t ServiceRecords::LocationRelativeToStoreURL(const std::wstring& /*storeURL*/) {
  return answer;
}
