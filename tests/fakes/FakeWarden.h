#pragma once

#include "SRLib/Platform/WardenFunctions.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace TestSupport {

// An authentication manager whose functions are answered by a script as long as this object lives. Any
// thread, for requests that do not overlap.
class FakeWarden {
 public:
  FakeWarden();
  ~FakeWarden();
  FakeWarden(const FakeWarden&) = delete;
  FakeWarden& operator=(const FakeWarden&) = delete;

  [[nodiscard]] static ServiceRecords::WardenFunctions Functions();

  // The next pass sends a request to this URL with these header lines.
  void Send(const std::wstring& url, const std::vector<std::wstring>& lines = {});
  // The next pass ends the request with this action. After the script's end every pass does, with action 3.
  void EndWith(std::uint32_t action);

  // The calls so far, each the function's name without its prefix and its arguments.
  [[nodiscard]] std::vector<std::string> Calls() const;
  // The same without the calls that every request makes at its begin and end.
  [[nodiscard]] std::vector<std::string> PassCalls() const;
};

}  // namespace TestSupport
