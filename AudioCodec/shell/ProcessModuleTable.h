// The table of modules that the suite's modules of one process share, in memory that they find by name. A
// module that goes asks all that are listed to clean up first. This module only reads the table: entries are
// made by others, which use the same names.
//
//   word 0: count n | words 1 to n: handles of modules, 0 is a gap | 255 words of 64 bits in all
//
// A child of the process gets a table of its own, with what the parent's held, as soon as it uses the module:
// the parent's is memory that both would share, under a lock of which only one of them has the owner.
//
// Nothing here reports a failure: without the table the module works as ever, and asks nobody. The order of
// construction and destruction is the module's own, see UnloadCleanUp.h.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "AudioCodec/shell/ModuleTableLock.h"
#include "platform/base/UniqueHandle.h"
#include "platform/sync/Mutex.h"

class ProcessModuleTable {
public:
    static constexpr uint32_t kWords = 255;

    // Attaches to the process's table.
    ProcessModuleTable();
    ProcessModuleTable(const ProcessModuleTable&) = delete;
    ProcessModuleTable& operator=(const ProcessModuleTable&) = delete;
    // Lets go of it; the last module of the process takes it along.
    ~ProcessModuleTable();

    // In a child of the process that attached: leaves that one's table for the child's own. Else nothing.
    void FollowProcess();
    // Calls the clean-up of every listed module that has one, in order, with the flag, and under the lock.
    void NotifyModules(uint8_t flag);
    // The same, and then unloads the libraries that the module loaded for itself.
    void CleanUpBeforeUnload(uint8_t flag);

private:
    using Words = std::array<uint64_t, kWords>;

    void Create(const Words& words);
    void LetGo();
    void Attach(const Words& words);  // what a new table begins with
    bool OpenMapping();               // whether it is a new one
    uint64_t WordAt(uint64_t place) const;

    UniqueHandle m_mapping;
    UniqueHandle m_file;         // of the one that created the mapping
    uint64_t* m_view = nullptr;  // kWords words, or null
    std::unique_ptr<ModuleTableLock> m_lock;
    std::atomic<uint32_t> m_processId;
    Mutex m_follow;  // one thread of a child brings it its table
    std::string m_filePath;
    std::vector<HMODULE> m_libraries;  // to be unloaded at the end; none so far
};
