// A library with the wizard plugin's file name but without its entry point.

#include <cstdint>

extern "C" __attribute__((visibility("default"))) std::int32_t CreateSomethingElse() {
    return 0;
}
