#include "DialogConversation.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

namespace {

bool WouldBlock(int error) {
  return error == EAGAIN || error == EINTR;
}

}  // namespace

DialogConversation::DialogConversation(HelperProcess program, std::string request, int terminationDescriptor)
    : program_(std::move(program)),
      request_(std::move(request)),
      terminationDescriptor_(terminationDescriptor) {
  reply_.reserve(DialogWire::kMaximumReply);
}

std::optional<DialogWire::Reply> DialogConversation::AwaitReply() {
  while (Wait()) {
    SendSome();
    ReadSome();
    if (const std::size_t end = reply_.find('\n'); end != std::string::npos) {
      return DialogWire::ReplyOf(std::string_view(reply_).substr(0, end));
    }
    if (!outputOpen_ || ended_ || reply_.size() >= DialogWire::kMaximumReply) return std::nullopt;
  }
  return std::nullopt;
}

void DialogConversation::AwaitEnd() {
  while (!ended_ && Wait()) {
    SendSome();
    ReadSome();
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

void DialogConversation::SendSome() {
  if (sent_ == request_.size()) return;
  const std::string_view rest = std::string_view(request_).substr(sent_);
  const ssize_t count = ::send(program_.Input(), rest.data(), rest.size(), MSG_NOSIGNAL);
  if (count >= 0) {
    sent_ += static_cast<std::size_t>(count);
  } else if (!WouldBlock(errno)) {
    // A program that reads no further may still answer.
    sent_ = request_.size();
  }
}

void DialogConversation::ReadSome() {
  if (!outputOpen_) return;
  std::array<char, DialogWire::kMaximumReply> buffer;
  const ssize_t count = ::read(program_.Output(), buffer.data(), buffer.size() - reply_.size());
  if (count > 0) {
    reply_.append(buffer.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || !WouldBlock(errno)) {
    outputOpen_ = false;
  }
}
