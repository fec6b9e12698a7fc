#include "platform/file/File.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <numeric>

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
    DWORD ErrorOf(const std::string& name, DWORD access, DWORD disposition) const {
        SetLastError(0);
        return Open(name, access, disposition) ? 0 : GetLastError();
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
    const struct {
        DWORD disposition;
        bool exists;
        DWORD error;
        const char* contents;
    } rows[] = {
        {CREATE_NEW, false, 0, ""},      {CREATE_NEW, true, ERROR_FILE_EXISTS, "old"},
        {CREATE_ALWAYS, false, 0, ""},   {CREATE_ALWAYS, true, 0, ""},
        {OPEN_ALWAYS, false, 0, ""},     {OPEN_ALWAYS, true, 0, "old"},
        {OPEN_EXISTING, true, 0, "old"}, {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, ""},
    };
    for (const auto& row : rows) {
        unlink(m_folder.Native("f").c_str());
        if (row.exists) Put("f", "old");
        EXPECT_EQ(ErrorOf("f", kReadWrite, row.disposition), row.error) << row.disposition << row.exists;
        EXPECT_EQ(Contents("f"), row.contents) << row.disposition << row.exists;
    }
    ASSERT_EQ(symlink("target", m_folder.Native("link").c_str()), 0);
    EXPECT_EQ(ErrorOf("link", kReadWrite, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ErrorOf("link", kReadWrite, CREATE_ALWAYS), 0u);
    EXPECT_EQ(ErrorOf("target", GENERIC_READ, OPEN_EXISTING), 0u);
}

TEST_F(File, ArgumentsThatAreNotSupportedAreRefusedAloud) {
    Put("f", "old");
    const std::u16string path = m_folder.Wide("f");
    auto* const given = reinterpret_cast<SECURITY_ATTRIBUTES*>(this);
    struct Arguments {
        DWORD access = GENERIC_READ, share = 0;
        SECURITY_ATTRIBUTES* security = nullptr;
        DWORD disposition = OPEN_EXISTING, flags = 0;
        HANDLE like = nullptr;
    };
    for (const Arguments& call : {Arguments{.access = GENERIC_READ | 1},
                                  {.access = 0},
                                  {.share = 4},
                                  {.security = given},
                                  {.disposition = 0},
                                  {.disposition = CREATE_ALWAYS},
                                  {.flags = 0x40000000},
                                  {.like = given}}) {
        SetLastError(0);
        EXPECT_EQ(CreateFileW(path.c_str(), call.access, call.share, call.security, call.disposition,
                              call.flags, call.like),
                  INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(Contents("f"), "old");
    for (const WCHAR* none : {static_cast<const WCHAR*>(nullptr), u""}) {
        EXPECT_EQ(CreateFileW(none, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
                  INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    }
}

TEST_F(File, WhatIsNoFileIsRefusedWithoutWaitingAndTellsWhy) {
    ASSERT_EQ(mkfifo(m_folder.Native("fifo").c_str(), 0600), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    m_folder.Native("socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(mkdir(m_folder.Native("folder").c_str(), 0700), 0);
    ASSERT_EQ(symlink("loop", m_folder.Native("loop").c_str()), 0);
    Put("f", "");

    alarm(20);  // what would wait for the other end dies here
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE, kReadWrite}) {
        EXPECT_EQ(ErrorOf("fifo", access, OPEN_EXISTING), ERROR_NOT_SUPPORTED);
        EXPECT_EQ(ErrorOf("socket", access, OPEN_EXISTING), ERROR_NOT_SUPPORTED);
        EXPECT_EQ(ErrorOf("folder", access, OPEN_EXISTING), ERROR_ACCESS_DENIED);
        EXPECT_EQ(ErrorOf("folder/", access, OPEN_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_EQ(ErrorOf("f/below", access, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
        EXPECT_EQ(ErrorOf("loop", access, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
        EXPECT_EQ(ErrorOf("none/f", access, CREATE_NEW), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(ErrorOf(std::string(256, 'n'), access, CREATE_NEW), ERROR_FILENAME_EXCED_RANGE);
    }
    alarm(0);
    close(listener);
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

TEST_F(File, AHandleGivesOnlyTheRightsItWasOpenedWithAndNoneGivesNone) {
    const UniqueHandle writer = Open("f", GENERIC_WRITE, CREATE_NEW, kShareAll);
    const UniqueHandle reader = Open("f", GENERIC_READ, OPEN_EXISTING, kShareAll);
    using Call = BOOL (*)(HANDLE file);
    const Call read = [](HANDLE file) {
        return ReadFile(file, std::string(1, 0).data(), 1, nullptr, nullptr);
    };
    const Call write = [](HANDLE file) { return WriteFile(file, "x", 1, nullptr, nullptr); };
    for (const Call call : {read, write, Call(SetEndOfFile), Call(FlushFileBuffers)}) {
        EXPECT_TRUE(call(call == read ? reader.get() : writer.get()));
        EXPECT_FALSE(call(call == read ? writer.get() : reader.get()));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        for (const HANDLE none : {HANDLE{}, INVALID_HANDLE_VALUE}) {
            EXPECT_FALSE(call(none));
            EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        }
    }
    EXPECT_EQ(SetFilePointer(nullptr, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetFileSize(nullptr, nullptr), INVALID_FILE_SIZE);
}

TEST_F(File, ReadsComeShortAtTheEndAndMoveThePlace) {
    Put("f", "0123456789");
    const UniqueHandle file = Open("f", kReadWrite, OPEN_EXISTING);
    EXPECT_EQ(ReadAll(file.get(), 4), "0123");
    EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), 4);
    EXPECT_EQ(ReadAll(file.get(), 100), "456789");
    EXPECT_EQ(ReadAll(file.get(), 100), "");
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
    const struct {
        int64_t distance;
        DWORD method, error;
    } rows[] = {{-5, FILE_CURRENT, ERROR_NEGATIVE_SEEK},
                {-1, FILE_BEGIN, ERROR_NEGATIVE_SEEK},
                {-11, FILE_END, ERROR_NEGATIVE_SEEK},
                {INT64_MAX, FILE_CURRENT, ERROR_INVALID_PARAMETER},
                {0, 3, ERROR_INVALID_PARAMETER}};
    for (const auto& row : rows) {
        EXPECT_EQ(Move(file.get(), row.distance, row.method), -1);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), 4);
    }
}

TEST_F(File, AnErrorMidwayTellsHowMuchWasWrittenAndThatNothingWasRead) {
    const UniqueHandle file = Open("f", kReadWrite, CREATE_NEW, kShareAll);
    DWORD done = 7;
    {
        const WithFaults faults({.longest = 4, .callsUntilError = 2, .error = ENOSPC});
        EXPECT_FALSE(WriteFile(file.get(), "0123456789", 10, &done, nullptr));
    }
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(Move(file.get(), 0, FILE_CURRENT), 8);
    EXPECT_EQ(Contents("f"), "01234567");
    Move(file.get(), 1, FILE_BEGIN);
    {
        const WithFaults faults({.longest = 4, .callsUntilError = 1, .error = EIO});
        EXPECT_FALSE(ReadFile(file.get(), std::string(9, 0).data(), 9, &done, nullptr));
    }
    EXPECT_EQ(GetLastError(), ERROR_IO_DEVICE);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(ReadAll(file.get(), 10), "1234567");
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

TEST(ErrorTable, EveryErrnoThatFileCallsGiveHasACode) {
    for (const int error :
         {ENOENT, ENOTDIR, ELOOP,  EMFILE, ENFILE,       EACCES, EPERM,      EISDIR, EBADF,  ENOMEM,
          EXDEV,  EROFS,   ENXIO,  ENODEV, EAGAIN,       EBUSY,  EOPNOTSUPP, ENOSYS, ESPIPE, EEXIST,
          EINVAL, EFAULT,  ENOSPC, EILSEQ, ENAMETOOLONG, EFBIG,  EOVERFLOW,  EIO})
        EXPECT_NE(ErrorFromErrno(error), ERROR_GEN_FAILURE) << error;
    EXPECT_EQ(ErrorFromErrno(EHWPOISON), ERROR_GEN_FAILURE);
    // The two that callers tell apart from all others.
    EXPECT_EQ(ErrorFromErrno(EDQUOT), ERROR_DISK_FULL);
    EXPECT_EQ(ErrorFromErrno(ETXTBSY), ERROR_SHARING_VIOLATION);
}

}  // namespace
