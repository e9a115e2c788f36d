/* The client of the end-to-end tests: loads the product at the path given as its argument, obeys
 * the commands on standard input and answers each at once. It uses no variadic stdio, so that it
 * runs wherever the product does.
 *
 *   s COMPONENT KEY SIZE       scalar query; a size written n8 goes with a null buffer
 *   l COMPONENT KEY SIZE       serialized query
 *   threads N QUERY QUERY      N threads ask at once, every other one the second query
 *   failalloc N QUERY          the query with its N-th allocation failing
 *   version                    "status major minor"
 *   load PATH                  loads another library for good: "0" when it is loaded, else "1"
 *   reload                     unloads the product and loads it afresh; answers nothing
 *   measure                    "handles blocks"
 *
 * A query's result is "status size bytes": the size afterwards and the whole buffer in hex, which
 * was filled with a5 before. "overrun" follows when bytes past the size were written, "failed" when
 * an allocation failed, "unsupported" when none can be made to, "threw" or "faulted" when the call
 * did not return. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "Host.h"

enum { CAPACITY = 512, GUARD = 64, FILL = 0xA5, MAX_WORDS = 10 };

typedef uint32_t (*VersionFunction)(uint8_t*, uint8_t*);

static const char* productPath;
static void* product;
static VersionFunction getVersion;
static HostQuery getScalar;
static HostQuery getSerialized;

/* A query and, once asked, its result. */
typedef struct {
  bool isScalar;
  uint64_t component;
  uint64_t key;
  bool isNull;
  uint64_t size;
  uint64_t shown; /* bytes of the buffer that belong to the caller's size */
  HostEnd end;
  uint32_t status;
  uint8_t bytes[CAPACITY + GUARD];
} Query;

static void stopWith(const char* message) {
  fputs(message, stderr);
  exit(2);
}

static void putNumber(uint64_t number, char end) {
  char digits[21] = "";
  char* first = digits + sizeof digits - 1;
  do {
    *--first = (char)('0' + number % 10);
  } while ((number /= 10) != 0);
  fputs(first, stdout);
  putchar(end);
}

static void putResult(const Query* query, const char* remark) {
  static const char DIGITS[] = "0123456789abcdef";
  putNumber(query->status, ' ');
  putNumber(query->size, ' ');
  for (uint64_t i = 0; i < query->shown; ++i) {
    putchar(DIGITS[query->bytes[i] >> 4]);
    putchar(DIGITS[query->bytes[i] & 0xF]);
  }
  fputs(query->shown == 0 ? "-" : "", stdout);
  for (uint64_t i = query->shown; i < sizeof query->bytes; ++i) {
    if (query->bytes[i] != FILL) {
      remark = " overrun";
    }
  }
  static const char* const ENDS[] = {"", " threw", " faulted"};
  fputs(ENDS[query->end], stdout);
  puts(remark);
}

static void loadProduct(void) {
  product = HostOpen(productPath);
  if (product == NULL) {
    stopWith("the product does not load\n");
  }
  HostIntercept(product);
  getVersion = (VersionFunction)HostSymbol(product, "Soc_GetAPIVersion");
  getScalar = (HostQuery)HostSymbol(product, "Soc_GetCapability");
  getSerialized = (HostQuery)HostSymbol(product, "Soc_GetCapabilitySerialized");
}

static Query parseQuery(char** words) {
  const bool isNull = words[3][0] == 'n';
  Query query = {.isScalar = words[0][0] == 's', .isNull = isNull};
  query.component = strtoull(words[1], NULL, 0);
  query.key = strtoull(words[2], NULL, 0);
  query.size = strtoull(words[3] + (isNull ? 1 : 0), NULL, 0);
  query.shown = query.size < CAPACITY ? query.size : CAPACITY;
  memset(query.bytes, FILL, sizeof query.bytes);
  return query;
}

static void ask(void* item) {
  Query* const query = item;
  query->end = HostAsk(query->isScalar ? getScalar : getSerialized, query->component, query->key,
                       query->isNull ? NULL : query->bytes, &query->size, &query->status);
}

static void askFromThreads(size_t count, char** words) {
  static Query queries[HOST_MAX_THREADS];
  for (size_t i = 0; i < count; ++i) {
    queries[i] = parseQuery(words + i % 2 * 4);
  }
  if (!HostRunTogether(count, ask, queries, sizeof queries[0])) {
    stopWith("the threads did not start or do not end\n");
  }
  for (size_t i = 0; i < count; ++i) {
    putResult(&queries[i], "");
  }
}

static void obey(char** words, size_t count) {
  const char* const command = words[0];
  const uint64_t number = count > 1 ? strtoull(words[1], NULL, 0) : 0;
  if (count == 4) {
    Query query = parseQuery(words);
    ask(&query);
    putResult(&query, "");
  } else if (strcmp(command, "threads") == 0 && count == 10) {
    askFromThreads((size_t)number, words + 2);
  } else if (strcmp(command, "failalloc") == 0 && count == 6) {
    Query query = parseQuery(words + 2);
    const bool isSupported = HostFailAllocation(number);
    ask(&query);
    putResult(&query, HostAllocationFailed() ? " failed" : isSupported ? "" : " unsupported");
  } else if (strcmp(command, "version") == 0) {
    uint8_t version[] = {FILL, FILL};
    putNumber(getVersion(&version[0], &version[1]), ' ');
    putNumber(version[0], ' ');
    putNumber(version[1], '\n');
  } else if (strcmp(command, "load") == 0 && count == 2) {
    putNumber(HostOpen(words[1]) == NULL, '\n');
  } else if (strcmp(command, "reload") == 0) {
    HostClose(product);
    loadProduct();
  } else if (strcmp(command, "measure") == 0) {
    const HostUse use = HostMeasure();
    putNumber(use.handles, ' ');
    putNumber(use.blocks, '\n');
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
