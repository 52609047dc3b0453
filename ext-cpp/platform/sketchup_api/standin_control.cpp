// Call counting and fault injection. The stand-in, like the SDK it imitates, is used from
// one thread at a time, so the counters are plain.

#include <sketchup_api_standin.h>

#include <cstring>

#include "standin_internal.h"

namespace standin {

namespace {

struct Site {
  size_t calls;
  size_t fail_at;  // the call number that fails; 0 with armed set means every call
  SUResult code;
  bool armed;
  size_t size;  // the size reported instead of the true one, when size_pending is set
  size_t size_at;  // the call number that reports it; 0 means every call
  bool size_pending;
};

constexpr unsigned kFunctionCount = static_cast<unsigned>(Fn::Count);

Site sites[kFunctionCount];

constexpr const char* kNames[kFunctionCount] = {
#define STANDIN_NAME(name) #name,
    STANDIN_FUNCTIONS(STANDIN_NAME)
#undef STANDIN_NAME
};

Site* find_site(const char* name) {
  if (name == nullptr) return nullptr;
  for (unsigned i = 0; i < kFunctionCount; ++i) {
    if (std::strcmp(kNames[i], name) == 0) return &sites[i];
  }
  return nullptr;
}

}  // namespace

size_t live_strings = 0;
size_t live_typed_values = 0;

SUResult enter(Fn function) {
  Site& site = sites[static_cast<unsigned>(function)];
  ++site.calls;
  if (site.armed && (site.fail_at == 0 || site.fail_at == site.calls)) return site.code;
  return SU_ERROR_NONE;
}

SUResult report_size(Fn function, SUResult result, size_t* size) {
  Site& site = sites[static_cast<unsigned>(function)];
  if (result == SU_ERROR_NONE && site.size_pending &&
      (site.size_at == 0 || site.size_at == site.calls)) {
    *size = site.size;
  }
  return result;
}

}  // namespace standin

extern "C" {

int su_standin_report_size(const char* function, size_t size, size_t nth) {
  standin::Site* site = standin::find_site(function);
  if (site == nullptr) return 0;
  site->size = size;
  site->size_at = nth == 0 ? 0 : site->calls + nth;
  site->size_pending = true;
  return 1;
}

int su_standin_fail(const char* function, SUResult code, size_t nth) {
  standin::Site* site = standin::find_site(function);
  if (site == nullptr) return 0;
  site->armed = true;
  site->code = code;
  site->fail_at = nth == 0 ? 0 : site->calls + nth;
  return 1;
}

void su_standin_reset(void) {
  for (standin::Site& site : standin::sites) site = standin::Site{};
}

size_t su_standin_calls(const char* function) {
  const standin::Site* site = standin::find_site(function);
  return site == nullptr ? 0 : site->calls;
}

size_t su_standin_live_strings(void) { return standin::live_strings; }

size_t su_standin_live_typed_values(void) { return standin::live_typed_values; }

}  // extern "C"
