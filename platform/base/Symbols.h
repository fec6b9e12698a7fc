// What the layer's functions are called where modules meet: each bears the prefix "Vl" before the platform's
// own name there, since a host may well have a function `ReadFile` of its own, and of two that have one name
// the system takes the first for all. In the code the platform's names stay. A function that is missing here
// is shown by no library, and whoever calls it doesn't link.
#pragma once

// clang-format off
#pragma redefine_extname CloseHandle VlCloseHandle
#pragma redefine_extname CoCreateInstance VlCoCreateInstance
#pragma redefine_extname CoTaskMemAlloc VlCoTaskMemAlloc
#pragma redefine_extname CoTaskMemFree VlCoTaskMemFree
#pragma redefine_extname CreateEventA VlCreateEventA
#pragma redefine_extname CreateFileA VlCreateFileA
#pragma redefine_extname CreateFileMappingA VlCreateFileMappingA
#pragma redefine_extname CreateFileW VlCreateFileW
#pragma redefine_extname CreateMutexA VlCreateMutexA
#pragma redefine_extname CreateSemaphoreA VlCreateSemaphoreA
#pragma redefine_extname CreateThread VlCreateThread
#pragma redefine_extname DeleteCriticalSection VlDeleteCriticalSection
#pragma redefine_extname DeleteFileW VlDeleteFileW
#pragma redefine_extname EnterCriticalSection VlEnterCriticalSection
#pragma redefine_extname FindResourceExW VlFindResourceExW
#pragma redefine_extname FlushFileBuffers VlFlushFileBuffers
#pragma redefine_extname FreeLibrary VlFreeLibrary
#pragma redefine_extname GetCurrentProcessId VlGetCurrentProcessId
#pragma redefine_extname GetFileSize VlGetFileSize
#pragma redefine_extname GetLastError VlGetLastError
#pragma redefine_extname GetModuleFileNameA VlGetModuleFileNameA
#pragma redefine_extname GetModuleFileNameW VlGetModuleFileNameW
#pragma redefine_extname GetProcAddress VlGetProcAddress
#pragma redefine_extname GetSystemInfo VlGetSystemInfo
#pragma redefine_extname GetSystemTimeAsFileTime VlGetSystemTimeAsFileTime
#pragma redefine_extname GetTempPathA VlGetTempPathA
#pragma redefine_extname InitializeCriticalSection VlInitializeCriticalSection
#pragma redefine_extname LeaveCriticalSection VlLeaveCriticalSection
#pragma redefine_extname LoadLibraryExA VlLoadLibraryExA
#pragma redefine_extname LoadResource VlLoadResource
#pragma redefine_extname LockResource VlLockResource
#pragma redefine_extname lstrcmpiW VllstrcmpiW
#pragma redefine_extname MapViewOfFile VlMapViewOfFile
#pragma redefine_extname MultiByteToWideChar VlMultiByteToWideChar
#pragma redefine_extname OpenFileMappingA VlOpenFileMappingA
#pragma redefine_extname PathFindExtensionW VlPathFindExtensionW
#pragma redefine_extname ReadFile VlReadFile
#pragma redefine_extname RegCloseKey VlRegCloseKey
#pragma redefine_extname RegCreateKeyExA VlRegCreateKeyExA
#pragma redefine_extname RegDeleteKeyA VlRegDeleteKeyA
#pragma redefine_extname RegOpenKeyExA VlRegOpenKeyExA
#pragma redefine_extname RegQueryValueExA VlRegQueryValueExA
#pragma redefine_extname RegSetValueExA VlRegSetValueExA
#pragma redefine_extname ReleaseMutex VlReleaseMutex
#pragma redefine_extname ReleaseSemaphore VlReleaseSemaphore
#pragma redefine_extname ResetEvent VlResetEvent
#pragma redefine_extname SetEndOfFile VlSetEndOfFile
#pragma redefine_extname SetEvent VlSetEvent
#pragma redefine_extname SetFilePointer VlSetFilePointer
#pragma redefine_extname SetLastError VlSetLastError
#pragma redefine_extname SizeofResource VlSizeofResource
#pragma redefine_extname SysAllocString VlSysAllocString
#pragma redefine_extname SysFreeString VlSysFreeString
#pragma redefine_extname UnmapViewOfFile VlUnmapViewOfFile
#pragma redefine_extname VirtualAlloc VlVirtualAlloc
#pragma redefine_extname VirtualFree VlVirtualFree
#pragma redefine_extname WaitForMultipleObjects VlWaitForMultipleObjects
#pragma redefine_extname WaitForSingleObject VlWaitForSingleObject
#pragma redefine_extname WideCharToMultiByte VlWideCharToMultiByte
#pragma redefine_extname WriteFile VlWriteFile
// clang-format on
