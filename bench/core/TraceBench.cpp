// A statement of the trace log that nobody listens to.
#include "core/Measured.h"
#include "libs/Trace/Trace.h"

#include <mutex>
#include <string>

namespace Bench {
namespace {

// A piece of a record that is costly to build.
class Piece {
 public:
  [[nodiscard]] std::string Text() {
    ++built_;
    return std::to_string(built_);
  }
  [[nodiscard]] std::uint64_t Built() const { return built_; }

 private:
  std::uint64_t built_ = 0;
};

void Trace(benchmark::State& state) {
  Piece piece;
  for (auto _ : state) SR_TRACE(0) << "A progress record: " << piece.Text();
  if (piece.Built() != 0) state.SkipWithError("a piece was built");
}
BENCHMARK(Trace)->Apply(kComputing);

void TraceFloor(benchmark::State& state) {
  static std::recursive_mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    benchmark::ClobberMemory();
    mutex.unlock();
  }
}
BENCHMARK(TraceFloor)->Apply(kComputing);

}  // namespace
}  // namespace Bench
