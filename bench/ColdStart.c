/* What a fresh process pays: ColdStart LIBRARY loads it, asks one scalar, and prints on one line
 * the nanoseconds that loading and asking took, and the bytes of memory kept after them. A library
 * without the list query is only loaded. */
#include <fcntl.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "Modules.h"

typedef uint32_t (*QueryFunction)(uint64_t, uint64_t, void*, uint64_t*);

enum { DSP = 2, SCALAR = 7, CAPACITY = 8 };

static long long now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

/* Pages without a file: heap, and pages of mapped files that were written to. */
static long long ownBytes(void) {
  static char text[4096];
  static const char LABEL[] = "Anonymous:";
  const int file = open("/proc/self/smaps_rollup", O_RDONLY);
  const ssize_t count = read(file, text, sizeof text - 1);
  text[count < 0 ? 0 : count] = '\0';
  close(file);
  const char* const line = strstr(text, LABEL);
  return line == NULL ? 0 : strtoll(line + strlen(LABEL), NULL, 10) * 1024;
}

int main(int argc, char** argv) {
  static char answer[CAPACITY];
  uint64_t scalarSize = sizeof answer;
  if (argc != 2) {
    return 2;
  }
  ownBytes(); /* the first time costs the pages that measuring itself writes */
  const long long ownBefore = ownBytes();

  const long long start = now();
  void* const module = openModule(argv[1]);
  const long long loaded = now();
  if (module == NULL) {
    return 1;
  }
  const QueryFunction scalar = (QueryFunction)findFunction(module, "Soc_GetCapability");
  const bool isFloor = findFunction(module, "Soc_GetCapabilitySerialized") == NULL;
  const long long bound = now();
  if (!isFloor) {
    scalar(DSP, SCALAR, answer, &scalarSize);
  }
  const long long answered = now();
  printf("%lld %lld %lld\n", loaded - start, answered - bound, ownBytes() - ownBefore);
  return 0;
}
