#include "libs/Bus/Message.h"

namespace Bus {

std::string Message::Sender() const {
  const char* const sender = sd_bus_message_get_sender(message_.get());
  return sender == nullptr ? "" : sender;
}

bool Message::IsSignal(const char* interface, const char* member) const {
  return sd_bus_message_is_signal(message_.get(), interface, member) > 0;
}

Result<PropertyList::Array> Message::Values() const {
  PropertyList::Array values;
  int result = sd_bus_message_rewind(message_.get(), 1);
  while (result >= 0 && !Container::IsAtEnd(message_.get())) {
    std::optional<PropertyList::Value> value;
    result = ReadValue(message_.get(), value);
    if (value) values.push_back(std::move(*value));
  }
  if (result < 0) return Error::OfResult(result);
  return values;
}

}  // namespace Bus
