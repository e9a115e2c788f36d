// Warm queries of a library and of the floor, interleaved: WarmQueries LIBRARY FLOOR [OPTION ...].
// Options are Google Benchmark's.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "Modules.h"
#include "ZynSystemInfo.h"

namespace {

using QueryFunction = std::uint32_t (*)(std::uint64_t component, std::uint64_t key, void* buffer,
                                        std::uint64_t* size);

struct Question {
  const char* name;
  std::uint64_t component;
  std::uint64_t key;
  std::uint64_t size;
  std::uint32_t status;  ///< Expected.
  bool isList = false;
};

constexpr Question QUESTIONS[] = {
    {"number", DSP, 7, 8, SUCCESS},        {"float", DSP, 43, 4, SUCCESS},
    {"name", GPU, 4, 64, SUCCESS},         {"refusal", DSP, 35, 8, UNSUPPORTED_KEY},
    {"list", DSP, 16, 512, SUCCESS, true},
};

void ask(benchmark::State& state, QueryFunction query, const Question& question) {
  alignas(std::uint64_t) std::array<std::uint8_t, 512> buffer{};
  std::uint64_t size = 0;
  std::uint32_t status = question.status;
  for ([[maybe_unused]] const auto iteration : state) {
    size = question.size;
    status = query(question.component, question.key, buffer.data(), &size);
    benchmark::DoNotOptimize(status);
    benchmark::ClobberMemory();
  }
  if (status != question.status) {
    state.SkipWithError("unexpected status");
  }
}

QueryFunction load(const char* path, const char* name) {
  void* const module = openModule(path);
  const ModuleFunction function = module != nullptr ? findFunction(module, name) : nullptr;
  if (function == nullptr) {
    (void)std::fprintf(stderr, "%s: does not load, or lacks %s\n", path, name);
    std::exit(2);
  }
  return reinterpret_cast<QueryFunction>(function);
}

void add(const char* name, QueryFunction query, const Question& question) {
  benchmark::RegisterBenchmark(name, ask, query, question);
  benchmark::RegisterBenchmark(name, ask, query, question)->Threads(2);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    (void)std::fputs("usage: WarmQueries LIBRARY FLOOR [OPTION ...]\n", stderr);
    return 2;
  }
  const QueryFunction scalar = load(argv[1], "Soc_GetCapability");
  const QueryFunction list = load(argv[1], "Soc_GetCapabilitySerialized");
  add("floor", load(argv[2], "Soc_GetCapability"), {"", DSP, 7, 8, SUCCESS});
  for (const Question& question : QUESTIONS) {
    add(question.name, question.isList ? list : scalar, question);
  }

  argc -= 2;
  argv[2] = argv[0];
  benchmark::Initialize(&argc, argv + 2);
  if (std::freopen("/dev/null", "w", stderr) == nullptr) {  // where refusals put their lines
    return 2;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
