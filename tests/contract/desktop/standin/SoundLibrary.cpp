// A sound library that makes no sound: it keeps the names of the files that it is to play.

#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

std::vector<std::string> files;
int contexts = 0;

}  // namespace

struct ca_context {};

EXPORTED int ca_context_create(ca_context** context) {
  *context = new ca_context;
  ++contexts;
  return 0;
}

EXPORTED int ca_context_destroy(ca_context* context) {
  delete context;
  --contexts;
  return 0;
}

EXPORTED int ca_context_play(ca_context* context, std::uint32_t id, ...) {
  if (!context) {
    return -1;
  }
  std::va_list properties;
  va_start(properties, id);
  while (const char* const key = va_arg(properties, const char*)) {
    const char* const value = va_arg(properties, const char*);
    if (std::strcmp(key, "media.filename") == 0) {
      files.emplace_back(value);
    }
  }
  va_end(properties);
  return 0;
}

EXPORTED std::vector<std::string>* playedFiles() { return &files; }
EXPORTED int* openContexts() { return &contexts; }
