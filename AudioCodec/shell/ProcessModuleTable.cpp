#include "AudioCodec/shell/ProcessModuleTable.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <utility>

#include "platform/base/Border.h"
#include "platform/base/Process.h"
#include "platform/file/File.h"
#include "platform/file/FileMapping.h"
#include "platform/file/TempFolder.h"
#include "platform/loader/Library.h"
#include "platform/sync/ForkPass.h"

namespace {

constexpr const char* kMutexPrefix = "~VLMMN_";
constexpr const char* kMappingPrefix = "~VLMMO_";
constexpr const char* kFilePrefix = "~VLMFN_";
constexpr DWORD kTableSize = ProcessModuleTable::kWords * sizeof(uint64_t);
static_assert(kTableSize == 2040);

using CleanUp = void (*)(void* reserved, uint8_t flag);
constexpr const char* kCleanUpExport = "DllVlCleanUpBeforeUnload";

// What an object of this process is called: no two processes have the same.
struct ObjectName {
    ObjectName(const char* prefix, uint32_t processId) {
        std::snprintf(text, sizeof(text), "%s%08X", prefix, processId);
    }
    char text[32] = "";
};

}  // namespace

ProcessModuleTable::ProcessModuleTable() : m_processId(GetCurrentProcessId()) { Create({}); }

void ProcessModuleTable::Create(const Words& words) {
    AtBorder([this](bool) { LetGo(); },
             [&] {
                 m_lock = std::make_unique<ModuleTableLock>(ObjectName(kMutexPrefix, m_processId).text);
                 m_filePath = TempFolderPath() + ObjectName(kFilePrefix, m_processId).text;
                 Attach(words);
             });
}

ProcessModuleTable::~ProcessModuleTable() { LetGo(); }

void ProcessModuleTable::LetGo() {
    m_lock.reset();
    if (m_view) UnmapViewOfFile(m_view);
    m_view = nullptr;
    m_mapping.reset();
    m_file.reset();
}

bool ProcessModuleTable::OpenMapping() {
    const ObjectName name(kMappingPrefix, m_processId);
    // Looked for before it is made, under the lock of Attach: of two modules that come at once only
    // one finds none.
    m_mapping.reset(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, name.text));
    if (m_mapping) return false;  // another module of the process was the first
    // The memory needs a file under it. It goes with its last user, also when the process is killed.
    m_file = TakeFile(CreateFileA(m_filePath.c_str(), GENERIC_READ | GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (m_file)
        m_mapping.reset(CreateFileMappingA(m_file.get(), nullptr, PAGE_READWRITE, 0, kTableSize, name.text));
    return true;
}

// Not at the fork: most children start another program, and are to be spared the file.
void ProcessModuleTable::FollowProcess() {
    if (m_processId == GetCurrentProcessId()) return;
    const ProcessLock lock(m_follow);
    if (m_processId == GetCurrentProcessId()) return;
    // The parent's table may have changed since: a module that isn't loaded here is passed over when its turn
    // comes.
    Words words = {};
    if (m_view) std::copy_n(m_view, kWords, words.begin());
    LetGo();
    m_processId = GetCurrentProcessId();
    Create(words);
}

void ProcessModuleTable::Attach(const Words& words) {
    const ModuleTableLock::Scope scope(*m_lock);
    if (m_view) return;
    const bool isNew = OpenMapping();
    if (!m_mapping) return;
    m_view = static_cast<uint64_t*>(MapViewOfFile(m_mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, 0));
    // Filled before the lock is left, since whoever finds the table believes its count. One that is there is
    // left as it is: it holds the entries of others.
    if (m_view && isNew) std::copy(words.begin(), words.end(), m_view);
}

// One word under the lock, for a caller that doesn't hold it: the table may have changed by the next call.
uint64_t ProcessModuleTable::WordAt(uint64_t place) const {
    const ModuleTableLock::Scope scope(*m_lock);
    return m_view[place];
}

void ProcessModuleTable::NotifyModules(uint8_t flag) {
    if (!m_lock || !m_view) return;
    if (m_view[0] == 0) return;  // most often: a child that ends needs no table for that
    FollowProcess();
    if (!m_lock || !m_view) return;
    // The count is read afresh each time: a clean-up may change the table. Nothing is looked up under
    // the lock: the loader has one of its own, which a thread that loads a module holds while that
    // waits for ours.
    for (uint64_t i = 1; i <= WordAt(0) && i < kWords; ++i) {
        const uint64_t word = WordAt(i);
        const auto module = std::bit_cast<HMODULE>(word);
        const auto cleanUp =
            word == 0 ? nullptr : reinterpret_cast<CleanUp>(GetProcAddress(module, kCleanUpExport));
        if (!cleanUp) continue;
        const ModuleTableLock::Scope scope(*m_lock);
        // The lock was not held meanwhile. A module that has taken its entry out may be unloaded by now.
        if (m_view[i] == word) cleanUp(nullptr, flag);
    }
}

void ProcessModuleTable::CleanUpBeforeUnload(uint8_t flag) {
    NotifyModules(flag);
    for (const HMODULE library : std::exchange(m_libraries, {})) FreeLibrary(library);
}
