#pragma once

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Wayfinding {

// What one name lookup will have found: numeric addresses, best first; none when there is no such name.
using HostLookup = std::shared_future<std::vector<std::string>>;

[[nodiscard]] bool HasEnded(const HostLookup& lookup);

// Looks names up on threads of its own, at most kMostThreads at a time. The system's lookup can be neither
// ended nor given a time: who no longer wants a result drops it, and its thread ends when the lookup does. So
// lookups that hang are shared by whoever wants the same name, and are counted until they end; libcurl's own
// could be neither. One thread uses this object; its end never waits.
class HostLookups {
 public:
  // Numeric addresses of a host, best first; none when it is not found. Called on any of the threads.
  using Resolver = std::function<std::vector<std::string>(const std::string& host)>;

  static constexpr std::size_t kMostThreads = 96;

  // Throws std::system_error when there is no descriptor to be had.
  explicit HostLookups(Resolver resolver);
  ~HostLookups();

  // The lookup of this host that is under way on this network, or a new one. Nothing while there is no thread
  // left for this store, by its URL: it may have one more while it has less than a quarter of the free ones,
  // so that the names of one store that hang leave some to the others.
  [[nodiscard]] std::optional<HostLookup> Start(const std::string& host, const std::string& store);
  // What is under way asks the network before, and is not shared any more.
  void TakeNewNetwork();

  // Readable after the end of a lookup, until ClearEnded.
  [[nodiscard]] int Descriptor() const;
  void ClearEnded();

 private:
  struct Shared;
  struct Running {
    std::string host;
    std::string store;
    HostLookup lookup;
    bool isOfThisNetwork = true;
  };

  std::shared_ptr<Shared> shared_;
  std::vector<Running> running_;
};

// The system's own way: files, name servers and whatever else it is set up to ask. Without the addresses that
// count on one link alone.
[[nodiscard]] std::vector<std::string> ResolveWithSystem(const std::string& host);

}  // namespace Wayfinding
