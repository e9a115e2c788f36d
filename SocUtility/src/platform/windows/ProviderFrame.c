/* C, since a function with both C++ objects and structured handlers does not compile. */
#include "platform/ProviderFrame.h"

#include <stddef.h>
#include <windows.h>

/* C++ exceptions are structured exceptions, and their code tells the compiler. This is the other
 * compiler's code: that of MSVC or, if MSVC compiles this library, that of GCC and of Clang for
 * mingw-w64. */
#if defined(_MSC_VER)
#define OTHER_COMPILERS_EXCEPTION 0x20474343
#else
#define OTHER_COMPILERS_EXCEPTION 0xE06D7363
#endif

/* What MSVC's exceptions carry, on 64-bit systems: a number, the object, a description of its type,
 * and the image that the description's offsets count from. */
enum { THROWN_OBJECT = 1, THROWN_TYPE = 2, THROWN_IMAGE = 3, PARAMETERS = 4 };

typedef struct {
  uint32_t attributes;
  int32_t destructor; /* an offset, or 0 */
} ThrownType;

typedef void (*Destructor)(void* object);

typedef struct {
  void* object;
  Destructor destructor; /* or null */
} Thrown;

static int findHandler(const EXCEPTION_POINTERS* exception, Thrown* thrown) {
  const EXCEPTION_RECORD* const record = exception->ExceptionRecord;
  if (record->ExceptionCode != OTHER_COMPILERS_EXCEPTION) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  if (record->NumberParameters >= PARAMETERS) {
    const ThrownType* const type = (const ThrownType*)record->ExceptionInformation[THROWN_TYPE];
    if (type != NULL && type->destructor != 0) {
      thrown->object = (void*)record->ExceptionInformation[THROWN_OBJECT];
      thrown->destructor =
          (Destructor)(record->ExceptionInformation[THROWN_IMAGE] + (uint32_t)type->destructor);
    }
  }
  return EXCEPTION_EXECUTE_HANDLER;
}

/* The image that threw need not list this destructor among the targets of its indirect calls. */
__declspec(guard(nocf)) static void destroy(const Thrown* thrown) {
  if (thrown->destructor != NULL) {
    thrown->destructor(thrown->object);
  }
}

bool CallProvider(Soc_GetCapabilityFn* query, uint64_t component, uint64_t key, void* buffer,
                  uint64_t* size, uint32_t* status) {
  Thrown thrown = {NULL, NULL};
  bool returned = false;
  __try {
    __try {
      *status = query(component, key, buffer, size);
      returned = true;
    } __finally {
      /* The provider's frames are left, but the object, which lies in one of them, is still whole:
       * the stack is cut afterwards. */
      destroy(&thrown);
    }
  } __except (findHandler(GetExceptionInformation(), &thrown)) {
  }
  return returned;
}

void RunAttempt(void (*attempt)(void* context), void (*abandon)(void* context), void* context) {
  __try {
    attempt(context);
  } __finally {
    if (AbnormalTermination()) {
      abandon(context);
    }
  }
}
