#include "platform/file/File.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <numeric>
#include <string>
#include <vector>

#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/ErrorTable.h"
#include "tests/platform/SystemFaults.h"
#include "tests/platform/TempFolder.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

class File : public testing::Test {
protected:
    UniqueHandle Open(const std::string& name, DWORD access, DWORD disposition, DWORD share = 0) const {
        return TakeFile(CreateFileW(m_folder.Wide(name).c_str(), access, share, nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    // The last error of a try to open; 0 if it went well.
    DWORD ErrorOf(const std::string& name, DWORD access, DWORD disposition, DWORD share = 0) const {
        SetLastError(0);
        return Open(name, access, disposition, share) ? 0 : GetLastError();
    }
    void Put(const std::string& name, const std::string& bytes) const {
        std::ofstream(m_folder.Native(name), std::ios::binary) << bytes;
    }
    std::string Contents(const std::string& name) const {
        std::ifstream in(m_folder.Native(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    TempFolder m_folder;
};

std::string ReadAll(HANDLE file, DWORD size) {
    std::string bytes(size, '?');
    DWORD done = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), size, &done, nullptr));
    bytes.resize(done);
    return bytes;
}

int64_t Move(HANDLE file, int64_t distance, DWORD method) {
    LARGE_INTEGER move = {};
    move.QuadPart = distance;
    SetLastError(0);
    move.u.LowPart = SetFilePointer(file, static_cast<LONG>(move.u.LowPart), &move.u.HighPart, method);
    return GetLastError() == 0 ? move.QuadPart : -1;
}

TEST_F(File, DispositionsCreateKeepEmptyAndRefuse) {
    struct Case {
        DWORD disposition;
        bool exists;
        DWORD error;
        std::string contents;
    };
    const Case cases[] = {
        {CREATE_NEW, false, 0, ""},      {CREATE_NEW, true, ERROR_FILE_EXISTS, "old"},
        {CREATE_ALWAYS, false, 0, ""},   {CREATE_ALWAYS, true, 0, ""},
        {OPEN_ALWAYS, false, 0, ""},     {OPEN_ALWAYS, true, 0, "old"},
        {OPEN_EXISTING, true, 0, "old"}, {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, ""},
    };
    for (const Case& c : cases) {
        unlink(m_folder.Native("f").c_str());
        if (c.exists) Put("f", "old");
        EXPECT_EQ(ErrorOf("f", kReadWrite, c.disposition), c.error) << c.disposition << c.exists;
        EXPECT_EQ(Contents("f"), c.contents) << c.disposition << c.exists;
    }
}

TEST_F(File, CreatesWhereALinkLeads) {
    ASSERT_EQ(symlink("target", m_folder.Native("link").c_str()), 0);
    EXPECT_EQ(ErrorOf("link", kReadWrite, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ErrorOf("link", kReadWrite, CREATE_ALWAYS), 0u);
    EXPECT_EQ(ErrorOf("target", GENERIC_READ, OPEN_EXISTING), 0u);
}

TEST_F(File, ArgumentsThatAreNotSupportedAreRefusedAloud) {
    Put("f", "old");
    const std::u16string path = m_folder.Wide("f");
    int something = 0;
    void* const given = &something;
    const auto error = [&](DWORD access, DWORD share, void* security, DWORD disposition, DWORD flags,
                           HANDLE like) {
        SetLastError(0);
        const UniqueHandle file =
            TakeFile(CreateFileW(path.c_str(), access, share, static_cast<SECURITY_ATTRIBUTES*>(security),
                                 disposition, flags, like));
        return file ? 0 : GetLastError();
    };
    EXPECT_EQ(error(GENERIC_READ | 1, 0, nullptr, OPEN_EXISTING, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error(0, 0, nullptr, OPEN_EXISTING, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error(GENERIC_READ, 4, nullptr, OPEN_EXISTING, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error(GENERIC_READ, 0, given, OPEN_EXISTING, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error(GENERIC_READ, 0, nullptr, 0, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error(GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0x40000000, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error(GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, given), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error(GENERIC_READ, 0, nullptr, CREATE_ALWAYS, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Contents("f"), "old");

    for (const WCHAR* none : {static_cast<const WCHAR*>(nullptr), u""}) {
        EXPECT_EQ(CreateFileW(none, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
                  INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    }
}

TEST_F(File, WhatIsNoFileIsRefusedWithoutWaiting) {
    ASSERT_EQ(mkfifo(m_folder.Native("fifo").c_str(), 0600), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    m_folder.Native("socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(mkdir(m_folder.Native("folder").c_str(), 0700), 0);

    alarm(20);  // what would wait for the other end dies here
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE, kReadWrite}) {
        EXPECT_EQ(ErrorOf("fifo", access, OPEN_EXISTING), ERROR_NOT_SUPPORTED);
        EXPECT_EQ(ErrorOf("socket", access, OPEN_EXISTING), ERROR_NOT_SUPPORTED);
        EXPECT_EQ(ErrorOf("folder", access, OPEN_EXISTING), ERROR_ACCESS_DENIED);
        EXPECT_EQ(ErrorOf("folder/", access, OPEN_ALWAYS), ERROR_ACCESS_DENIED);
    }
    alarm(0);
    close(listener);
}

TEST_F(File, PathsThatLeadNowhereTellWhy) {
    Put("f", "");
    ASSERT_EQ(symlink("loop", m_folder.Native("loop").c_str()), 0);
    EXPECT_EQ(ErrorOf("f/below", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(ErrorOf("loop", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(ErrorOf("none/f", kReadWrite, CREATE_ALWAYS), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ErrorOf(std::string(256, 'n'), kReadWrite, CREATE_NEW), ERROR_FILENAME_EXCED_RANGE);
}

TEST_F(File, NamesThatAreNoUtf8ReachTheSameFile) {
    const std::string name = "caf\xE9 \xE3\x83\xA2\xFF.wav";
    ASSERT_EQ(ErrorOf(name, kReadWrite, CREATE_NEW), 0u);
    EXPECT_EQ(access(m_folder.Native(name).c_str(), F_OK), 0);
}

TEST_F(File, AFileWithoutWritePermissionIsNotWrittenToByRootEither) {
    Put("f", "old");
    ASSERT_EQ(chmod(m_folder.Native("f").c_str(), 0444), 0);
    EXPECT_EQ(ErrorOf("f", kReadWrite, OPEN_EXISTING), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ErrorOf("f", GENERIC_WRITE, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ErrorOf("f", GENERIC_READ, OPEN_EXISTING), 0u);
    EXPECT_EQ(Contents("f"), "old");
}

TEST_F(File, ANewFileTakesItsPermissionsFromTheMask) {
    for (const auto& [mask, mode] : {std::pair<mode_t, mode_t>{027, 0640}, {0222, 0444}}) {
        const mode_t before = umask(mask);
        const std::string name = "f" + std::to_string(mask);
        EXPECT_EQ(ErrorOf(name, kReadWrite, CREATE_ALWAYS), 0u);  // its maker may write, whatever the mask
        umask(before);
        struct stat status = {};
        ASSERT_EQ(stat(m_folder.Native(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, mode);
    }
}

TEST_F(File, AHandleGivesOnlyTheRightsItWasOpenedWith) {
    const UniqueHandle writer = Open("f", GENERIC_WRITE, CREATE_NEW, kShareAll);
    const UniqueHandle reader = Open("f", GENERIC_READ, OPEN_EXISTING, kShareAll);
    char byte = 'x';
    DWORD done = 7;
    EXPECT_FALSE(ReadFile(writer.get(), &byte, 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(done, 0u);
    for (const auto& refused : {+[](HANDLE file) { return WriteFile(file, "x", 1, nullptr, nullptr); },
                                +[](HANDLE file) { return SetEndOfFile(file); },
                                +[](HANDLE file) { return FlushFileBuffers(file); }}) {
        SetLastError(0);
        EXPECT_FALSE(refused(reader.get()));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        EXPECT_TRUE(refused(writer.get()));
    }
}

TEST_F(File, HandlesThatAreNoneFailEveryCall) {
    for (const HANDLE none : {HANDLE{}, INVALID_HANDLE_VALUE}) {
        char byte = 0;
        DWORD done = 7;
        SetLastError(0);
        EXPECT_FALSE(ReadFile(none, &byte, 1, &done, nullptr));
        EXPECT_EQ(done, 0u);
        EXPECT_FALSE(WriteFile(none, &byte, 1, &done, nullptr));
        EXPECT_EQ(SetFilePointer(none, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
        EXPECT_EQ(GetFileSize(none, nullptr), INVALID_FILE_SIZE);
        EXPECT_FALSE(SetEndOfFile(none));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
}

TEST_F(File, ReadsComeShortAtTheEndAndMoveThePlace) {
    Put("f", "0123456789");
    const UniqueHandle file = Open("f", kReadWrite, OPEN_EXISTING);
    EXPECT_EQ(ReadAll(file.get(), 4), "0123");
    EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), 4);
    EXPECT_EQ(ReadAll(file.get(), 100), "456789");
    EXPECT_EQ(ReadAll(file.get(), 100), "");
    EXPECT_EQ(ReadAll(file.get(), 0), "");
    EXPECT_TRUE(WriteFile(file.get(), "AB", 2, nullptr, nullptr));
    EXPECT_EQ(Move(file.get(), -4, FILE_END), 8);
    EXPECT_TRUE(ReadFile(file.get(), nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(ReadAll(file.get(), 100), "89AB");
    EXPECT_FALSE(ReadFile(file.get(), nullptr, 1, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(File, PlacesAndSizesHave64Bits) {
    const UniqueHandle file = Open("f", kReadWrite, CREATE_NEW);
    const int64_t far = (int64_t{5} << 32) - 1;  // its low half is INVALID_SET_FILE_POINTER
    ASSERT_EQ(Move(file.get(), far, FILE_BEGIN), far);
    EXPECT_TRUE(WriteFile(file.get(), "ab", 2, nullptr, nullptr));
    EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), far + 2);
    DWORD high = 0;
    EXPECT_EQ(GetFileSize(file.get(), &high), 1u);
    EXPECT_EQ(high, 5u);
    EXPECT_EQ(Move(file.get(), -2, FILE_END), far);
    EXPECT_EQ(ReadAll(file.get(), 9), "ab");
    // Without a high half: back within 32 bits, but no further than they tell.
    EXPECT_EQ(SetFilePointer(file.get(), 0, nullptr, FILE_END), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), far + 2);
    EXPECT_EQ(Move(file.get(), 0x80000000, FILE_BEGIN), 0x80000000);
    EXPECT_EQ(SetFilePointer(file.get(), 0x7FFFFFFE, nullptr, FILE_CURRENT), 0xFFFFFFFE);
    EXPECT_EQ(SetFilePointer(file.get(), -2, nullptr, FILE_CURRENT), 0xFFFFFFFC);
}

TEST_F(File, AMoveToNoPlaceLeavesThePlaceAlone) {
    Put("f", "0123456789");
    const UniqueHandle file = Open("f", GENERIC_READ, OPEN_EXISTING);
    ASSERT_EQ(Move(file.get(), 4, FILE_BEGIN), 4);
    struct Case {
        int64_t distance;
        DWORD method, error;
    };
    for (const Case& c : {Case{-5, FILE_CURRENT, ERROR_NEGATIVE_SEEK},
                          {-1, FILE_BEGIN, ERROR_NEGATIVE_SEEK},
                          {-11, FILE_END, ERROR_NEGATIVE_SEEK},
                          {INT64_MAX, FILE_CURRENT, ERROR_INVALID_PARAMETER},
                          {0, 3, ERROR_INVALID_PARAMETER}}) {
        EXPECT_EQ(Move(file.get(), c.distance, c.method), -1);
        EXPECT_EQ(GetLastError(), c.error);
        EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), 4);
    }
}

TEST_F(File, SetEndOfFileCutsAndLengthens) {
    Put("f", "0123456789");
    const UniqueHandle file = Open("f", kReadWrite, OPEN_EXISTING, kShareAll);
    Move(file.get(), 3, FILE_BEGIN);
    EXPECT_TRUE(SetEndOfFile(file.get()));
    EXPECT_EQ(Contents("f"), "012");
    Move(file.get(), 5, FILE_BEGIN);
    EXPECT_TRUE(SetEndOfFile(file.get()));
    EXPECT_EQ(Contents("f"), std::string("012\0\0", 5));
}

TEST_F(File, AFullDiskTellsHowMuchReachedTheFile) {
    const UniqueHandle full =
        TakeFile(CreateFileW(u"/dev/full", kReadWrite, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(full);
    DWORD done = 7;
    EXPECT_FALSE(WriteFile(full.get(), "abc", 3, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(done, 0u);

    const UniqueHandle file = Open("f", kReadWrite, CREATE_NEW, kShareAll);
    const WithFaults faults({.longest = 4, .callsUntilError = 2, .error = ENOSPC});
    EXPECT_FALSE(WriteFile(file.get(), "0123456789", 10, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), 8);
    EXPECT_EQ(Contents("f"), "01234567");
}

TEST_F(File, InterruptedAndShortCallsAreCompleted) {
    const UniqueHandle file = Open("f", kReadWrite, CREATE_NEW, kShareAll);
    std::string bytes(1000, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    const WithFaults faults({.interruptions = 2, .longest = 7});
    DWORD done = 0;
    EXPECT_TRUE(WriteFile(file.get(), bytes.data(), 1000, &done, nullptr));
    EXPECT_EQ(done, 1000u);
    EXPECT_EQ(Contents("f"), bytes);
    Move(file.get(), 0, FILE_BEGIN);
    EXPECT_EQ(ReadAll(file.get(), 2000), bytes);
    EXPECT_GT(faults.CallsSeen(), 2 * 3 * 1000 / 7);
}

TEST_F(File, AReadThatFailsMidwayReadNothing) {
    Put("f", "0123456789");
    const UniqueHandle file = Open("f", GENERIC_READ, OPEN_EXISTING);
    char buffer[10];
    DWORD done = 7;
    {
        const WithFaults faults({.longest = 4, .callsUntilError = 1, .error = EIO});
        EXPECT_FALSE(ReadFile(file.get(), buffer, 10, &done, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_IO_DEVICE);
    }
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(ReadAll(file.get(), 10), "0123456789");
}

TEST(ErrorTable, EveryErrnoThatFileCallsGiveHasACode) {
    for (const int error :
         {ENOENT, ENOTDIR, ELOOP,  EMFILE, ENFILE, EACCES, EPERM,        EISDIR,     EBADF,     ENOMEM,
          EXDEV,  EROFS,   ENXIO,  ENODEV, EAGAIN, EBUSY,  ETXTBSY,      EOPNOTSUPP, ENOSYS,    ESPIPE,
          EEXIST, EINVAL,  EFAULT, ENOSPC, EDQUOT, EILSEQ, ENAMETOOLONG, EFBIG,      EOVERFLOW, EIO}) {
        EXPECT_NE(ErrorFromErrno(error), ERROR_GEN_FAILURE) << error;
        EXPECT_NE(ErrorFromErrno(error), ERROR_SUCCESS) << error;
    }
    EXPECT_EQ(ErrorFromErrno(EHWPOISON), ERROR_GEN_FAILURE);
    // The two that callers tell apart from all others.
    EXPECT_EQ(ErrorFromErrno(EDQUOT), ERROR_DISK_FULL);
    EXPECT_EQ(ErrorFromErrno(ETXTBSY), ERROR_SHARING_VIOLATION);
}

}  // namespace
