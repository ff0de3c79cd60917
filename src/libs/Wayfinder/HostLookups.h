#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Wayfinding {

// One name lookup. Any thread.
class HostLookup;

// Looks names up on threads of its own, at most kMostThreads at a time. The system's lookup can be neither
// ended nor given a time: who no longer wants a result drops it, and its thread ends when the lookup does.
// One thread uses this object; its end never waits.
class HostLookups {
 public:
  // Numeric addresses of a host, best first; none when it is not found. Called on any of the threads.
  using Resolver = std::function<std::vector<std::string>(const std::string& host)>;

  static constexpr int kMostThreads = 96;

  // Throws std::system_error when there is no descriptor to be had.
  explicit HostLookups(Resolver resolver);
  ~HostLookups();

  // Nothing while every thread is taken.
  [[nodiscard]] std::shared_ptr<const HostLookup> Start(const std::string& host);

  // Readable after the end of a lookup, until ClearEnded.
  [[nodiscard]] int Descriptor() const;
  void ClearEnded();

 private:
  struct Shared;
  static void Run(const std::shared_ptr<Shared>& shared, const std::shared_ptr<HostLookup>& lookup,
                  const std::string& host) noexcept;

  std::shared_ptr<Shared> shared_;
};

class HostLookup {
 public:
  [[nodiscard]] bool HasEnded() const;
  // Numeric addresses, best first; complete when the lookup has ended.
  [[nodiscard]] std::vector<std::string> Addresses() const;
  HostLookup();
  ~HostLookup();

 private:
  friend class HostLookups;
  struct State;
  void End(std::vector<std::string> addresses);

  std::unique_ptr<State> state_;
};

// The system's own way: files, name servers and whatever else it is set up to ask. Without the addresses that
// count on one link alone.
[[nodiscard]] std::vector<std::string> ResolveWithSystem(const std::string& host);

}  // namespace Wayfinding
