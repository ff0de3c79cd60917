#include "libs/Desktop/DesktopIntegration.h"

#include "libs/Bus/ServiceNames.h"
#include "libs/Lifetime/UniqueHandle.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <string_view>

namespace Desktop {
namespace {

constexpr std::string_view kContentType = "application/vnd.morvane.servicerecord+xml";

using AppInfoPtr = Lifetime::UniqueHandle<GAppInfo, g_object_unref>;
using BusPtr = Lifetime::UniqueHandle<GDBusConnection, g_object_unref>;
using TextPtr = Lifetime::UniqueHandle<gchar, g_free>;

std::string DesktopEntry(const std::string& identifier) {
  return identifier + ".desktop";
}

AppInfoPtr FindApplication(const std::string& identifier) {
  return AppInfoPtr(reinterpret_cast<GAppInfo*>(g_desktop_app_info_new(DesktopEntry(identifier).c_str())));
}

TextPtr TypeOf(const std::string& suffix) {
  return TextPtr(g_content_type_guess(("file." + suffix).c_str(), nullptr, 0, nullptr));
}

std::string HandlerOf(const gchar* type) {
  const AppInfoPtr handler(g_app_info_get_default_for_type(type, FALSE));
  const char* const entry = handler == nullptr ? nullptr : g_app_info_get_id(handler.get());
  return entry == nullptr ? "" : entry;
}

}  // namespace

bool BecomeDefaultHandler(const std::string& suffix) {
  if (suffix.empty()) return false;
  const TextPtr type = TypeOf(suffix);
  // The type of another application is not ours to take.
  if (type == nullptr || type.get() != kContentType) return false;
  if (HandlerOf(type.get()) == DesktopEntry(Bus::ServiceNames::kServiceRecords)) return true;
  const AppInfoPtr self = FindApplication(Bus::ServiceNames::kServiceRecords);
  return self != nullptr && g_app_info_set_as_default_for_type(self.get(), type.get(), nullptr) == TRUE;
}

std::string DefaultHandler(const std::string& suffix) {
  const TextPtr type = TypeOf(suffix);
  return type == nullptr ? "" : HandlerOf(type.get());
}

bool LaunchApplication(const std::string& identifier) {
  const AppInfoPtr application = FindApplication(identifier);
  if (application == nullptr) return false;
  const BusPtr bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (g_app_info_launch(application.get(), nullptr, nullptr, nullptr) != TRUE) return false;
  // An application that the bus activates is launched once the message has gone out.
  return bus == nullptr || g_dbus_connection_flush_sync(bus.get(), nullptr, nullptr) == TRUE;
}

std::optional<std::string> LocalPath(const std::string& uri) {
  gchar* hostText = nullptr;
  const TextPtr path(g_filename_from_uri(uri.c_str(), &hostText, nullptr));
  const TextPtr host(hostText);
  const bool isLocal = host == nullptr || *host == '\0' || g_ascii_strcasecmp(host.get(), "localhost") == 0;
  return path != nullptr && isLocal ? std::optional<std::string>(path.get()) : std::nullopt;
}

}  // namespace Desktop
