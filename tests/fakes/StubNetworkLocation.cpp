#include "fakes/StubNetworkLocation.h"

#include "SRLib/Platform/NetworkLocation.h"

#include <map>

namespace {

struct Answers {
  std::uint32_t everywhere = 2;
  std::map<std::wstring, std::uint32_t> byURL;
};

Answers g_answers;

}  // namespace

void testsupport::AnswerLocationWith(std::uint32_t location) {
  g_answers = {location, {}};
}

void testsupport::AnswerLocationWith(std::uint32_t location, const std::wstring& storeURL) {
  g_answers.byURL[storeURL] = location;
}

std::uint32_t ServiceRecords::LocationRelativeToStoreURL(const std::wstring& storeURL) {
  const auto answer = g_answers.byURL.find(storeURL);
  return answer == g_answers.byURL.end() ? g_answers.everywhere : answer->second;
}
