#include "Dialogs/ServerLabel.h"

#include "libs/Address/SendingForm.h"
#include "libs/Address/SplitURL.h"
#include "libs/Desktop/HostName.h"

namespace Agent {

ServerLabel::ServerLabel(const std::string& url) {
  const Address::SplitURL own(url);
  const Address::SendingForm form = Address::FormForSending(own, own.WithoutPage());
  const bool isAsked = form.reading == Address::Reading::Same;
  asciiHost = isAsked ? Address::SplitURL(form.text).server : own.server;
  host = isAsked ? Desktop::UnicodeHostName(asciiHost) : own.server;
  if (own.port != own.DefaultPort()) port = own.port;
}

std::string ServerLabel::WithPort() const {
  return port.empty() ? host : host + ":" + port;
}

}  // namespace Agent
