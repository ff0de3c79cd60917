#pragma once

#include "libs/Bus/SdBus.h"

#include <exception>
#include <string>

// The edge between the bus library's C callbacks and the services: nothing thrown inside passes it. The
// handler answers the bus library's negative error code on failure.
template <class Handler>
int AnswerCall(sd_bus_error* error, Handler handler) noexcept {
  try {
    return handler();
  } catch (const std::exception& exception) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, exception.what());
  } catch (...) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, "internal error");
  }
}

// The next argument of the call, which its signature says is text. Throws std::system_error when it is not.
[[nodiscard]] std::string ReadText(sd_bus_message* call);

// An empty reply to the call. Throws std::system_error.
[[nodiscard]] BusMessagePtr NewReply(sd_bus_message* call);

// Answers the call with what `append` writes into the reply.
template <class Append>
int ReplyWith(sd_bus_message* call, Append append) {
  const BusMessagePtr reply = NewReply(call);
  if (const int result = append(reply.get()); result < 0) return result;
  return sd_bus_send(nullptr, reply.get(), nullptr);
}

// Whether a program on the bus owns the name; false when the bus does not answer.
[[nodiscard]] bool NameHasOwner(sd_bus& bus, const char* name);

// Handles what has arrived by now, however much goes on coming. Waits for the bus to answer.
void ProcessArrived(sd_bus& bus);

// Puts an interface on a connection for as long as the slot lives; null on failure.
[[nodiscard]] BusSlotPtr AddInterface(sd_bus& bus, const char* path, const char* interface,
                                      const sd_bus_vtable* table, void* object);
