// What stands in place of the platform's entry notifications: a loadable module gets its entry function
// called when it is loaded and before it goes, with the handle that a loader of the module gets.
//
//   BOOL ModuleEntry(HMODULE instance, DWORD reason, void* reserved);
//   static const ModuleEntryNotifier s_entry(&ModuleEntry);
//
// stands in the file that is linked last into the module. Its static objects are then built last: the attach
// comes after all static constructors, and the detach before all static destructors, at unload and at
// process exit alike. A static object inside a function that first runs later is gone before the detach.
#pragma once

#include "platform/base/Types.h"

inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD DLL_PROCESS_ATTACH = 1;

// `instance` is null where the module couldn't be attached, for want of its layer or of memory. `reserved` is
// always null, and the result is not heeded: a module can't refuse to be loaded.
using ModuleEntryFunction = BOOL (*)(HMODULE instance, DWORD reason, void* reserved);

// For ModuleEntryNotifier. Notes the module that holds `address`, with its whole path while a relative one
// can still be followed, and returns its handle; null where there is no memory for that.
VL_PLATFORM_API HMODULE VlModuleAttached(const void* address);
VL_PLATFORM_API void VlModuleDetached(HMODULE instance);

class ModuleEntryNotifier {
public:
    explicit ModuleEntryNotifier(ModuleEntryFunction entry)
        : m_entry(entry), m_instance(VlModuleAttached(reinterpret_cast<const void*>(entry))) {
        m_entry(m_instance, DLL_PROCESS_ATTACH, nullptr);
    }
    ModuleEntryNotifier(const ModuleEntryNotifier&) = delete;
    ModuleEntryNotifier& operator=(const ModuleEntryNotifier&) = delete;
    ~ModuleEntryNotifier() {
        m_entry(m_instance, DLL_PROCESS_DETACH, nullptr);
        VlModuleDetached(m_instance);
    }

private:
    ModuleEntryFunction m_entry;
    HMODULE m_instance;
};
