// Preloaded into a program, it says on the standard error what a variable is when the program loads
// a module, and when it ends: "NAME: VALUE" in a line each.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/e2e/overlay/environment_witness.h"

namespace {

void say(const char* when) {
    const char* value = std::getenv(skavlo::kWitnessedVariable);
    std::fprintf(stderr, "%s: %s\n", when, value ? value : "(none)");
}

__attribute__((destructor)) void sayAtTheEnd() {
    say(skavlo::kWitnessedEnd);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* dlopen(const char* path, int flags) {
    const char* slash = path ? std::strrchr(path, '/') : nullptr;
    if (slash) say(slash + 1);
    return reinterpret_cast<decltype(&dlopen)>(dlsym(RTLD_NEXT, "dlopen"))(path, flags);
}
