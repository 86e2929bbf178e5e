// Owners of what the provider hands out, so that it goes back on every path: for the bridge and for the list of
// profiles alike.
#pragma once

#include "net/provider.h"
#include "runtime/mg_file.h"

#include <memory>

namespace vorma {

// The library, loaded for as long as somebody holds it.
class ProviderLibrary {
public:
    ProviderLibrary() { file_.LoadLib(provider_library.c_str()); }

    template <class Function>
    void fetch(Function& function, const char* name) {
        function = reinterpret_cast<Function>(file_.GetLibFunc(name));
    }

private:
    MGFile file_;
};

// A context, released when its last holder goes, and always before the library. Null is fine.
inline std::shared_ptr<void> own_context(const std::shared_ptr<ProviderLibrary>& library,
                                         decltype(&TRELM_Uninitialize) uninitialize, void* context) {
    return {context, [library, uninitialize](void* released) {
                if (released) uninitialize(released);
            }};
}

// A block that the provider fills.
class ProviderBlock {
public:
    ProviderBlock(decltype(&TRELM_FreeMem) free_mem, void* context) : free_mem_(free_mem), context_(context) {}
    ~ProviderBlock() {
        if (block.data) free_mem_(context_, block.data);
    }
    ProviderBlock(const ProviderBlock&) = delete;
    ProviderBlock& operator=(const ProviderBlock&) = delete;

    mem_blk block;

private:
    decltype(&TRELM_FreeMem) free_mem_;
    void* context_;
};

} // namespace vorma
