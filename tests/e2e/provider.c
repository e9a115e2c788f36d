/* The library in a provider's place, or in the product's, for all tests that run one: the example
 * provider, made to misbehave.
 *
 * In the working directory of the process it reads provider.txt when it is loaded and writes
 * provider.log: "load", each question as "asked component key offered-size", "unload", and what a
 * call back into the product gave. It takes no memory from the heap: allocations are made to fail.
 *
 * A line of provider.txt has six fields: component, key, action, two numbers, a text. The first
 * line that fits a question says how it is answered. A line for 0 1 says what loading does, and one
 * for 0 0 what unloading does. A line "0 2 version MAJOR MINOR -" changes the version.
 *
 *   reply STATUS SIZE HEX   returns STATUS and reports SIZE, whatever fits of the bytes written
 *   value 0 SIZE HEX        the same with status 0, or asks for a larger buffer
 *   length 0 0 -            answers with the length of provider.log, so never the same twice
 *
 * These do something first. Then the example answers, if the process goes on:
 *
 *   overrun AFTER BEFORE -  writes that many bytes behind the buffer, and before it
 *   thread PERIOD 0 -       starts a thread that never ends, and wakes after so many milliseconds
 *   upward 0 0 -            rounds floating-point numbers upward from now on
 *   keep 0 0 LIBRARY        loads that library for good; its own path keeps the provider loaded
 *   call 0 0 LIBRARY        asks both queries of the product
 *   write FILE 0 TEXT       writes TEXT and a line's end to that descriptor
 *   signal NUMBER 0 -       raises that signal
 *   fault 0 0 -             writes where nothing is
 *   except KIND 0 -         lets an exception out (see Throwing.cpp)
 *   quit | abort | hang     ends the process, or never returns; two numbers and a text follow
 *
 * A question without a line is answered by the example; one of the serialized query, which only a
 * library with all three exports has, is answered with an empty list. */
#define _GNU_SOURCE
#include <fcntl.h>
#include <fenv.h>
#include <inttypes.h>
#if !defined(_WIN32)
#include <poll.h>
#include <pthread.h>
#endif
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "Modules.h"

#if defined(_WIN32)
#define PROVIDER_EXPORT __declspec(dllexport)
#else
#define PROVIDER_EXPORT __attribute__((visibility("default")))
#endif

typedef uint32_t Query(uint64_t component, uint64_t key, void* buffer, uint64_t* size);
/* The example's query under another name. */
Query ExampleGetCapability;
PROVIDER_EXPORT uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor);
PROVIDER_EXPORT Query Soc_GetCapability;
PROVIDER_EXPORT Query Soc_GetCapabilitySerialized;
void ThrowException(uint64_t kind);
void Note(const char* text);

typedef struct {
  uint64_t component;
  uint64_t key;
  char action; /* the action's first letter */
  uint64_t status;
  uint64_t size;
  char text[1024];
} Rule;

static char script[16384];

/* Adds to the log and returns its length. */
static uint64_t addToLog(const char* text) {
  const int file = open("provider.log", O_WRONLY | O_APPEND | O_CREAT, 0644);
  if (write(file, text, (unsigned)strlen(text)) < 0) {
    _exit(3);
  }
  const uint64_t length = (uint64_t)lseek(file, 0, SEEK_END);
  close(file);
  return length;
}

void Note(const char* text) { (void)addToLog(text); }

/* Reads the script up to the first line that fits. */
static bool findRule(uint64_t component, uint64_t key, Rule* rule) {
  for (const char* line = script; *line != '\0'; line = strchr(line, '\n') + 1) {
    if (sscanf(line, "%" SCNu64 " %" SCNu64 " %c%*s %" SCNu64 " %" SCNu64 " %1023[^\n]",
               &rule->component, &rule->key, &rule->action, &rule->status, &rule->size,
               rule->text) == 6 &&
        rule->component == component && rule->key == key) {
      return true;
    }
  }
  return false;
}

/* Writes the bytes that the text spells, up to `offered`. */
static void writeHex(const char* text, uint8_t* buffer, uint64_t offered) {
  unsigned byte;
  for (; offered > 0 && sscanf(text, "%2x", &byte) == 1; text += 2, --offered) {
    *buffer++ = (uint8_t)byte;
  }
}

/* What a provider must not do: ask the product that is asking it. */
static void askBack(const char* library) {
  void* const product = openModule(library);
  Query* const askScalar = (Query*)findFunction(product, "Soc_GetCapability");
  Query* const askList = (Query*)findFunction(product, "Soc_GetCapabilitySerialized");
  char buffer[64];
  char line[64];
  uint64_t size = sizeof buffer;
  const uint32_t scalar = askScalar(2, 1, buffer, &size);
  size = sizeof buffer;
  const uint32_t list = askList(2, 16, buffer, &size);
  (void)snprintf(line, sizeof line, "call %" PRIu32 " %" PRIu32 "\n", scalar, list);
  Note(line);
  closeModule(product);
}

/* Leaves a thread that wakes after each `period` milliseconds. Its loop is the provider's own code,
 * so a thread that wakes after the unloading crashes. */
#if defined(_WIN32)
static DWORD WINAPI runForEver(void* period) {
  for (;;) {
    Sleep((DWORD)(uintptr_t)period);
  }
}
static void leaveThread(uintptr_t period) {
  CloseHandle(CreateThread(NULL, 0, runForEver, (void*)period, 0, NULL));
}
#else
static void* runForEver(void* period) {
  while (poll(NULL, 0, (int)(uintptr_t)period) >= 0) {
  }
  return NULL;
}
static void leaveThread(uintptr_t period) {
  pthread_t thread;
  if (pthread_create(&thread, NULL, runForEver, (void*)period) == 0) {
    pthread_detach(thread);
  }
}
#endif

/* What is to be done before the answer. Loading and unloading have no buffer. */
static void obey(const Rule* rule, uint8_t* buffer, uint64_t offered) {
  switch (rule->action) {
    case 'o':
      memset(buffer + offered, 0xEE, (size_t)rule->status);
      memset(buffer - rule->size, 0xEE, (size_t)rule->size);
      break;
    case 't':
      leaveThread((uintptr_t)rule->status);
      break;
    case 'u':
      (void)fesetround(FE_UPWARD);
      break;
    case 'k':
      (void)openModule(rule->text);
      break;
    case 'c':
      askBack(rule->text);
      break;
    case 'w': {
      const size_t length = strlen(rule->text);
      (void)!write((int)rule->status, rule->text, (unsigned)length);
      (void)!write((int)rule->status, "\n", 1);
      break;
    }
    case 's':
      (void)raise((int)rule->status);
      break;
    case 'f': {
      /* Not null, whose use UndefinedBehaviorSanitizer would report before the system does. */
      volatile char* volatile nowhere = (volatile char*)8;
      *nowhere = 0;
      break;
    }
    case 'e':
      ThrowException(rule->status);
      break;
    case 'q':
      exit(0);
    case 'h':
      for (volatile bool forever = true; forever;) {
      }
      break;
    default:
      abort();
  }
}

static void onStep(const char* step, uint64_t key) {
  Rule rule;
  Note(step);
  if (findRule(0, key, &rule)) {
    obey(&rule, NULL, 0);
  }
}

__attribute__((constructor)) static void onLoad(void) {
  const int file = open("provider.txt", O_RDONLY);
  (void)!read(file, script, sizeof script - 1);
  close(file);
  onStep("load\n", 1);
}

__attribute__((destructor)) static void onUnload(void) { onStep("unload\n", 0); }

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  Rule rule;
  const bool isScripted = findRule(0, 2, &rule);
  *major = isScripted ? (uint8_t)rule.status : 0;
  *minor = isScripted ? (uint8_t)rule.size : 1;
  return 0;
}

/* Answers by the script, or else as `unscripted` does. */
static uint32_t answer(Query* unscripted, uint64_t component, uint64_t key, void* buffer,
                       uint64_t* size) {
  Rule rule;
  char line[96];
  (void)snprintf(line, sizeof line, "asked %" PRIu64 " %" PRIu64 " %" PRIu64 "\n", component, key,
                 *size);
  const uint64_t logLength = addToLog(line);
  if (findRule(component, key, &rule)) {
    switch (rule.action) {
      case 'v':
        if (*size < rule.size) {
          *size = rule.size;
          return 4;
        }
        /* fall through */
      case 'r':
        writeHex(rule.text, buffer, *size);
        *size = rule.size;
        return (uint32_t)rule.status;
      case 'l':
        memcpy(buffer, &logLength, sizeof logLength);
        return 0;
      default:
        obey(&rule, buffer, *size);
    }
  }
  return unscripted(component, key, buffer, size);
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  return answer(ExampleGetCapability, component, key, buffer, size);
}

static uint32_t getEmptyList(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  (void)component;
  (void)key;
  (void)buffer;
  *size = 0;
  return 0;
}

uint32_t Soc_GetCapabilitySerialized(uint64_t component, uint64_t key, void* buffer,
                                     uint64_t* size) {
  return answer(getEmptyList, component, key, buffer, size);
}
