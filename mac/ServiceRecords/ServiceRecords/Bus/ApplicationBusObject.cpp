#include "Bus/ApplicationBusObject.h"

#include "libs/Bus/ServiceNames.h"
#include "libs/Desktop/DesktopIntegration.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/SystemLog.h"

#include <optional>
#include <vector>

namespace {

// The array of URIs at the start of an Open call.
std::vector<std::string> ReadURIs(sd_bus_message* call) {
  std::vector<std::string> uris;
  const char* uri = nullptr;
  if (sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "s") < 0) return uris;
  while (sd_bus_message_read_basic(call, SD_BUS_TYPE_STRING, &uri) > 0) uris.emplace_back(uri);
  return uris;
}

// What is left of a name that is not UTF-8 may be the name of another file.
bool HasUsableName(const std::string& path) {
  if (util::IsUTF8(path)) return true;
  SystemLog::Error("the name of \"" + util::narrow(util::widen(path)) +
                   "\" is not UTF-8; rename the file and open it again");
  return false;
}

}  // namespace

const sd_bus_vtable ApplicationBusObject::kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data), SD_BUS_NO_RESULT, Activate,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("Open", SD_BUS_ARGS("as", uris, "a{sv}", platform_data), SD_BUS_NO_RESULT, Open,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("ActivateAction",
                            SD_BUS_ARGS("s", action_name, "av", parameter, "a{sv}", platform_data),
                            SD_BUS_NO_RESULT, ActivateAction, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

bool ApplicationBusObject::Serve(sd_bus& bus) {
  slot_ = AddInterface(bus, ServiceNames::kServiceRecordsPath, ServiceNames::kApplicationInterface, kMethods,
                       this);
  return slot_ != nullptr;
}

// The agent has no window to bring forward.
int ApplicationBusObject::Activate(sd_bus_message* call, void* /*self*/, sd_bus_error* error) {
  return AnswerCall(error, [call] { return sd_bus_reply_method_return(call, nullptr); });
}

int ApplicationBusObject::Open(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    for (const std::string& uri : ReadURIs(call)) {
      if (const auto path = DesktopIntegration::LocalPath(uri); path && HasUsableName(*path)) {
        static_cast<ApplicationBusObject*>(self)->openFile_(*path);
      }
    }
    return sd_bus_reply_method_return(call, nullptr);
  });
}

int ApplicationBusObject::ActivateAction(sd_bus_message* /*call*/, void* /*self*/, sd_bus_error* error) {
  return sd_bus_error_set(error, SD_BUS_ERROR_NOT_SUPPORTED, "the agent has no actions");
}
