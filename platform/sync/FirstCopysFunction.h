// A function that makes or opens named objects, as the copy of the layer has it that does so for all
// (FirstCopy.h). Static objects, of the file that defines the function here:
//
//   const FirstCopysFunction<decltype(CreateMutexA)> s_createMutex("VlCreateMutexA");
//
//   if (s_createMutex.IsFor(name)) return s_createMutex(security, initialOwner, name);
#pragma once

#include "platform/base/LastError.h"
#include "platform/sync/posix/FirstCopy.h"

template <class Function>
class FirstCopysFunction {
public:
    explicit FirstCopysFunction(const char* symbol)
        : m_function(reinterpret_cast<Function*>(FirstCopy::Find(symbol))),
          m_lastError(reinterpret_cast<decltype(&GetLastError)>(FirstCopy::Find("VlGetLastError"))) {}

    // What has no name is of the copy that is asked.
    bool IsFor(const char* name) const { return m_function && name && *name; }

    template <class... Arguments>
    HANDLE operator()(Arguments... arguments) const {
        const HANDLE handle = m_function(arguments...);
        SetLastError(m_lastError());  // each copy has its own
        return handle;
    }

private:
    Function* m_function;
    DWORD (*m_lastError)();
};
