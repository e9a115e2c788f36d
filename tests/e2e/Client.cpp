// The client of the end-to-end tests: loads the product at the path given as its argument, obeys
// the commands on standard input and answers each at once.
//
//   s COMPONENT KEY SIZE    scalar query; a size written n8 goes with a null buffer
//   l COMPONENT KEY SIZE    serialized query
//   threads N QUERY QUERY   N threads ask at once, every other one the second query
//   failalloc N QUERY       the query with its N-th allocation failing
//   load PATH               loads another library for good; answers nothing
//   reload                  unloads the product and loads it again; answers nothing
//   measure                 "handles blocks"
//
// A query's result is "status size bytes": the size afterwards and, in hex, the buffer, which was
// filled with a5 before, up to the last other byte. "failed" follows when an allocation failed,
// "unsupported" when none can be made to, "threw" or "faulted" when the call did not return.
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Host.h"
#include "Modules.h"

namespace {

constexpr std::uint8_t FILL = 0xA5;

decltype(HostCall::query) getScalar;
decltype(HostCall::query) getSerialized;

// The allocation that makes this 0 fails. From 0 on none fails.
std::uint64_t allocationsLeft;
bool hasAllocationFailed;

struct Query : HostCall {
  bool isNull = false;
  std::array<std::uint8_t, 256> bytes{};
};

Query readQuery(std::istream& words) {
  Query query{};
  char form = 0;
  words >> form >> query.component >> query.key >> std::ws;
  query.query = form == 's' ? getScalar : getSerialized;
  query.isNull = words.peek() == 'n';
  words.ignore(query.isNull ? 1 : 0) >> query.size;
  query.bytes.fill(FILL);
  query.end = "";
  return query;
}

void ask(Query& query) {
  query.buffer = query.isNull ? nullptr : query.bytes.data();
  HostAsk(&query);
}

void print(const Query& query, const char* remark = "") {
  std::size_t written = query.bytes.size();
  while (written > 0 && query.bytes[written - 1] == FILL) {
    --written;
  }
  std::cout << query.status << ' ' << query.size << ' ' << (written == 0 ? "-" : "") << std::hex;
  for (std::size_t i = 0; i < written; ++i) {
    std::cout << std::setw(2) << std::setfill('0') << unsigned{query.bytes[i]};
  }
  std::cout << std::dec << query.end << remark << '\n';
}

void* load(const std::string& path) {
  void* const module = openModule(path.c_str());
  if (module == nullptr) {
    std::cerr << path << " does not load\n";
    std::exit(2);
  }
  return module;
}

void* loadProduct(const char* path) {
  void* const product = load(path);
  HostIntercept(product);
  getScalar = reinterpret_cast<decltype(getScalar)>(findFunction(product, "Soc_GetCapability"));
  getSerialized =
      reinterpret_cast<decltype(getScalar)>(findFunction(product, "Soc_GetCapabilitySerialized"));
  return product;
}

void askFromThreads(std::istream& words) {
  std::size_t count = 0;
  words >> count;
  const std::array both{readQuery(words), readQuery(words)};
  std::vector<Query> queries;
  for (std::size_t i = 0; i < count; ++i) {
    queries.push_back(both[i % 2]);
  }
  std::atomic<std::size_t> started = 0;
  std::vector<std::thread> threads;
  for (Query& query : queries) {
    threads.emplace_back([&] {
      for (++started; started < count;) {
        std::this_thread::yield();
      }
      ask(query);
    });
  }
  for (std::size_t i = 0; i < count; ++i) {
    threads[i].join();
    print(queries[i]);
  }
}

void askWithoutMemory(std::istream& words) {
  std::uint64_t nth = 0;
  words >> nth;
  Query query = readQuery(words);
  hasAllocationFailed = false;
  allocationsLeft = nth;
  ask(query);
  allocationsLeft = 0;
  print(query, hasAllocationFailed ? " failed" : HOST_SEES_ALLOCATIONS ? "" : " unsupported");
}

}  // namespace

bool IsAllocationToFail() {
  if (allocationsLeft == 0 || --allocationsLeft != 0) {
    return false;
  }
  hasAllocationFailed = true;
  return true;
}

int main(int, char** argv) {
  void* product = loadProduct(argv[1]);
  for (std::string line; std::getline(std::cin, line); std::cout.flush()) {
    std::istringstream words(line);
    words.exceptions(std::ios::failbit);  // what is no command ends the program
    std::string word;
    words >> word;
    if (word == "threads") {
      askFromThreads(words);
    } else if (word == "failalloc") {
      askWithoutMemory(words);
    } else if (word == "load") {
      words >> word;
      load(word);
    } else if (word == "reload") {
      closeModule(product);
      product = loadProduct(argv[1]);
    } else if (word == "measure") {
      const HostUse use = HostMeasure();
      std::cout << use.handles << ' ' << use.blocks << '\n';
    } else {
      words.seekg(0);
      Query query = readQuery(words);
      ask(query);
      print(query);
    }
  }
  closeModule(product);
}
