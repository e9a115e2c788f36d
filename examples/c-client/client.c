/* Prints the GPU's name, the DSP's key 3 and the first DSP list of this machine. */
#include <ZynSystemInfo.h>
#include <inttypes.h>
#include <stdbool.h>
#include <stdio.h>

/* If the chip is unknown and no provider library describes it, the first query is answered from
 * default values, and every later one returns FAILURE. */
static bool chipIsKnown(void) {
  uint64_t value;
  uint64_t size = sizeof value;
  (void)Soc_GetCapability(CPU, 1, &value, &size);
  return Soc_GetCapability(CPU, 1, &value, &size) == SUCCESS;
}

static int fail(const char* what, uint32_t status) {
  (void)fprintf(stderr, "%s: status %" PRIu32 "\n", what, status);
  return 1;
}

int main(void) {
  if (!chipIsKnown()) {
    (void)fprintf(stderr, "unknown chip: no provider library describes it\n");
    return 1;
  }

  char name[64];
  uint64_t size = sizeof name;
  uint32_t status = Soc_GetCapability(GPU, 4, name, &size);
  if (status != SUCCESS) {
    return fail("GPU 4", status);
  }
  printf("GPU 4: %s\n", name);

  int64_t number = 0;
  size = sizeof number;
  status = Soc_GetCapability(DSP, 3, &number, &size);
  if (status != SUCCESS) {
    return fail("DSP 3", status);
  }
  printf("DSP 3: %" PRId64 "\n", number);

  uint32_t entries[32][2]; /* each the DSP's index and a value */
  size = sizeof entries;
  status = Soc_GetCapabilitySerialized(DSP, 16, entries, &size);
  if (status != SUCCESS) {
    return fail("DSP 16", status);
  }
  printf("DSP 16:");
  for (uint64_t i = 0; i < size / sizeof entries[0]; ++i) {
    printf(" %" PRIu32, entries[i][1]);
  }
  printf("\n");
  return 0;
}
