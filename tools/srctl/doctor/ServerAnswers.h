#pragma once

#include "doctor/ServerCheck.h"

#include <atomic>
#include <cstddef>
#include <future>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace Srctl {

// What the servers of one store answer. All are asked from the beginning on, several at once, and each once,
// however many addresses lie on it. Used by one thread; its end waits for those that are being asked.
class ServerAnswers {
 public:
  // The addresses in the order in which their answers are wanted, UTF-8.
  explicit ServerAnswers(const std::vector<std::string>& urls);

  // The same text for addresses of the same scheme, host and port.
  [[nodiscard]] static std::string ServerOf(const std::string& url);

  // Of the server of one of the addresses. Waits for it.
  [[nodiscard]] const ServerCheck::Answer& Of(const std::string& url) const;

 private:
  struct Question {
    std::packaged_task<ServerCheck::Answer()> ask;
    std::shared_future<ServerCheck::Answer> answer;
  };

  void Work();

  std::map<std::string, std::size_t> places_;  // by server
  std::vector<Question> questions_;
  std::atomic<std::size_t> next_ = 0;
  std::vector<std::jthread> threads_;  // the last to come: they use the rest
};

}  // namespace Srctl
