/* What a fresh process pays: ColdStart LIBRARY loads it, asks a scalar and a list, and prints, on
 * one line, the nanoseconds that each took and the memory kept after them in bytes: private pages
 * written, and heap in use. A library without the list query is loaded and no more. */
#define _GNU_SOURCE
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "Host.h"

typedef uint32_t (*QueryFunction)(uint64_t, uint64_t, void*, uint64_t*);

enum { DSP = 2, SCALAR = 7, LIST = 16, CAPACITY = 512 };

static long long now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

static long long privateBytes(void) {
  static char text[4096];
  static const char LABEL[] = "Private_Dirty:";
  text[HostRead("/proc/self/smaps_rollup", text, sizeof text - 1)] = '\0';
  const char* const line = strstr(text, LABEL);
  return line == NULL ? 0 : strtoll(line + strlen(LABEL), NULL, 10) * 1024;
}

int main(int argc, char** argv) {
  static char answer[CAPACITY];
  uint64_t scalarSize = sizeof answer;
  uint64_t listSize = sizeof answer;
  if (argc != 2) {
    return 2;
  }
  /* Twice: the first time costs the pages that measuring itself writes. */
  HostMeasure();
  privateBytes();
  const long long heapBefore = (long long)HostMeasure().bytes;
  const long long privateBefore = privateBytes();

  const long long start = now();
  void* const module = HostOpen(argv[1]);
  const long long loaded = now();
  if (module == NULL) {
    return 1;
  }
  const QueryFunction scalar = (QueryFunction)HostSymbol(module, "Soc_GetCapability");
  const QueryFunction list = (QueryFunction)HostSymbol(module, "Soc_GetCapabilitySerialized");
  const long long bound = now();
  long long answered = bound;
  long long listed = bound;
  if (list != NULL) {
    scalar(DSP, SCALAR, answer, &scalarSize);
    answered = now();
    list(DSP, LIST, answer, &listSize);
    listed = now();
  }
  const long long kept = privateBytes() - privateBefore;
  printf("%lld %lld %lld %lld %lld\n", loaded - start, answered - bound, listed - answered, kept,
         (long long)HostMeasure().bytes - heapBefore);
  return 0;
}
