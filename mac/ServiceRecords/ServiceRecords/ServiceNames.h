#pragma once

// The names by which other programs find the agent on the session bus and on the desktop.
namespace ServiceNames {

inline constexpr char kBeacons[] = "com.morvane.Beacons";
inline constexpr char kBeaconsPath[] = "/com/morvane/Beacons";
inline constexpr char kBeaconsInterface[] = "com.morvane.MrvBeaconService";

// Also the application's identifier, and so the name of its desktop entry.
inline constexpr char kServiceRecords[] = "com.morvane.ServiceRecords";
inline constexpr char kServiceRecordsPath[] = "/com/morvane/ServiceRecords";
inline constexpr char kServiceRecordsInterface[] = "com.morvane.MrvServiceRecordsService";

inline constexpr char kApplicationInterface[] = "org.freedesktop.Application";

}  // namespace ServiceNames
