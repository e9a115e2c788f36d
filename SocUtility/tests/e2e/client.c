/* The client of the end-to-end tests: loads the product at the path given as its argument, obeys
 * the commands on standard input and answers each at once. It uses no variadic stdio, so that it
 * runs wherever the product does.
 *
 *   v                          version: "status major minor"
 *   s COMPONENT KEY SIZE       scalar query; a size written n8 goes with a null buffer
 *   l COMPONENT KEY SIZE       serialized query
 *   p COMPONENT KEY SIZE       the query of the library that `load` loaded
 *   load PATH                  loads another library for good: "loaded" or "failed"
 *   cycle N QUERY QUERY        unloads the product; loads, asks and unloads it N times; reloads it
 *   threads N QUERY QUERY      N threads ask at once, every other one in the opposite order
 *   failalloc N QUERY          the query with its N-th allocation failing, or "unsupported"
 *   measure                    "handles modules bytes"
 *
 * A query's result is "status size bytes": the size afterwards and the whole buffer in hex, which
 * was filled with a5 before. "overrun" follows when bytes past the size were written, "failed" when
 * an allocation failed. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "Host.h"

enum { CAPACITY = 512, GUARD = 64, FILL = 0xA5, MAX_THREADS = 64, MAX_WORDS = 10 };

typedef uint32_t (*VersionFunction)(uint8_t*, uint8_t*);
typedef uint32_t (*QueryFunction)(uint64_t, uint64_t, void*, uint64_t*);

static const char* productPath;
static void* product;
static VersionFunction getVersion;
static QueryFunction getScalar;
static QueryFunction getSerialized;
static QueryFunction getOfOther;

typedef struct {
  char function;
  uint64_t component;
  uint64_t key;
  uint64_t size;
  bool isNull;
} Query;

typedef struct {
  uint32_t status;
  uint64_t size;
  uint64_t shown; /* bytes of the buffer that belong to the caller's size */
  bool overrun;
  uint8_t bytes[CAPACITY + GUARD];
} Result;

static void stopWith(const char* message) {
  fputs(message, stderr);
  exit(2);
}

static void putNumber(uint64_t number) {
  if (number >= 10) {
    putNumber(number / 10);
  }
  putchar((int)('0' + number % 10));
}

static void putNumbers(const uint64_t* numbers, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    putNumber(numbers[i]);
    putchar(i + 1 < count ? ' ' : '\n');
  }
}

static void putResult(const Result* result, bool failed) {
  static const char DIGITS[] = "0123456789abcdef";
  putNumber(result->status);
  putchar(' ');
  putNumber(result->size);
  putchar(' ');
  for (uint64_t i = 0; i < result->shown; ++i) {
    putchar(DIGITS[result->bytes[i] >> 4]);
    putchar(DIGITS[result->bytes[i] & 0xF]);
  }
  if (result->shown == 0) {
    putchar('-');
  }
  fputs(result->overrun ? " overrun" : "", stdout);
  fputs(failed ? " failed\n" : "\n", stdout);
}

static void loadProduct(void) {
  product = HostOpen(productPath);
  if (product == NULL) {
    stopWith("the product does not load\n");
  }
  getVersion = (VersionFunction)HostSymbol(product, "Soc_GetAPIVersion");
  getScalar = (QueryFunction)HostSymbol(product, "Soc_GetCapability");
  getSerialized = (QueryFunction)HostSymbol(product, "Soc_GetCapabilitySerialized");
  if (getVersion == NULL || getScalar == NULL || getSerialized == NULL) {
    stopWith("the product lacks an export\n");
  }
}

static Query parseQuery(char** words) {
  const bool isNull = words[3][0] == 'n';
  return (Query){words[0][0], strtoull(words[1], NULL, 0), strtoull(words[2], NULL, 0),
                 strtoull(words[3] + (isNull ? 1 : 0), NULL, 0), isNull};
}

static void ask(const Query* query, Result* result) {
  const QueryFunction function = query->function == 's'   ? getScalar
                                 : query->function == 'l' ? getSerialized
                                                          : getOfOther;
  memset(result->bytes, FILL, sizeof result->bytes);
  result->size = query->size;
  result->shown = query->size < CAPACITY ? query->size : CAPACITY;
  result->status =
      function(query->component, query->key, query->isNull ? NULL : result->bytes, &result->size);
  result->overrun = false;
  for (uint64_t i = result->shown; i < sizeof result->bytes; ++i) {
    result->overrun = result->overrun || result->bytes[i] != FILL;
  }
}

/* Two queries and their results, in the order in which they are asked. */
typedef struct {
  Query queries[2];
  Result results[2];
} Pair;

static void askPair(void* item) {
  Pair* const pair = item;
  ask(&pair->queries[0], &pair->results[0]);
  ask(&pair->queries[1], &pair->results[1]);
}

static void putPair(const Pair* pair) {
  putResult(&pair->results[0], false);
  putResult(&pair->results[1], false);
}

static void askFromThreads(size_t count, const Query* first, const Query* second) {
  static Pair pairs[MAX_THREADS];
  for (size_t i = 0; i < count; ++i) {
    pairs[i].queries[i % 2] = *first;
    pairs[i].queries[1 - i % 2] = *second;
  }
  if (!HostRunTogether(count, askPair, pairs, sizeof pairs[0])) {
    stopWith("the threads did not start\n");
  }
  for (size_t i = 0; i < count; ++i) {
    putResult(&pairs[i].results[i % 2], false);
    putResult(&pairs[i].results[1 - i % 2], false);
  }
}

static void askInCycles(size_t count, const Query* first, const Query* second) {
  Pair pair = {.queries = {*first, *second}};
  HostClose(product);
  for (size_t i = 0; i < count; ++i) {
    loadProduct();
    askPair(&pair);
    putPair(&pair);
    HostClose(product);
  }
  loadProduct();
}

static void askFailing(uint64_t allocation, Query query) {
  Result result;
  if (!HostFailAllocation(allocation)) {
    puts("unsupported");
    return;
  }
  ask(&query, &result);
  putResult(&result, HostAllocationFailed());
}

static void loadOther(const char* path) {
  void* const other = HostOpen(path);
  getOfOther = other == NULL ? NULL : (QueryFunction)HostSymbol(other, "Soc_GetCapability");
  puts(other == NULL ? "failed" : "loaded");
}

static void obey(char** words, size_t count) {
  const char* const command = words[0];
  const uint64_t number = count > 1 ? strtoull(words[1], NULL, 0) : 0;
  if (strcmp(command, "v") == 0) {
    uint8_t major = FILL;
    uint8_t minor = FILL;
    const uint64_t status = getVersion(&major, &minor);
    putNumbers((const uint64_t[]){status, major, minor}, 3);
  } else if (strchr("slp", command[0]) != NULL && command[1] == '\0' && count == 4) {
    const Query query = parseQuery(words);
    Result result;
    ask(&query, &result);
    putResult(&result, false);
  } else if (strcmp(command, "load") == 0 && count == 2) {
    loadOther(words[1]);
  } else if (strcmp(command, "failalloc") == 0 && count == 6) {
    askFailing(number, parseQuery(words + 2));
  } else if (strcmp(command, "measure") == 0) {
    const HostUse use = HostMeasure();
    putNumbers((const uint64_t[]){use.handles, use.modules, use.bytes}, 3);
  } else if (count == MAX_WORDS) {
    const Query first = parseQuery(words + 2);
    const Query second = parseQuery(words + 6);
    (command[0] == 't' ? askFromThreads : askInCycles)((size_t)number, &first, &second);
  } else {
    stopWith("no such command\n");
  }
}

int main(int argc, char** argv) {
  char line[256];
  if (argc != 2) {
    stopWith("usage: client LIBRARY < COMMANDS\n");
  }
  productPath = argv[1];
  loadProduct();
  while (fgets(line, sizeof line, stdin) != NULL) {
    char* words[MAX_WORDS];
    size_t count = 0;
    for (char* word = strtok(line, " \r\n"); word != NULL && count < MAX_WORDS;
         word = strtok(NULL, " \r\n")) {
      words[count++] = word;
    }
    if (count > 0) {
      obey(words, count);
      fflush(stdout);
    }
  }
  HostClose(product);
  return 0;
}
