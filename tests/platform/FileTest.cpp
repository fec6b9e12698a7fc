#include "platform/file/File.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <numeric>

#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "tests/platform/SystemFaults.h"
#include "tests/support/ScopedFile.h"

namespace {

class File : public testing::Test {
protected:
    UniqueHandle Open(const std::string& name, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL) const {
        return TakeFile(CreateFileW(m_folder.Wide(name).c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition, flags,
                                    nullptr));
    }
    std::string Contents(const std::string& name) const { return FileContents(m_folder.Native(name)); }

    TempFolder m_folder;
};

std::string ReadAll(HANDLE file, DWORD size) {
    std::string bytes(size, '?');
    DWORD done = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), size, &done, nullptr));
    bytes.resize(done);
    return bytes;
}

TEST_F(File, WhatIsNoFileIsRefusedWithoutWaiting) {
    ASSERT_EQ(mkfifo(m_folder.Native("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(m_folder.Native("folder").c_str(), 0700), 0);
    alarm(20);  // what would wait for the other end dies here
    EXPECT_FALSE(Open("fifo", OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_FALSE(Open("folder", OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    alarm(0);
}

TEST_F(File, AnErrorMidwayTellsHowMuchWasWrittenAndThatNothingWasRead) {
    const UniqueHandle file = Open("f", CREATE_NEW);
    DWORD done = 7;
    {
        const WithFaults faults({.longest = 4, .callsUntilError = 2, .error = ENOSPC});
        EXPECT_FALSE(WriteFile(file.get(), "0123456789", 10, &done, nullptr));
    }
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(SetFilePointer(file.get(), 0, nullptr, FILE_CURRENT), 8u);
    EXPECT_EQ(Contents("f"), "01234567");
    SetFilePointer(file.get(), 1, nullptr, FILE_BEGIN);
    {
        const WithFaults faults({.longest = 4, .callsUntilError = 1, .error = EIO});
        EXPECT_FALSE(ReadFile(file.get(), std::string(9, 0).data(), 9, &done, nullptr));
    }
    EXPECT_EQ(GetLastError(), ERROR_IO_DEVICE);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(ReadAll(file.get(), 10), "1234567");
}

TEST_F(File, InterruptedAndShortCallsAreCompleted) {
    const UniqueHandle file = Open("f", CREATE_NEW);
    std::string bytes(1000, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    const WithFaults faults({.interruptions = 2, .longest = 7});
    DWORD done = 0;
    EXPECT_TRUE(WriteFile(file.get(), bytes.data(), 1000, &done, nullptr));
    EXPECT_EQ(done, 1000u);
    EXPECT_EQ(Contents("f"), bytes);
    SetFilePointer(file.get(), 0, nullptr, FILE_BEGIN);
    EXPECT_EQ(ReadAll(file.get(), 2000), bytes);
    EXPECT_GT(faults.CallsSeen(), 2 * 3 * 1000 / 7);
}

TEST_F(File, OneThatGoesWithItsHandleIsNobodyElsesFromTheStart) {
    constexpr DWORD kGone = FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE;
    std::ofstream(m_folder.Native("taken")) << "theirs";
    for (const char* name : {"taken", "free"}) {
        const UniqueHandle file = Open(name, OPEN_ALWAYS, kGone);
        DWORD done = 0;
        ASSERT_TRUE(WriteFile(file.get(), "mine!!", 6, &done, nullptr));
        EXPECT_EQ(Contents("taken"), "theirs");
        EXPECT_FALSE(std::filesystem::exists(m_folder.Native("free")));
    }
    EXPECT_FALSE(Open("taken", OPEN_EXISTING, kGone));
    EXPECT_FALSE(Open("no folder/a", OPEN_ALWAYS, kGone));
}

}  // namespace
