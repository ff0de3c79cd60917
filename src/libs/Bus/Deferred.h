#pragma once

#include "libs/Bus/Callback.h"
#include "libs/Bus/Message.h"

#include <string>
#include <utility>

namespace Bus {

// Answers to one call, of which one is sent: its reply, and its failure. Both are made when the call arrives,
// because the call may be large and is not kept. Throws std::system_error when they cannot be made.
class Answers {
 public:
  explicit Answers(sd_bus_message* call);

  // The caller's unique name.
  [[nodiscard]] std::string Caller() const;
  [[nodiscard]] sd_bus_message* Reply() const { return reply_.Get(); }

  // Sends the reply, or the failure where `result` is an error.
  void Send(const Result<>& result) const;

 private:
  Message reply_;
  Message failure_;
};

// A call whose results follow, once. A handle: copies are the same call. Of the connection's thread.
template <class... Results>
class Deferred {
 public:
  explicit Deferred(sd_bus_message* call) : answers_(call) {}

  [[nodiscard]] std::string Caller() const { return answers_.Caller(); }

  void Answer(const Results&... results) const {
    answers_.Send(ResultOf(AppendAll(answers_.Reply(), results...)));
  }

  // With what `work` gives. Where it throws, the call fails.
  template <class Work>
  void AnswerWith(const Work& work) const {
    Try([&] { Answer(work()); });
  }

  // Runs the work, which answers now or later. Where it throws, the call fails.
  template <class Work>
  void Try(const Work& work) const {
    const Result<> result = Caught([&]() -> Result<> {
      work();
      return Nothing{};
    });
    if (!result) answers_.Send(result);
  }

 private:
  Answers answers_;
};

}  // namespace Bus
