/* An example of a service-utilities provider: ZynSystemInfo asks it about a chip that is not in its
 * catalogue. Start from this file and put your chip's values in the tables. It compiles as C99 and,
 * renamed to .cpp, as C++11.
 *
 * Rules for a provider:
 *
 * 1. Its file is named RzSoCServiceUtils.dll, in the folder of ZynSystemInfo or where the system
 *    searches for libraries.
 * 2. It exports Soc_GetAPIVersion and Soc_GetCapability under these plain names.
 * 3. Each query function of ZynSystemInfo loads it, asks every key on one thread, and unloads it.
 *    Answers are copied.
 * 4. It should not query ZynSystemInfo: a query that needs an import of its own returns status 25.
 *
 * The import succeeds only if each required key is answered in its wire form. Any other key may be
 * refused; its capability then keeps its default. docs/providers.md has all rules. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if defined(_WIN32)
#define VISIBLE __declspec(dllexport)
#else
#define VISIBLE __attribute__((visibility("default")))
#endif
#if defined(__cplusplus)
#define PROVIDER_EXPORT extern "C" VISIBLE
#else
#define PROVIDER_EXPORT VISIBLE
#endif

/* Status codes of the two exports. */
enum { SUCCESS = 0, UNSUPPORTED_COMPONENT = 2, UNSUPPORTED_KEY = 3, INSUFFICIENT_SIZE = 4 };

enum { DSP = 2, GPU = 3, CPU = 5 };

/* Answers are little-endian. An answer of another size than its form's is a failed call, even when
 * its value would fit.
 *
 * An import never asks for GPU keys 2 and 3, nor for DSP key 35 or any from 45 on. What GPU keys 6
 * and 7 answer here is ZynSystemInfo's answer to GPU keys 2 and 3 too. */

typedef struct {
  uint64_t component;
  uint64_t key;
  uint64_t value;
} Number;

/* Integers of any width and flags: 8 bytes. */
static const Number NUMBERS[] = {
    /* Required. */
    {DSP, 1, 3},
    {DSP, 2, 4},
    {DSP, 3, 68},
    {DSP, 4, 5},
    {DSP, 5, 6},
    {DSP, 6, 0},
    {DSP, 7, 0x1C0000000},
    {DSP, 8, 8},
    {DSP, 9, 1},
    {DSP, 10, 1},
    {DSP, 11, 1},
    {DSP, 12, 1},
    {DSP, 13, 1},
    {DSP, 14, 2},
    {DSP, 15, 8192},
    {DSP, 18, 16},
    {DSP, 19, 4096},
    {DSP, 20, 256},
    {DSP, 21, 7},
    {DSP, 22, 32},
    {DSP, 23, 2048},
    {DSP, 24, 1300},
    {DSP, 25, 1500},
    {DSP, 17, 1},
    {DSP, 26, 1},
    {DSP, 27, 1},
    {DSP, 28, 1},
    /* Optional. */
    {DSP, 29, 1},
    {DSP, 30, 1},
    {DSP, 31, 1},
    {DSP, 32, 1},
    {DSP, 33, 1},
    {DSP, 34, 1},
    {DSP, 36, 1},
    {DSP, 37, 1},
    {DSP, 38, 9}, /* its lowest byte is stored */
    {DSP, 39, 1},
    {DSP, 40, 11},
    {DSP, 41, 620},
    {DSP, 42, 1},
    /* Optional: the import succeeds without it. */
    {CPU, 1, 12},
    {CPU, 2, 0x400000000},
    /* Required. */
    {GPU, 1, 860},
    /* Optional. */
    {GPU, 5, 0x60000000},
    {GPU, 6, 0xC0000000},
    {GPU, 7, 0x200000},
    {GPU, 8, 192},
    {GPU, 9, 1536},
    {GPU, 10, 96},
    {GPU, 11, 0x10000},
    {GPU, 12, 32768},
    {GPU, 13, 0x180000000},
};

/* DSP keys 43 and 44: IEEE single precision, 4 bytes. Optional. */
static const float DSP_43 = 1.5F;
static const float DSP_44 = 0.25F;

/* DSP key 16, a list: the number of its elements, then the elements, 8 bytes each. Required. */
static const uint64_t DSP_16[] = {4, 1, 2, 4, 6};

/* GPU key 4, a name: its bytes and a NUL. Required. */
static const char GPU_4[] = "Turnstone 860";

/* When the answer does not fit, `*size` says how much it needs and the call comes again with that
 * much; asking for no more than was offered fails the call. */
static uint32_t answer(const void* bytes, uint64_t needed, void* buffer, uint64_t* size) {
  const uint64_t offered = *size;
  *size = needed;
  if (offered < needed) {
    return INSUFFICIENT_SIZE;
  }
  memcpy(buffer, bytes, (size_t)needed);
  return SUCCESS;
}

/* Must be there, but is never called at present. */
PROVIDER_EXPORT uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return SUCCESS;
}

/* Writes the answer to `buffer` and its size to `*size`, which holds the buffer's size on entry. */
PROVIDER_EXPORT uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer,
                                           uint64_t* size) {
  if (component != DSP && component != GPU && component != CPU) {
    return UNSUPPORTED_COMPONENT;
  }
  if (component == DSP && key == 16) {
    return answer(DSP_16, sizeof DSP_16, buffer, size);
  }
  if (component == DSP && key == 43) {
    return answer(&DSP_43, sizeof DSP_43, buffer, size);
  }
  if (component == DSP && key == 44) {
    return answer(&DSP_44, sizeof DSP_44, buffer, size);
  }
  if (component == GPU && key == 4) {
    return answer(GPU_4, sizeof GPU_4, buffer, size);
  }
  for (size_t i = 0; i < sizeof NUMBERS / sizeof NUMBERS[0]; ++i) {
    if (NUMBERS[i].component == component && NUMBERS[i].key == key) {
      return answer(&NUMBERS[i].value, sizeof NUMBERS[i].value, buffer, size);
    }
  }
  return UNSUPPORTED_KEY;
}
