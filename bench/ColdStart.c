/* What a fresh process pays: ColdStart LIBRARY loads it, asks a scalar and a list, and prints on
 * one line the nanoseconds of processor time until main, those that the three steps took, and the
 * memory kept after them in bytes: pages of the process's own, and heap in use. A library without
 * the list query is loaded and no more. */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "Host.h"

typedef uint32_t (*QueryFunction)(uint64_t, uint64_t, void*, uint64_t*);

enum { DSP = 2, SCALAR = 7, LIST = 16, CAPACITY = 512 };

static long long timeOf(clockid_t clock) {
  struct timespec time;
  clock_gettime(clock, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

/* Pages that no file stands behind: heap, and pages of mapped files that were written to. */
static long long ownBytes(void) {
  static char text[4096];
  static const char LABEL[] = "Anonymous:";
  text[HostRead("/proc/self/smaps_rollup", text, sizeof text - 1)] = '\0';
  const char* const line = strstr(text, LABEL);
  return line == NULL ? 0 : strtoll(line + strlen(LABEL), NULL, 10) * 1024;
}

int main(int argc, char** argv) {
  const long long begun = timeOf(CLOCK_PROCESS_CPUTIME_ID);
  static char answer[CAPACITY];
  uint64_t scalarSize = sizeof answer;
  uint64_t listSize = sizeof answer;
  if (argc != 2) {
    return 2;
  }
  /* Twice: the first time costs the pages that measuring itself writes. */
  HostMeasure();
  ownBytes();
  const long long heapBefore = (long long)HostMeasure().bytes;
  const long long ownBefore = ownBytes();

  const long long start = timeOf(CLOCK_MONOTONIC);
  void* const module = HostOpen(argv[1]);
  const long long loaded = timeOf(CLOCK_MONOTONIC);
  if (module == NULL) {
    return 1;
  }
  const QueryFunction scalar = (QueryFunction)HostSymbol(module, "Soc_GetCapability");
  const QueryFunction list = (QueryFunction)HostSymbol(module, "Soc_GetCapabilitySerialized");
  const long long bound = timeOf(CLOCK_MONOTONIC);
  long long answered = bound;
  long long listed = bound;
  if (list != NULL) {
    scalar(DSP, SCALAR, answer, &scalarSize);
    answered = timeOf(CLOCK_MONOTONIC);
    list(DSP, LIST, answer, &listSize);
    listed = timeOf(CLOCK_MONOTONIC);
  }
  const long long kept = ownBytes() - ownBefore;
  printf("%lld %lld %lld %lld %lld %lld\n", begun, loaded - start, answered - bound,
         listed - answered, kept, (long long)HostMeasure().bytes - heapBefore);
  return 0;
}
