#pragma once

#include <string>
#include <string_view>
#include <vector>

// Text that somebody else wrote, made fit for a window (UTF-8). Toolkit-free; any thread.
namespace Windows::ShownText {

// What is shown of a name, in characters.
inline constexpr std::size_t kLongestName = 200;

// The whole text as one line: hidden characters stand as "<U+202E>", runs of blanks are one, and none is at
// the ends.
[[nodiscard]] std::string Whole(std::string_view foreign);
// The same, cut where it is longer than a name may be; ends in an ellipsis then.
[[nodiscard]] std::string Name(std::string_view foreign);
// The whole text so that no other one looks the same: each blank but a single space between words stands as
// its code, too, and what could pass for a code does.
[[nodiscard]] std::string Exact(std::string_view foreign);
// A text of several lines, each as a whole.
[[nodiscard]] std::string Lines(std::string_view foreign);

// The shown text between FSI and PDI, so that its direction is nothing to the sentence around it; each line
// for itself.
[[nodiscard]] std::string Isolated(std::string_view shown);

// A sentence of ours with the places "{name}" filled in: each by a text that was made fit, isolated. A place
// that is not named stays.
struct Place {
  std::string_view name;
  std::string_view shown;
};
[[nodiscard]] std::string Sentence(std::string_view pattern, const std::vector<Place>& places);

// What a person takes for the server of the address: its host, made fit and never cut. Empty without an
// address.
[[nodiscard]] std::string HostOf(std::string_view url);
// The same with the port behind it, where it is not the one that the scheme stands for.
[[nodiscard]] std::string ServerOf(std::string_view url);

}  // namespace Windows::ShownText
