#include "DialogConversation.h"

#include <array>
#include <span>
#include <string_view>
#include <utility>

DialogConversation::DialogConversation(HelperProcess program, std::string request, int termination,
                                       int withdrawal)
    : conversation_(std::move(program), termination, withdrawal), request_(std::move(request)) {
  reply_.reserve(DialogWire::kMaximumReply);
}

std::optional<DialogWire::Reply> DialogConversation::AwaitReply() {
  while (conversation_.Continue(request_)) {
    Read();
    if (const std::size_t end = reply_.find('\n'); end != std::string::npos) {
      return DialogWire::ReplyOf(std::string_view(reply_).substr(0, end));
    }
    if (conversation_.IsOver() || reply_.size() >= DialogWire::kMaximumReply) return std::nullopt;
  }
  return std::nullopt;
}

void DialogConversation::AwaitEnd() {
  reply_.clear();
  while (!conversation_.HasEnded() && conversation_.Continue(request_)) {
    Read();
    reply_.clear();
  }
}

void DialogConversation::Read() {
  std::array<char, DialogWire::kMaximumReply> buffer;
  const std::span<char> free = std::span(buffer).first(buffer.size() - reply_.size());
  reply_.append(buffer.data(), conversation_.ReadSome(free));
}
