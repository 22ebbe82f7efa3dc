// A host program of the gateway for Linux. Usage: host SETTINGS primary|secondary

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>

int main(int argc, char** argv) {
    // The gateway library is in the folder of this program, wherever it was started from.
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    const std::filesystem::path file = program.parent_path() / "libQuorinGatewayHttp.so";
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    using MainFunc = int(int, char**);
    const auto run = library != nullptr
                         ? reinterpret_cast<MainFunc*>(dlsym(library, "QuorinGatewayHttpMainFunc"))
                         : nullptr;
    if (run == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 3;
    }
    return run(argc, argv); // returns after a stop; ends the process if the start fails
}
