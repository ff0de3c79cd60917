#pragma once

#include <string>
#include <string_view>

// Error messages that are in no box. Any thread.
namespace Dialogs::ErrorLog {

inline constexpr std::string_view kTooMany = "Too many error messages are open for this one";
inline constexpr std::string_view kNotShown = "This error message could not be shown";

// Writes what an error dialog's details tell (title, message, reason, and the store, server and file that it
// is about) into the system log, as one line behind the reason why there is no box.
void Write(std::string_view reason, const std::string& details);

}  // namespace Dialogs::ErrorLog
