/* What release 0.1 promised to programs. It must compile, link and succeed with every later 0.1.x;
 * never change it for one. Run with the example provider beside the library, it asks every key and
 * checks status, smallest buffer and the bytes written. Prints what differs. */
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

enum { LAST_KEY = 50 };

/* One character for each key from 0: a number of 8 bytes, a float of 4, the name of 14 with its
 * NUL, a list as long as the example's, an empty list, or no key. */
static const char KEYS[][LAST_KEY + 2] = {
    "",
    "",
    "-nnnnnnnnnnnnnnnlnnnnnnnnnnnnnnnnnn-nnnnnnnffneee--",
    "-nnnsnnnnnnnnn-------------------------------------",
    "",
    "-nn------------------------------------------------",
    "",
};

typedef uint32_t Query(uint64_t, uint64_t, void*, uint64_t*);
typedef struct {
  uint32_t status;
  uint64_t smallest; /* what a buffer of 0 bytes is told to grow to */
  uint64_t size;     /* on return */
  uint64_t written;
} Answer;

/* Asks with two fillings of the buffer: bytes that are equal afterwards were written. */
static Answer ask(Query* query, uint64_t component, uint64_t key) {
  unsigned char first[256];
  unsigned char second[256];
  Answer answer = {0, 0, sizeof first, sizeof first};
  (void)query(component, key, first, &answer.smallest);
  memset(first, 0x5A, sizeof first);
  memset(second, 0xA5, sizeof second);
  (void)query(component, key, first, &answer.size);
  answer.size = sizeof second;
  answer.status = query(component, key, second, &answer.size);
  while (answer.written > 0 && first[answer.written - 1] != second[answer.written - 1]) {
    --answer.written;
  }
  return answer;
}

static int failures;

static void expect(const char* what, uint64_t component, uint64_t key, uint64_t value,
                   uint64_t wanted) {
  if (value != wanted) {
    printf("%s of %u %u: %u, not %u\n", what, (unsigned)component, (unsigned)key, (unsigned)value,
           (unsigned)wanted);
    ++failures;
  }
}

static void checkScalar(uint64_t component, uint64_t key, char form) {
  const Answer answer = ask(Soc_GetCapability, component, key);
  const uint64_t smallest = form == 'f' ? 4 : form == 's' ? 12 : form == 'l' ? 16 : 8;
  const uint64_t written = form == 'n' ? 8 : form == 'f' ? 4 : form == 's' ? 14 : 0;
  const uint32_t status = form == 0 ? UNSUPPORTED_COMPONENT : written ? SUCCESS : UNSUPPORTED_KEY;
  expect("status", component, key, answer.status, status);
  expect("smallest buffer", component, key, answer.smallest, smallest);
  expect("size", component, key, answer.size, form == 's' ? written : 256);
  expect("bytes", component, key, answer.written, written);
}

static void checkList(uint64_t component, uint64_t key, char form) {
  const Answer answer = ask(Soc_GetCapabilitySerialized, component, key);
  const uint64_t written = form == 'l' ? 32 : 0;
  const int isList = form == 'l' || form == 'e';
  const uint32_t status = form == 0 ? UNSUPPORTED_COMPONENT : isList ? SUCCESS : UNSUPPORTED_KEY;
  expect("list status", component, key, answer.status, status);
  expect("list size for 0 bytes", component, key, answer.smallest, written);
  expect("list size", component, key, answer.size, isList ? written : 256);
  expect("list bytes", component, key, answer.written, written);
}

int main(void) {
  uint8_t version[2] = {9, 9};
  expect("version's status", 0, 0, Soc_GetAPIVersion(&version[0], &version[1]), SUCCESS);
  expect("major version", 0, 0, version[0], 0);
  expect("minor version", 0, 0, version[1], 1);
  for (uint64_t component = 0; component < sizeof KEYS / sizeof KEYS[0]; ++component) {
    for (uint64_t key = 0; key <= LAST_KEY; ++key) {
      checkScalar(component, key, KEYS[component][key]);
      checkList(component, key, KEYS[component][key]);
    }
  }
  uint64_t size = 5;
  expect("null buffer", DSP, 1, Soc_GetCapability(DSP, 1, NULL, &size), NULL_BUFFER);
  expect("null buffer's size", DSP, 1, size, 8);
  expect("null list buffer", DSP, 16, Soc_GetCapabilitySerialized(DSP, 16, NULL, &size),
         NULL_BUFFER);
  return failures ? 1 : 0;
}
