#include "platform/file/FileMapping.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "platform/file/TempFolder.h"
#include "platform/sync/Waitable.h"
#include "tests/platform/TempFolder.h"

namespace {

constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;

class FileMapping : public testing::Test {
protected:
    UniqueHandle Open(const std::string& name, DWORD access, DWORD disposition, DWORD flags = 0) const {
        return TakeFile(CreateFileA(m_folder.Native(name).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, disposition, flags, nullptr));
    }
    static void* View(HANDLE mapping) { return MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, 0); }

    TempFolder m_folder;
};

TEST_F(FileMapping, AllWhoOpenTheNameSeeTheSameBytesAndAViewOutlivesTheName) {
    UniqueHandle file = Open("caf\xE9", kBoth, CREATE_NEW);
    UniqueHandle first(CreateFileMappingA(file.get(), nullptr, PAGE_READWRITE, 0, 2040, "~mapping"));
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_EQ(std::filesystem::file_size(m_folder.Native("caf\xE9")), 2040u);
    file.reset();
    UniqueHandle second(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, "~mapping"));
    ASSERT_TRUE(first && second);
    void* const one = View(first.get());
    void* const two = View(second.get());
    ASSERT_TRUE(one && two);
    first.reset();
    second.reset();
    EXPECT_EQ(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, "~mapping"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    std::memset(one, 'x', 2040);
    EXPECT_EQ(std::memcmp(one, two, 2040), 0);
    EXPECT_TRUE(UnmapViewOfFile(one));
    EXPECT_TRUE(UnmapViewOfFile(two));
    EXPECT_FALSE(UnmapViewOfFile(two));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(FileMapping, RefusesWhatItCanNotMap) {
    const UniqueHandle readOnly = Open("a", GENERIC_READ, OPEN_ALWAYS);
    const UniqueHandle file = Open("a", kBoth, OPEN_ALWAYS);
    const UniqueHandle event(CreateEventA(nullptr, FALSE, FALSE, "~event"));
    const struct {
        HANDLE file;
        DWORD size;
        const char* name;
        DWORD error;
    } rows[] = {
        {readOnly.get(), 10, nullptr, ERROR_ACCESS_DENIED},
        {file.get(), 0, nullptr, ERROR_INVALID_PARAMETER},
        {file.get(), 10, "~event", ERROR_INVALID_HANDLE},
        {event.get(), 10, nullptr, ERROR_INVALID_HANDLE},
        {INVALID_HANDLE_VALUE, 10, nullptr, ERROR_INVALID_HANDLE},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CreateFileMappingA(row.file, nullptr, PAGE_READWRITE, 0, row.size, row.name), nullptr);
        EXPECT_EQ(GetLastError(), row.error);
    }
}

TEST_F(FileMapping, AFileThatGoesWithItsHandleIsNobodyElsesFromTheStart) {
    std::ofstream(m_folder.Native("taken")) << "theirs";
    for (const char* name : {"taken", "free"}) {
        const UniqueHandle file =
            Open(name, kBoth, OPEN_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
        DWORD done = 0;
        ASSERT_TRUE(WriteFile(file.get(), "mine!!", 6, &done, nullptr));
        std::ifstream taken(m_folder.Native("taken"));
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(taken), {}), "theirs");
        EXPECT_FALSE(std::filesystem::exists(m_folder.Native("free")));
    }
    EXPECT_FALSE(Open("taken", kBoth, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE));
    EXPECT_FALSE(Open("no folder/a", kBoth, OPEN_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE));
}

TEST(TempPath, IsTheFolderWithItsSeparatorOrTheRoomNeeded) {
    setenv("TMPDIR", "/some/where", 1);
    char text[16] = "?";
    EXPECT_EQ(GetTempPathA(12, text), 13u);
    EXPECT_STREQ(text, "?");
    EXPECT_EQ(GetTempPathA(13, text), 12u);
    EXPECT_STREQ(text, "/some/where/");
    unsetenv("TMPDIR");
    GetTempPathA(sizeof(text), text);
    EXPECT_STREQ(text, "/tmp/");
}

}  // namespace
