#include "DialogConversation.h"

#include <poll.h>

#include <array>
#include <cerrno>
#include <span>
#include <string_view>
#include <utility>

DialogConversation::DialogConversation(HelperProcess program, std::string request, int terminationDescriptor)
    : program_(std::move(program)),
      request_(std::move(request)),
      terminationDescriptor_(terminationDescriptor) {
  reply_.reserve(DialogWire::kMaximumReply);
}

std::optional<DialogWire::Reply> DialogConversation::AwaitReply() {
  while (Wait()) {
    Exchange();
    if (const std::size_t end = reply_.find('\n'); end != std::string::npos) {
      return DialogWire::ReplyOf(std::string_view(reply_).substr(0, end));
    }
    if (!outputOpen_ || ended_ || reply_.size() >= DialogWire::kMaximumReply) return std::nullopt;
  }
  return std::nullopt;
}

void DialogConversation::AwaitEnd() {
  reply_.clear();
  while (!ended_ && Wait()) {
    Exchange();
    reply_.clear();
  }
}

bool DialogConversation::Wait() {
  const bool unsent = sent_ < request_.size();
  std::array<pollfd, 4> events{{{terminationDescriptor_, POLLIN, 0},
                                {program_.Ended(), POLLIN, 0},
                                {outputOpen_ ? program_.Output() : -1, POLLIN, 0},
                                {unsent ? program_.Input() : -1, POLLOUT, 0}}};
  while (::poll(events.data(), events.size(), -1) < 0) {
    if (errno != EINTR) return false;
  }
  ended_ = events[1].revents != 0;
  return events[0].revents == 0;
}

void DialogConversation::Exchange() {
  sent_ += program_.SendSome(std::string_view(request_).substr(sent_));
  if (!outputOpen_) return;
  std::array<char, DialogWire::kMaximumReply> buffer;
  const std::optional<std::size_t> count =
      program_.ReadSome(std::span(buffer).first(buffer.size() - reply_.size()));
  outputOpen_ = count.has_value();
  reply_.append(buffer.data(), count.value_or(0));
}
