#include "platform/loader/StringResources.h"

#include <map>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/loader/posix/LoadedModule.h"
#include "platform/sync/ForkPass.h"

namespace {

using Blocks = std::span<const StringBlock>;

struct BlockTables {
    Mutex lock;
    std::map<HMODULE, Blocks> tables VL_GUARDED_BY(lock);

    // Built by the first module that has resources, and gone after the last.
    static BlockTables& Instance() {
        const ForkPass pass;
        static BlockTables instance;
        return instance;
    }
};

Blocks BlocksOf(HMODULE module) {
    BlockTables& all = BlockTables::Instance();
    const ProcessLock held(all.lock);
    const auto found = all.tables.find(module);
    return found == all.tables.end() ? Blocks() : found->second;
}

std::nullptr_t NotFound(DWORD error) {
    SetLastError(error);
    return nullptr;
}

}  // namespace

HMODULE VlAddStringBlocks(const StringBlock* blocks, size_t count) {
    return AtBorder(nullptr, [blocks, count]() -> HMODULE {
        const HMODULE module = FindLoadedModule(blocks).handle;
        BlockTables& all = BlockTables::Instance();
        const ProcessLock held(all.lock);
        all.tables[module] = Blocks(blocks, count);
        return module;
    });
}

void VlRemoveStringBlocks(HMODULE module) {
    BlockTables& all = BlockTables::Instance();
    const ProcessLock held(all.lock);
    all.tables.erase(module);
}

HRSRC FindResourceExW(HMODULE module, const WCHAR* type, const WCHAR* name, WORD language) {
    const Blocks blocks = BlocksOf(module ? module : FindProgram());
    if (blocks.empty()) return NotFound(ERROR_RESOURCE_DATA_NOT_FOUND);
    if (type != RT_STRING) return NotFound(ERROR_RESOURCE_TYPE_NOT_FOUND);
    DWORD error = ERROR_RESOURCE_NAME_NOT_FOUND;
    for (const StringBlock& block : blocks) {
        if (MAKEINTRESOURCEW(block.name) != name) continue;
        if (block.language == language) return &block;
        error = ERROR_RESOURCE_LANG_NOT_FOUND;
    }
    return NotFound(error);
}

HGLOBAL LoadResource(HMODULE /*module*/, HRSRC resource) {
    if (!resource) return NotFound(ERROR_RESOURCE_DATA_NOT_FOUND);
    return static_cast<const StringBlock*>(resource)->units;
}

const void* LockResource(HGLOBAL data) { return data; }

DWORD SizeofResource(HMODULE /*module*/, HRSRC resource) {
    if (resource) return static_cast<const StringBlock*>(resource)->size;
    SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
    return 0;
}
