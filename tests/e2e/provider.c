/* The service-utilities provider of the end-to-end tests and of the tool's: the example provider,
 * made to misbehave.
 *
 * In the working directory of the process it reads provider.txt when it is loaded and writes
 * provider.log: "load", each question as "asked component key offered-size", "unload", and what a
 * call back into the product gave.
 *
 * A line of provider.txt has six fields: component, key, action, two numbers, a text. The first
 * line that fits a question says how it is answered, and one for 0 0 what unloading does:
 *
 *   reply STATUS SIZE HEX   returns STATUS and reports SIZE, whatever fits of the bytes written
 *   call 0 0 LIBRARY        asks both queries of the product, then answers
 *   print 0 0 TEXT          writes TEXT to standard output, then answers
 *   tell 0 0 TEXT           writes TEXT and a line's end to descriptor 3, then answers
 *   signal NUMBER 0 -       raises that signal, then answers
 *   fault 0 0 -             writes where nothing is
 *   except KIND 0 -         lets an exception out (see Throwing.cpp), then answers; only in a
 *                           provider that is compiled with THROWS
 *   quit | abort | hang     ends the process, or never returns; two numbers and a text follow
 *
 * A question without a line is answered by the example. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "Host.h"

#if defined(_WIN32)
#define PROVIDER_EXPORT __declspec(dllexport)
#else
#define PROVIDER_EXPORT __attribute__((visibility("default")))
#endif

/* The example's query under another name. */
uint32_t ExampleGetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size);
PROVIDER_EXPORT uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor);
PROVIDER_EXPORT uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer,
                                           uint64_t* size);
#if defined(THROWS)
void ThrowException(uint64_t kind);
#endif

enum { MAX_TEXT = 1024 };

typedef struct {
  char action; /* the action's first letter */
  uint64_t status;
  uint64_t size;
  char text[MAX_TEXT];
} Rule;

static char script[16384];

static void logLine(const char* word, const uint64_t* numbers, size_t count) {
  char line[128];
  char* const end = line + sizeof line;
  char* first = end;
  *--first = '\n';
  while (count > 0) {
    uint64_t rest = numbers[--count];
    do {
      *--first = (char)('0' + rest % 10);
    } while ((rest /= 10) != 0);
    *--first = ' ';
  }
  first -= strlen(word);
  memcpy(first, word, strlen(word));
  HostAppend("provider.log", first, (size_t)(end - first));
}

__attribute__((constructor)) static void onLoad(void) {
  script[HostRead("provider.txt", script, sizeof script - 1)] = '\0';
  logLine("load", NULL, 0);
}

static const char* skipBlanks(const char* text) { return text + strspn(text, " \n"); }

/* Reads the script, which is well-formed, up to the first line that fits. */
static bool findRule(uint64_t component, uint64_t key, Rule* rule) {
  const char* line = skipBlanks(script);
  while (*line != '\0') {
    char* rest;
    const uint64_t ofComponent = strtoull(line, &rest, 0);
    const uint64_t ofKey = strtoull(rest, &rest, 0);
    rule->action = *skipBlanks(rest);
    rest = strchr(skipBlanks(rest), ' ');
    rule->status = strtoull(rest, &rest, 0);
    rule->size = strtoull(rest, &rest, 0);
    line = skipBlanks(rest);
    const size_t length = strcspn(line, "\n");
    memcpy(rule->text, line, length);
    rule->text[length] = '\0';
    line = skipBlanks(line + length);
    if (ofComponent == component && ofKey == key) {
      return true;
    }
  }
  return false;
}

/* Writes the bytes that the text spells, up to `offered`. */
static void writeHex(const char* text, uint8_t* buffer, uint64_t offered) {
  for (const char* end = text + strlen(text); end - text >= 2 && offered > 0;
       text += 2, --offered) {
    const char pair[] = {text[0], text[1], '\0'};
    *buffer++ = (uint8_t)strtoul(pair, NULL, 16);
  }
}

/* What a provider must not do: ask the product that is asking it. */
static void askBack(const char* library) {
  void* const product = HostOpen(library);
  char buffer[512];
  uint64_t size = 8;
  uint64_t listSize = sizeof buffer;
  const HostQuery scalar = (HostQuery)HostSymbol(product, "Soc_GetCapability");
  const HostQuery list = (HostQuery)HostSymbol(product, "Soc_GetCapabilitySerialized");
  const uint64_t statuses[] = {scalar(2, 1, buffer, &size), list(2, 16, buffer, &listSize)};
  logLine("call", statuses, 2);
  HostClose(product);
}

/* What is to be done before the answer. */
static void obey(const Rule* rule) {
  switch (rule->action) {
    case 'c':
      askBack(rule->text);
      break;
    case 'p':
      (void)puts(rule->text);
      (void)fflush(stdout);
      break;
    case 't':
      HostAppend("/dev/fd/3", rule->text, strlen(rule->text));
      HostAppend("/dev/fd/3", "\n", 1);
      break;
    case 's':
      (void)raise((int)rule->status);
      break;
    case 'f': {
      volatile char* volatile nowhere = NULL;
      *nowhere = 0;
      break;
    }
#if defined(THROWS)
    case 'e':
      ThrowException(rule->status);
      break;
#endif
    case 'q':
      exit(0);
    case 'a':
      abort();
    default:
      for (volatile bool forever = true; forever;) {
      }
  }
}

__attribute__((destructor)) static void onUnload(void) {
  Rule rule;
  logLine("unload", NULL, 0);
  if (findRule(0, 0, &rule)) {
    obey(&rule);
  }
}

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return 0;
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  Rule rule;
  logLine("asked", (const uint64_t[]){component, key, *size}, 3);
  if (findRule(component, key, &rule)) {
    if (rule.action == 'r') {
      writeHex(rule.text, buffer, *size);
      *size = rule.size;
      return (uint32_t)rule.status;
    }
    obey(&rule);
  }
  return ExampleGetCapability(component, key, buffer, size);
}
