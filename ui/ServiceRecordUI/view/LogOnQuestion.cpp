#include "view/LogOnQuestion.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "request/Details.h"

namespace Dialogs {

using namespace Windows;

namespace {

using PropertyList::Dictionary;

std::string IntroductionOf(const Dictionary& details) {
  const std::string store = ShownText::Name(Details::Text(details, "StoreName"));
  const std::string gateway = ShownText::Name(Details::Text(details, "GatewayName"));
  const bool isGateway = Details::Text(details, "Place") == "gateway";
  if (isGateway && !gateway.empty() && !store.empty()) {
    return ShownText::Sentence(
        Translated("The gateway “{gateway}” of the store “{store}” asks you to log on."),
        {{"gateway", gateway}, {"store", store}});
  }
  if (isGateway && !store.empty()) {
    return ShownText::Sentence(Translated("A gateway of the store “{store}” asks you to log on."),
                               {{"store", store}});
  }
  if (isGateway && !gateway.empty()) {
    return ShownText::Sentence(Translated("The gateway “{gateway}” asks you to log on."),
                               {{"gateway", gateway}});
  }
  if (isGateway) return Translated("A gateway asks you to log on.");
  if (store.empty()) return Translated("A store asks you to log on.");
  return ShownText::Sentence(Translated("The store “{store}” asks you to log on."), {{"store", store}});
}

void AddUnlessEmpty(std::vector<Fact>& facts, const char* caption, const std::string& value) {
  if (!value.empty()) facts.push_back({caption, value});
}

}  // namespace

LogOnQuestion LogOnQuestion::Of(const Dictionary& details) {
  const std::string knownUserName = ShownText::Name(Details::Text(details, "KnownUserName"));
  LogOnQuestion question;
  question.introduction = IntroductionOf(details);
  const std::string server = Details::Text(details, "Server");
  question.host = ShownText::HostOf(server);
  question.userName = Details::Text(details, "RejectedUserName");
  question.needsPassword = knownUserName.empty();
  question.needsCode = Details::Mark(details, "NeedsCode");
  question.canRemember = question.needsPassword && Details::Mark(details, "CanRemember");
  if (Details::Mark(details, "WasRejected")) {
    question.hint = Translated("The last answer was not accepted.");
  } else if (!question.needsPassword) {
    question.hint = Translated("Your user name and password are kept. A new code is needed.");
  }
  AddUnlessEmpty(question.facts, Translated("Server"), ShownText::Whole(server));
  AddUnlessEmpty(question.facts, Translated("What the password is for"),
                 ShownText::Name(Details::Text(details, "Realm")));
  AddUnlessEmpty(question.facts, Translated("User name"), knownUserName);
  return question;
}

}  // namespace Dialogs
