#pragma once

#include <string>

// The names by which other programs and the agent find one another on the session bus and on the desktop.
namespace Bus::ServiceNames {

inline constexpr char kBeacons[] = "com.morvane.Beacons";
inline constexpr char kBeaconsPath[] = "/com/morvane/Beacons";
inline constexpr char kBeaconsInterface[] = "com.morvane.MrvBeaconService";

// Also the application's identifier, and so the name of its desktop entry.
inline constexpr char kServiceRecords[] = "com.morvane.ServiceRecords";
inline constexpr char kServiceRecordsPath[] = "/com/morvane/ServiceRecords";
inline constexpr char kServiceRecordsInterface[] = "com.morvane.MrvServiceRecordsService";

// What becomes of an opened file, and of the list: also the names of its signals.
inline constexpr char kOpeningsPath[] = "/com/morvane/ServiceRecords/Openings";
inline constexpr char kOpeningsInterface[] = "com.morvane.ServiceRecords.Openings";
inline constexpr char kFinishedSignal[] = "Finished";
inline constexpr char kStoresChangedSignal[] = "StoresChanged";

// The stores window: its bus name, application identifier and desktop entry, and the action that shows one
// store, of which it takes the id.
inline constexpr char kStoresWindow[] = "com.morvane.ServiceRecords.Stores";
inline constexpr char kStoresWindowPath[] = "/com/morvane/ServiceRecords/Stores";
inline constexpr char kShowStoreAction[] = "show-store";

inline constexpr char kApplicationInterface[] = "org.freedesktop.Application";

// Where distributed notifications come from, whoever posts them: the signal Posted(s name, s object).
inline constexpr char kNotificationsPath[] = "/com/morvane/DistributedNotifications";
inline constexpr char kNotificationsInterface[] = "com.morvane.DistributedNotifications";

// What sd_bus_add_match takes for the notifications of that name.
[[nodiscard]] inline std::string NotificationMatch(const std::string& name) {
  return std::string("type='signal',interface='") + kNotificationsInterface + "',member='Posted',arg0='" +
         name + "'";
}

inline constexpr char kStoresUpdatedNotification[] = "MRVServiceRecordStoresUpdated";
inline constexpr char kStoresUpdatedObject[] = "MRVServiceRecord";
// Its object is the URL of the store relative to which the machine's location has changed.
inline constexpr char kLocationChangedNotification[] = "MRVNetworkLocationChanged";
inline constexpr char kLoggingNotification[] =
    "com.morvane.quillon.ServiceRecordsLoggingConfigurationDidChange";

}  // namespace Bus::ServiceNames
