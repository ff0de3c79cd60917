#include "doctor/ServerAnswers.h"

#include "doctor/HelpingThreads.h"
#include "libs/Address/SplitURL.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>

namespace Srctl {
namespace {

// Several stores are looked at, too.
constexpr std::size_t kMostThreads = 8;

}  // namespace

ServerAnswers::ServerAnswers(const std::vector<std::string>& urls) {
  for (const std::string& url : urls) {
    if (!places_.try_emplace(ServerOf(url), questions_.size()).second) continue;
    Question& question = questions_.emplace_back();
    question.ask = std::packaged_task<ServerCheck::Answer()>([url] { return ServerCheck::Ask(url); });
    question.answer = question.ask.get_future().share();
  }
  helpers_ = StartHelpers(std::min(questions_.size(), kMostThreads) - 1, [this] {
    for (Question& question : questions_) question.Ask();
  });
}

std::string ServerAnswers::ServerOf(const std::string& url) {
  const std::string scheme = url.substr(0, url.find("://"));
  return util::AsciiLowerCased(scheme + " " + Address::SplitURL(url).WithoutPage());
}

const ServerCheck::Answer& ServerAnswers::Of(const std::string& url) {
  Question& question = questions_[places_.at(ServerOf(url))];
  question.Ask();
  return question.answer.get();
}

void ServerAnswers::Question::Ask() {
  if (!isTaken.test_and_set()) ask();
}

}  // namespace Srctl
