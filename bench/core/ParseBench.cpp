// A document, from its text to its stores.
#include "SRLib/SRXMLProvider.h"
#include "common/GeneratedStores.h"
#include "core/Measured.h"
#include "floors/BareParse.h"
#include "libs/Text/TextHelpers.h"

namespace Bench {
namespace {

std::string Document(const benchmark::State& state) {
  return TestSupport::ServiceRecordDocument(StoresAsText(static_cast<std::size_t>(state.range(0))));
}

void Parse(benchmark::State& state) {
  const std::wstring text = util::widen(Document(state));
  for (auto _ : state) {
    ServiceRecords::StoreMap stores = ServiceRecords::SRXMLProvider().Parse(text);
    state.PauseTiming();  // the stores are the caller's
    if (stores.size() != static_cast<std::size_t>(state.range(0))) state.SkipWithError("stores are missing");
    stores.clear();
    state.ResumeTiming();
  }
}
BENCHMARK(Parse)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Apply(kComputing);

void ParseFloor(benchmark::State& state) {
  const std::string text = Document(state);
  for (auto _ : state) BareParse(text);
}
BENCHMARK(ParseFloor)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Apply(kComputing);

}  // namespace
}  // namespace Bench
