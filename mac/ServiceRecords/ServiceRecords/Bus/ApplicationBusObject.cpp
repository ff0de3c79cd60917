#include "Bus/ApplicationBusObject.h"

#include "libs/Bus/ServiceNames.h"
#include "libs/Desktop/DesktopIntegration.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/SystemLog.h"

#include <optional>
#include <vector>

namespace Agent {
namespace {

using PropertyList::Dictionary;
using PropertyList::Value;

void LogRefusal(const std::string& path) {
  trace::SystemLog::Error("the name of \"" + util::narrow(util::widen(path)) +
                          "\" is not UTF-8; rename the file and open it again");
}

}  // namespace

Bus::Result<> ApplicationBusObject::Serve(Bus::Connection& bus) {
  Bus::Interface interface(Bus::ServiceNames::kApplicationInterface);
  // The agent has no window to bring forward.
  interface.Method("Activate", {"platform_data"}, {}, [](const Dictionary& /*platformData*/) {});
  interface.Method(
      "Open", {"uris", "platform_data"}, {},
      [this](const std::vector<std::string>& uris, const Dictionary& /*platformData*/) { Open(uris); });
  interface.Method("ActivateAction", {"action_name", "parameter", "platform_data"}, {},
                   [](const std::string& /*name*/, const std::vector<Value>& /*parameter*/,
                      const Dictionary& /*platformData*/) -> Bus::Result<> {
                     return Bus::Error::NotSupported("the agent has no actions");
                   });
  return Bus::Keep(object_, bus.Serve(Bus::ServiceNames::kServiceRecordsPath, std::move(interface)));
}

void ApplicationBusObject::Open(const std::vector<std::string>& uris) const {
  for (const std::string& uri : uris) {
    const auto path = Desktop::LocalPath(uri);
    if (!path) continue;
    if (util::IsUTF8(*path)) {
      openFile_(*path);
    } else {
      // What is left of such a name may be the name of another file.
      LogRefusal(*path);
      refuse_(*path);
    }
  }
}

}  // namespace Agent
