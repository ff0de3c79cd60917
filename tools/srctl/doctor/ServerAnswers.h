#pragma once

#include "doctor/ServerCheck.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <future>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace Srctl {

// What the servers of one store answer. All are asked from the beginning on, several at once, and each once,
// however many addresses lie on it. Used by one thread, which asks itself where nobody else does yet; its end
// waits until all are asked.
class ServerAnswers {
 public:
  // The addresses, one at least, in the order in which their answers are wanted, UTF-8.
  explicit ServerAnswers(const std::vector<std::string>& urls);

  // The same text for addresses of the same scheme, host and port.
  [[nodiscard]] static std::string ServerOf(const std::string& url);

  // Of the server of one of the addresses. Waits for it.
  [[nodiscard]] const ServerCheck::Answer& Of(const std::string& url);

 private:
  struct Question {
    // By whoever comes first.
    void Ask();

    std::atomic_flag isTaken;
    std::packaged_task<ServerCheck::Answer()> ask;
    std::shared_future<ServerCheck::Answer> answer;
  };

  std::map<std::string, std::size_t> places_;  // by server
  std::deque<Question> questions_;
  std::vector<std::jthread> helpers_;  // the last to come: they use the rest
};

}  // namespace Srctl
