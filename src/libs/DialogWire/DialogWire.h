#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

// What a dialog program and whoever starts it say to each other. One request goes to the program's standard
// input: a header line "ServiceRecordUI <version> <dialog> <byte count>\n", then that many bytes of an XML
// property list; the input stays open while the dialog may. The program writes one reply line to its standard
// output. The one that asks on a terminal may be given it as a descriptor, whose number is its only argument.
namespace DialogWire {

// The programs, in the plug-in's bundle.
inline constexpr const char* kTerminalProgram = "servicerecord-dialog";
inline constexpr const char* kWindowProgram = "servicerecord-dialog-window";

inline constexpr std::string_view kHeaderWord = "ServiceRecordUI";
inline constexpr std::uint32_t kVersion = 1;

inline constexpr std::string_view kAddStore = "addStore";
inline constexpr std::string_view kReplaceStore = "replaceStore";
inline constexpr std::string_view kErrorMessage = "errorMessage";
// Not of the module: asks for a log-on, and what the user types follows the reply "accepted" as a message of
// the credential program's words (username, password, code, remember).
inline constexpr std::string_view kLogOn = "logOn";

enum class Reply { Accepted, Declined, NoDisplay, UnknownRequest };

struct ReplyLine {
  Reply reply;
  std::string_view text;  // without the line's end
};
inline constexpr std::array<ReplyLine, 4> kReplyLines{{{Reply::Accepted, "accepted"},
                                                       {Reply::Declined, "declined"},
                                                       {Reply::NoDisplay, "no display"},
                                                       {Reply::UnknownRequest, "unknown request"}}};

// The longest reply line, its end included.
inline constexpr std::size_t kMaximumReply = 64;

// Nothing when the line, without its end, is none of the replies.
[[nodiscard]] inline std::optional<Reply> ReplyOf(std::string_view line) {
  for (const ReplyLine& known : kReplyLines) {
    if (known.text == line) return known.reply;
  }
  return std::nullopt;
}

[[nodiscard]] inline std::string LineOf(Reply reply) {
  for (const ReplyLine& known : kReplyLines) {
    if (known.reply == reply) return std::string(known.text) + '\n';
  }
  return {};
}

[[nodiscard]] inline std::string RequestFor(std::string_view dialog, std::string_view details) {
  std::string request(kHeaderWord);
  request += ' ' + std::to_string(kVersion) + ' ';
  request += dialog;
  request += ' ' + std::to_string(details.size()) + '\n';
  return request += details;
}

// The only argument of the one with windows where it is to reply, without a request, whether it can show any.
inline constexpr std::string_view kDisplayOption = "--display";

inline constexpr std::string_view kTerminalOption = "--terminal=";

[[nodiscard]] inline std::string TerminalArgument(int descriptor) {
  return std::string(kTerminalOption) + std::to_string(descriptor);
}

// Nothing when the argument names no descriptor.
[[nodiscard]] inline std::optional<int> TerminalOf(std::string_view argument) {
  if (!argument.starts_with(kTerminalOption)) return std::nullopt;
  const std::string_view number = argument.substr(kTerminalOption.size());
  int descriptor = -1;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), descriptor);
  if (error != std::errc() || end != number.data() + number.size() || descriptor < 0) return std::nullopt;
  return descriptor;
}

}  // namespace DialogWire
