/* Counts what one warm call takes: CallCosts LIBRARY prints, a line each, "ALLOCATIONS LOCKS NAME".
 * This program's allocation and lock functions replace the system's, for its libraries too.
 * The lock of a stream, which a diagnostic line takes, is the C library's own and not counted. */
#include <dlfcn.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "Modules.h"

#define REPLACES __attribute__((visibility("default")))

typedef uint32_t (*QueryFunction)(uint64_t, uint64_t, void*, uint64_t*);
typedef int (*LockFunction)(void*);

/* NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*): the C library's names */
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
/* NOLINTEND(bugprone-reserved-identifier,cert-dcl*) */

static unsigned allocations;
static unsigned locks;

REPLACES void* malloc(size_t size) {
  ++allocations;
  return __libc_malloc(size);
}

REPLACES void* calloc(size_t count, size_t size) {
  ++allocations;
  return __libc_calloc(count, size);
}

REPLACES void* realloc(void* block, size_t size) {
  ++allocations;
  return __libc_realloc(block, size);
}

static int lockWith(LockFunction* next, const char* name, void* lock) {
  if (*next == NULL) {
    *next = (LockFunction)findFunction(RTLD_NEXT, name);
  }
  ++locks;
  return (*next)(lock);
}

REPLACES int pthread_mutex_lock(pthread_mutex_t* lock) {
  static LockFunction next;
  return lockWith(&next, __func__, lock);
}

REPLACES int pthread_mutex_trylock(pthread_mutex_t* lock) {
  static LockFunction next;
  return lockWith(&next, __func__, lock);
}

REPLACES int pthread_rwlock_rdlock(pthread_rwlock_t* lock) {
  static LockFunction next;
  return lockWith(&next, __func__, lock);
}

REPLACES int pthread_rwlock_wrlock(pthread_rwlock_t* lock) {
  static LockFunction next;
  return lockWith(&next, __func__, lock);
}

typedef struct {
  const char* name;
  const char* function;
  uint64_t component;
  uint64_t key;
} Question;

static const Question QUESTIONS[] = {
    {"number", "Soc_GetCapability", 2, 7},
    {"string", "Soc_GetCapability", 3, 4},
    {"refusal", "Soc_GetCapability", 2, 35},
    {"list", "Soc_GetCapabilitySerialized", 2, 16},
    {"list without entries", "Soc_GetCapabilitySerialized", 2, 47},
    {"refused list", "Soc_GetCapabilitySerialized", 2, 1},
};

int main(int argc, char** argv) {
  static char answer[512];
  void* const module = argc == 2 ? openModule(argv[1]) : NULL;
  if (module == NULL) {
    return 1;
  }
  for (size_t i = 0; i < sizeof QUESTIONS / sizeof QUESTIONS[0]; ++i) {
    const Question* const question = &QUESTIONS[i];
    const QueryFunction ask = (QueryFunction)findFunction(module, question->function);
    /* The first call initialises, the second is warm. */
    for (int call = 0; call < 2; ++call) {
      uint64_t size = sizeof answer;
      allocations = locks = 0;
      ask(question->component, question->key, answer, &size);
    }
    printf("%u %u %s\n", allocations, locks, question->name);
  }
  return 0;
}
