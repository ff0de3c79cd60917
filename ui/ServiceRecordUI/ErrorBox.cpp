#include "ErrorBox.h"

#include "DialogProgram.h"
#include "ErrorLog.h"
#include "libs/DialogWire/DialogWire.h"

#include <poll.h>

#include <optional>
#include <utility>

namespace Dialogs {
namespace {

constexpr int kNoTerminal = -1;

}  // namespace

ErrorBox::Adding ErrorBox::Add(std::string details) {
  const ThreadSafety::MutexLock lock(mutex_);
  if (isClosed_) return Adding::Closed;
  if (messages_.size() == kMostMessages) return Adding::Full;
  messages_.push_back(std::move(details));
  news_.Raise();
  return Adding::Taken;
}

void ErrorBox::Keep() noexcept {
  try {
    while (!IsTerminating() && !IsDone() && ShowMessages()) {
    }
    const std::vector<std::string> rest = Close();
    // What fails because the agent ends is no news.
    if (IsTerminating()) return;
    for (const std::string& details : rest) ErrorLog::Write(ErrorLog::kNotShown, details);
  } catch (...) {
    static_cast<void>(Close());
  }
}

bool ErrorBox::IsClosed() {
  const ThreadSafety::MutexLock lock(mutex_);
  return isClosed_;
}

bool ErrorBox::IsDone() {
  const ThreadSafety::MutexLock lock(mutex_);
  isClosed_ = shown_ == messages_.size();
  return isClosed_;
}

bool ErrorBox::ShowMessages() {
  for (const DialogProgram& program : DialogProgram::For(kNoTerminal, desktop_)) {
    if (ShowBy(program)) return true;
  }
  return false;
}

bool ErrorBox::ShowBy(const DialogProgram& program) {
  std::optional<DialogConversation> conversation = program.Begin({}, termination_, news_.Descriptor());
  if (!conversation) return false;
  std::size_t said = Shown();
  bool hasShown = false;
  while (!conversation->IsOver() && !IsTerminating()) {
    SayMore(*conversation, said);
    const std::optional<DialogWire::Reply> reply = conversation->AwaitReply();
    if (!reply) continue;
    if (*reply != DialogWire::Reply::Accepted) break;
    CountShown();
    hasShown = true;
  }
  return hasShown;
}

void ErrorBox::SayMore(DialogConversation& conversation, std::size_t& said) {
  news_.Clear();
  const ThreadSafety::MutexLock lock(mutex_);
  for (; said < messages_.size(); ++said) {
    conversation.Append(DialogWire::RequestFor(DialogWire::kErrorMessage, messages_[said]));
  }
}

std::size_t ErrorBox::Shown() {
  const ThreadSafety::MutexLock lock(mutex_);
  return shown_;
}

void ErrorBox::CountShown() {
  const ThreadSafety::MutexLock lock(mutex_);
  if (shown_ < messages_.size()) ++shown_;
}

bool ErrorBox::IsTerminating() const {
  pollfd state{termination_, POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}

std::vector<std::string> ErrorBox::Close() {
  const ThreadSafety::MutexLock lock(mutex_);
  isClosed_ = true;
  return {messages_.begin() + static_cast<std::ptrdiff_t>(shown_), messages_.end()};
}

}  // namespace Dialogs
