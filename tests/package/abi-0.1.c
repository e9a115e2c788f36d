/* What interface 0.1 promises to programs. It must pass with every 0.1.x; never change it to
 * make one pass. Run with the example provider beside the library, it asks every key. */
#include <ZynSystemInfo.h>
#include <stdio.h>
#include <string.h>

/* A declaration of another type does not compile, and a missing export does not link. */
uint32_t Soc_GetAPIVersion(uint8_t*, uint8_t*);
uint32_t Soc_GetCapability(uint64_t, uint64_t, void*, uint64_t*);
uint32_t Soc_GetCapabilitySerialized(uint64_t, uint64_t, void*, uint64_t*);

#define CONSTANT(name, value)                         \
  typedef char name##_is[(name) == (value) ? 1 : -1]; \
  typedef char SOC_##name##_is[SOC_##name == (value) ? 1 : -1]
CONSTANT(SUCCESS, 0);
CONSTANT(UNSUPPORTED_COMPONENT, 2);
CONSTANT(UNSUPPORTED_KEY, 3);
CONSTANT(INSUFFICIENT_SIZE, 4);
CONSTANT(NULL_BUFFER, 7);
CONSTANT(FAILURE, 25);
CONSTANT(DSP, 2);
CONSTANT(GPU, 3);
CONSTANT(CPU, 5);

enum { CAPACITY = 256, FILL = 0x5A };
typedef uint32_t Query(uint64_t, uint64_t, void*, uint64_t*);

/* What a query does with a buffer of CAPACITY bytes. */
typedef struct {
  unsigned status;
  unsigned size; /* on return */
  unsigned written;
  unsigned smallest; /* the size that it asks for when there are 0 bytes */
} Answer;

static int isKept(Query* query, unsigned component, unsigned key, Answer promised) {
  unsigned char buffer[CAPACITY];
  uint64_t smallest = 0;
  uint64_t size = CAPACITY;
  unsigned written = CAPACITY;
  (void)query(component, key, buffer, &smallest);
  memset(buffer, FILL, CAPACITY);
  const uint32_t status = query(component, key, buffer, &size);
  while (written > 0 && buffer[written - 1] == FILL) {
    --written;
  }
  const Answer answer = {status, (unsigned)size, written, (unsigned)smallest};
  return memcmp(&answer, &promised, sizeof answer) == 0;
}

int main(void) {
  const Answer NUMBER = {SUCCESS, 256, 8, 8};
  const Answer FLOAT = {SUCCESS, 256, 4, 4};
  const Answer NAME = {SUCCESS, 14, 14, 12};
  const Answer NO_SCALAR = {UNSUPPORTED_KEY, 256, 0, 16};
  const Answer LIST = {SUCCESS, 32, 32, 32};
  const Answer EMPTY_LIST = {SUCCESS, 0, 0, 0};
  const struct {
    Query* query;
    unsigned component;
    unsigned firstKey;
    unsigned lastKey;
    Answer answer;
  } PROMISES[] = {
      {Soc_GetCapability, DSP, 1, 15, NUMBER},
      {Soc_GetCapability, DSP, 16, 16, NO_SCALAR},
      {Soc_GetCapability, DSP, 17, 34, NUMBER},
      {Soc_GetCapability, DSP, 36, 42, NUMBER},
      {Soc_GetCapability, DSP, 43, 44, FLOAT},
      {Soc_GetCapability, DSP, 45, 45, NUMBER},
      {Soc_GetCapability, GPU, 1, 3, NUMBER},
      {Soc_GetCapability, GPU, 4, 4, NAME},
      {Soc_GetCapability, GPU, 5, 13, NUMBER},
      {Soc_GetCapability, CPU, 1, 2, NUMBER},
      {Soc_GetCapabilitySerialized, DSP, 16, 16, LIST},
      {Soc_GetCapabilitySerialized, DSP, 46, 48, EMPTY_LIST},
  };
  uint8_t version[2] = {9, 9};
  uint64_t size = 5;
  int broken = Soc_GetAPIVersion(&version[0], &version[1]) != SUCCESS || version[0] != 0 ||
               version[1] != 1 || Soc_GetCapability(DSP, 1, NULL, &size) != NULL_BUFFER ||
               size != 8 || Soc_GetCapabilitySerialized(DSP, 16, NULL, &size) != NULL_BUFFER;
  for (size_t i = 0; i < sizeof PROMISES / sizeof PROMISES[0]; ++i) {
    for (unsigned key = PROMISES[i].firstKey; key <= PROMISES[i].lastKey; ++key) {
      if (!isKept(PROMISES[i].query, PROMISES[i].component, key, PROMISES[i].answer)) {
        printf("differs: component %u, key %u\n", PROMISES[i].component, key);
        broken = 1;
      }
    }
  }
  return broken;
}
