/* An example of a service-utilities provider: the library that ZynSystemInfo asks about a chip that
 * its own catalogue does not know. Start from this file and put your chip's values in the table.
 *
 * What makes a provider:
 *
 * 1. Its file is named RzSoCServiceUtils.dll. It is looked for beside ZynSystemInfo first, then by
 *    the platform's own library search.
 * 2. It exports Soc_GetAPIVersion and Soc_GetCapability under these plain names. Without either, it
 *    is not asked at all.
 * 3. It is loaded for one import, asked key by key from one thread, and unloaded again; a process
 *    does this up to twice. Answers are copied, nothing is kept that points into the provider.
 * 4. It must not ask ZynSystemInfo in return: the answer would be status 25.
 *
 * The import counts only when each required key is answered in its wire form. Any other key may be
 * refused; its capability then keeps its default value. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if defined(_WIN32)
#define PROVIDER_EXPORT __declspec(dllexport)
#else
#define PROVIDER_EXPORT __attribute__((visibility("default")))
#endif

/* Status codes of the two exports. */
enum {
  SUCCESS = 0,
  UNSUPPORTED_COMPONENT = 2,
  UNSUPPORTED_KEY = 3,
  INSUFFICIENT_SIZE = 4,
};

enum { DSP = 2, GPU = 3, CPU = 5 };

typedef struct {
  uint64_t component;
  uint64_t key;
  uint64_t size; /* of the answer, in bytes */
  const void* bytes;
} Answer;

/* The wire forms, all little-endian as the machines are that this runs on. A number of another size
 * than these is a failed call, even when its value would fit. */

/* Integers of any width, and flags: 8 bytes. */
#define NUMBER(value) \
  sizeof(uint64_t), &(const uint64_t) { value }
/* DSP keys 43 and 44: IEEE single precision, 4 bytes. */
#define REAL(value) \
  sizeof(float), &(const float) { value }
/* A list of integers: their count, then the integers, 8 bytes each, and nothing after them. */
#define LIST(...) \
  sizeof((const uint64_t[]){__VA_ARGS__}), (const uint64_t[]) { __VA_ARGS__ }
/* A name: its bytes and a NUL. */
#define TEXT(text) sizeof(text), text

/* In the order in which an import asks. DSP keys 35 and 45 to 48 and GPU keys 2 and 3 are never
 * asked of a provider. */
static const Answer ANSWERS[] = {
    /* Required. */
    {DSP, 1, NUMBER(3)},
    {DSP, 2, NUMBER(4)},
    {DSP, 3, NUMBER(68)},
    {DSP, 4, NUMBER(5)},
    {DSP, 5, NUMBER(6)},
    {DSP, 6, NUMBER(0)},
    {DSP, 7, NUMBER(0x1C0000000)},
    {DSP, 8, NUMBER(8)},
    {DSP, 9, NUMBER(1)},
    {DSP, 10, NUMBER(1)},
    {DSP, 11, NUMBER(1)},
    {DSP, 12, NUMBER(1)},
    {DSP, 13, NUMBER(1)},
    {DSP, 14, NUMBER(2)},
    {DSP, 15, NUMBER(8192)},
    {DSP, 16, LIST(4, 1, 2, 4, 6)},
    {DSP, 18, NUMBER(16)},
    {DSP, 19, NUMBER(4096)},
    {DSP, 20, NUMBER(256)},
    {DSP, 21, NUMBER(7)},
    {DSP, 22, NUMBER(32)},
    {DSP, 23, NUMBER(2048)},
    {DSP, 24, NUMBER(1300)},
    {DSP, 25, NUMBER(1500)},
    {DSP, 17, NUMBER(1)},
    {DSP, 26, NUMBER(1)},
    {DSP, 27, NUMBER(1)},
    {DSP, 28, NUMBER(1)},
    /* Optional. */
    {DSP, 29, NUMBER(1)},
    {DSP, 30, NUMBER(1)},
    {DSP, 31, NUMBER(1)},
    {DSP, 32, NUMBER(1)},
    {DSP, 33, NUMBER(1)},
    {DSP, 34, NUMBER(1)},
    {DSP, 36, NUMBER(1)},
    {DSP, 37, NUMBER(1)},
    {DSP, 38, NUMBER(9)}, /* its lowest byte is stored */
    {DSP, 39, NUMBER(1)},
    {DSP, 40, NUMBER(11)},
    {DSP, 41, NUMBER(620)},
    {DSP, 42, NUMBER(1)},
    {DSP, 43, REAL(1.5F)},
    {DSP, 44, REAL(0.25F)},
    /* Optional, and without influence on whether the import counts. */
    {CPU, 1, NUMBER(12)},
    {CPU, 2, NUMBER(0x400000000)},
    /* Required. */
    {GPU, 1, NUMBER(860)},
    {GPU, 4, TEXT("Turnstone 860")},
    /* Optional. GPU key 6 answers key 2 of ZynSystemInfo too, and key 7 key 3. */
    {GPU, 5, NUMBER(0x60000000)},
    {GPU, 6, NUMBER(0xC0000000)},
    {GPU, 7, NUMBER(0x200000)},
    {GPU, 8, NUMBER(192)},
    {GPU, 9, NUMBER(1536)},
    {GPU, 10, NUMBER(96)},
    {GPU, 11, NUMBER(0x10000)},
    {GPU, 12, NUMBER(32768)},
    {GPU, 13, NUMBER(0x180000000)},
};

/* Must be there, but is never called at present. */
PROVIDER_EXPORT uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return SUCCESS;
}

/* Writes the answer to `buffer` and its size to `*size`, which holds the buffer's size on entry.
 * When the answer does not fit, `*size` says how much it needs and the call comes again with that
 * much; asking for no more than was offered fails the call. */
PROVIDER_EXPORT uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer,
                                           uint64_t* size) {
  if (component != DSP && component != GPU && component != CPU) {
    return UNSUPPORTED_COMPONENT;
  }
  for (size_t i = 0; i < sizeof ANSWERS / sizeof ANSWERS[0]; ++i) {
    const Answer* answer = &ANSWERS[i];
    if (answer->component != component || answer->key != key) {
      continue;
    }
    const uint64_t offered = *size;
    *size = answer->size;
    if (offered < answer->size) {
      return INSUFFICIENT_SIZE;
    }
    memcpy(buffer, answer->bytes, (size_t)answer->size);
    return SUCCESS;
  }
  return UNSUPPORTED_KEY;
}
