#include "Bus/BeaconsBusObject.h"

#include "Bus/BusMarshalling.h"
#include "MrvBeaconSvr.h"
#include "libs/Bus/ServiceNames.h"

const sd_bus_vtable BeaconsBusObject::kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("checkLocationForStore", SD_BUS_ARGS("s", storeURL), SD_BUS_RESULT("t", location),
                            CheckLocation, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("explainLocationForStore", SD_BUS_ARGS("s", storeURL),
                            SD_BUS_RESULT("t", location, "s", reason), ExplainLocation,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("getCurrentGatewayForStore", SD_BUS_ARGS("s", storeURL),
                            SD_BUS_RESULT("a{sv}", gateway), CurrentGateway, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("networkReachabilityFlags", SD_BUS_NO_ARGS, SD_BUS_RESULT("u", flags),
                            ReachabilityFlags, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

bool BeaconsBusObject::Serve(sd_bus& bus) {
  slot_ = AddInterface(bus, ServiceNames::kBeaconsPath, ServiceNames::kBeaconsInterface, kMethods, this);
  return slot_ != nullptr;
}

int BeaconsBusObject::CheckLocation(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    const auto storeURL = ReadText(call);
    return sd_bus_reply_method_return(
        call, "t", static_cast<BeaconsBusObject*>(self)->service_.checkLocationForStore(storeURL));
  });
}

int BeaconsBusObject::ExplainLocation(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    auto& service = static_cast<BeaconsBusObject*>(self)->service_;
    const LocationExplanation explanation = service.explainLocationForStore(ReadText(call));
    return sd_bus_reply_method_return(call, "ts", explanation.location, explanation.reason.c_str());
  });
}

int BeaconsBusObject::CurrentGateway(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    auto& service = static_cast<BeaconsBusObject*>(self)->service_;
    return ReplyWithDictionary(call, service.getCurrentGatewayForStore(ReadText(call)));
  });
}

int BeaconsBusObject::ReachabilityFlags(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    return sd_bus_reply_method_return(
        call, "u", static_cast<BeaconsBusObject*>(self)->service_.networkReachabilityFlags());
  });
}
