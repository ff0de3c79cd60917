#pragma once

#include <optional>
#include <string>

// What the desktop knows of files and applications. Synchronous, main thread.
namespace Desktop {

// Makes this application the default handler of the files with that suffix. The user's association is written
// only when it names another handler. False for an empty suffix, a suffix whose type the desktop does not
// know as this application's, or an error.
[[nodiscard]] bool BecomeDefaultHandler(const std::string& suffix);

// The desktop entry ("com.example.Viewer.desktop") with which the desktop opens files with that suffix; empty
// when it has none.
[[nodiscard]] std::string DefaultHandler(const std::string& suffix);

// Launches the application with this identifier by its desktop entry, without waiting for it. False when
// there is no such entry or it cannot be started. Leaves threads of the desktop's library behind.
[[nodiscard]] bool LaunchApplication(const std::string& identifier);

// The local path of a file URI, as bytes of the file system; nothing for any other URI, and for a file of
// another host than this one, which is no host or "localhost".
[[nodiscard]] std::optional<std::string> LocalPath(const std::string& uri);

}  // namespace Desktop
