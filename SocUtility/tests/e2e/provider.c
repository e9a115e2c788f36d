/* The service-utilities provider of the end-to-end tests: the example provider, made to misbehave.
 *
 * In the working directory of the process it reads provider.txt when it is loaded and writes
 * provider.log: "load", each question as "component key offered-size", "unload", and what a call
 * back into the product gave.
 *
 * A line of provider.txt has six fields: component, key (0: any), action, two numbers, a text. The
 * first line that fits a question says how it is answered:
 *   reply STATUS SIZE HEX   returns STATUS and reports SIZE, whatever fits of the bytes written
 *   answer 0 0 HEX          answers these bytes as a provider should
 *   grow LIMIT 0 -          asks for one byte more until LIMIT bytes are offered, then answers
 *   call 0 0 LIBRARY        asks both queries of the product, then answers
 * A question without a line is answered by the example. */
#include <stdlib.h>
#include <string.h>

#include "Host.h"

#if defined(_WIN32)
#define PROVIDER_EXPORT __declspec(dllexport)
#else
#define PROVIDER_EXPORT __attribute__((visibility("default")))
#endif

typedef uint32_t (*QueryFunction)(uint64_t, uint64_t, void*, uint64_t*);

/* The example's query under another name. */
uint32_t ExampleGetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size);
PROVIDER_EXPORT uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor);
PROVIDER_EXPORT uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer,
                                           uint64_t* size);

enum { MAX_TEXT = 1024 };

typedef struct {
  uint64_t component;
  uint64_t key;
  char action; /* the action's first letter */
  uint64_t status;
  uint64_t size;
  char text[MAX_TEXT];
} Rule;

static char script[16384];

static void logLine(const char* word, const uint64_t* numbers, size_t count) {
  char line[128];
  char* end = line + strlen(strcpy(line, word));
  for (size_t i = 0; i < count; ++i) {
    char digits[20];
    size_t length = 0;
    uint64_t rest = numbers[i];
    do {
      digits[length++] = (char)('0' + rest % 10);
    } while ((rest /= 10) != 0);
    if (end != line) {
      *end++ = ' ';
    }
    while (length > 0) {
      *end++ = digits[--length];
    }
  }
  *end++ = '\n';
  HostAppend("provider.log", line, (size_t)(end - line));
}

__attribute__((constructor)) static void onLoad(void) {
  script[HostRead("provider.txt", script, sizeof script - 1)] = '\0';
  logLine("load", NULL, 0);
}

__attribute__((destructor)) static void onUnload(void) { logLine("unload", NULL, 0); }

static const char* skipBlanks(const char* text) { return text + strspn(text, " \n"); }

/* Reads a line of the script, which is well-formed; null at the end. */
static const char* readRule(const char* line, Rule* rule) {
  char* rest;
  line = skipBlanks(line);
  if (*line == '\0') {
    return NULL;
  }
  rule->component = strtoull(line, &rest, 0);
  rule->key = strtoull(rest, &rest, 0);
  line = skipBlanks(rest);
  rule->action = *line;
  rule->status = strtoull(line + strcspn(line, " "), &rest, 0);
  rule->size = strtoull(rest, &rest, 0);
  line = skipBlanks(rest);
  const size_t length = strcspn(line, "\n");
  memcpy(rule->text, line, length);
  rule->text[length] = '\0';
  return line + length;
}

static bool findRule(uint64_t component, uint64_t key, Rule* rule) {
  for (const char* line = readRule(script, rule); line != NULL; line = readRule(line, rule)) {
    if ((rule->component == 0 || rule->component == component) &&
        (rule->key == 0 || rule->key == key)) {
      return true;
    }
  }
  return false;
}

/* Writes the bytes that the text spells, up to `offered`; returns how many it spells. */
static uint64_t writeHex(const char* text, void* buffer, uint64_t offered) {
  const uint64_t length = *text == '-' ? 0 : strlen(text) / 2;
  for (uint64_t i = 0; i < length && i < offered; ++i) {
    const char pair[] = {text[2 * i], text[2 * i + 1], '\0'};
    ((uint8_t*)buffer)[i] = (uint8_t)strtoul(pair, NULL, 16);
  }
  return length;
}

/* What a provider must not do: ask the product that is asking it. */
static void askBack(const char* library) {
  void* const product = HostOpen(library);
  char buffer[512];
  uint64_t size = 8;
  uint64_t listSize = sizeof buffer;
  const QueryFunction scalar = (QueryFunction)HostSymbol(product, "Soc_GetCapability");
  const QueryFunction list = (QueryFunction)HostSymbol(product, "Soc_GetCapabilitySerialized");
  const uint64_t statuses[] = {scalar(2, 1, buffer, &size), list(2, 16, buffer, &listSize)};
  logLine("call", statuses, 2);
  HostClose(product);
}

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return 0;
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  const uint64_t offered = *size;
  Rule rule;
  logLine("", (const uint64_t[]){component, key, offered}, 3);
  if (!findRule(component, key, &rule)) {
    return ExampleGetCapability(component, key, buffer, size);
  }
  switch (rule.action) {
    case 'r':
      writeHex(rule.text, buffer, offered);
      *size = rule.size;
      return (uint32_t)rule.status;
    case 'a':
      *size = writeHex(rule.text, buffer, offered);
      return *size > offered ? 4 : 0;
    case 'g':
      if (offered < rule.status) {
        *size = offered + 1;
        return 4;
      }
      break;
    default:
      askBack(rule.text);
  }
  return ExampleGetCapability(component, key, buffer, size);
}
