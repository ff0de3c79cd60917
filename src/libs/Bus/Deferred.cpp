#include "libs/Bus/Deferred.h"

#include <system_error>

namespace Bus {
namespace {

BusMessagePtr Made(int result, sd_bus_message* message) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), "making a reply");
  return BusMessagePtr(message);
}

BusMessagePtr NewReply(sd_bus_message* call) {
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_message_new_method_return(call, &reply);
  return Made(result, reply);
}

// Its text is appended when there is one.
BusMessagePtr NewFailure(sd_bus_message* call) {
  const sd_bus_error failed{SD_BUS_ERROR_FAILED, nullptr, 0};
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_message_new_method_error(call, &reply, &failed);
  return Made(result, reply);
}

}  // namespace

Answers::Answers(sd_bus_message* call) : reply_(NewReply(call)), failure_(NewFailure(call)) {}

std::string Answers::Caller() const {
  const char* const destination = sd_bus_message_get_destination(reply_.Get());
  return destination == nullptr ? "" : destination;
}

void Answers::Send(const Result<>& result) const {
  if (!result) sd_bus_message_append_basic(failure_.Get(), 's', result.Failure().text.c_str());
  sd_bus_send(nullptr, (result ? reply_ : failure_).Get(), nullptr);
}

}  // namespace Bus
