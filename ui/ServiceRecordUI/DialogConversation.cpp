#include "DialogConversation.h"

#include <array>
#include <span>
#include <string_view>
#include <utility>

namespace Dialogs {

DialogConversation::DialogConversation(HelperProgram::HelperProcess program, std::string request,
                                       int interruption, int furtherInterruption)
    : conversation_(std::move(program), interruption, furtherInterruption), request_(std::move(request)) {
  reply_.reserve(DialogWire::kMaximumReply);
}

std::optional<DialogWire::Reply> DialogConversation::AwaitReply() {
  while (!isOver_) {
    if (const std::optional<DialogWire::Reply> reply = TakeReply()) return reply;
    if (isOver_ || !conversation_.Continue(request_)) return std::nullopt;
    Read();
    const bool isWhole = reply_.find('\n') != std::string::npos;
    isOver_ = !isWhole && (conversation_.IsOver() || reply_.size() >= DialogWire::kMaximumReply);
  }
  return std::nullopt;
}

std::optional<DialogWire::Reply> DialogConversation::TakeReply() {
  const std::size_t end = reply_.find('\n');
  if (end == std::string::npos) return std::nullopt;
  const std::optional<DialogWire::Reply> reply = DialogWire::ReplyOf(std::string_view(reply_).substr(0, end));
  reply_.erase(0, end + 1);
  isOver_ = !reply;
  return reply;
}

void DialogConversation::Read() {
  std::array<char, DialogWire::kMaximumReply> buffer;
  const std::span<char> free = std::span(buffer).first(buffer.size() - reply_.size());
  reply_.append(buffer.data(), conversation_.ReadSome(free));
}

}  // namespace Dialogs
