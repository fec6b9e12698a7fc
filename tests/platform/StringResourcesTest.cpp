#include "platform/loader/StringResources.h"

#include <gtest/gtest.h>

#include "platform/base/LastError.h"

namespace {

constexpr WCHAR kEnglish[] = u"\3one\0\0";
constexpr WCHAR kGerman[] = u"\4eins\0";
constexpr WCHAR kOther[] = u"\5other";
constexpr StringBlock kBlocks[] = {
    {7, 1033, kEnglish, sizeof(kEnglish)},
    {7, 1031, kGerman, sizeof(kGerman)},
    {8, 1036, kOther, sizeof(kOther)},
};

TEST(StringResources, OnlyTheExactBlockOfTheModuleIsFoundAndEachMissHasItsError) {
    const StringResources registered(kBlocks);  // of the program, which null stands for
    int stranger = 0;
    const struct {
        HMODULE module;
        const WCHAR* type;
        WORD name;
        WORD language;
        const WCHAR* units;  // null: not found, with this error
        DWORD error;
    } rows[] = {
        {nullptr, RT_STRING, 7, 1033, kEnglish, 0},
        {nullptr, RT_STRING, 7, 1031, kGerman, 0},
        {nullptr, RT_STRING, 8, 1036, kOther, 0},
        {nullptr, RT_STRING, 7, 1036, nullptr, ERROR_RESOURCE_LANG_NOT_FOUND},
        {nullptr, RT_STRING, 7, 0, nullptr, ERROR_RESOURCE_LANG_NOT_FOUND},
        {nullptr, RT_STRING, 9, 1033, nullptr, ERROR_RESOURCE_NAME_NOT_FOUND},
        {nullptr, MAKEINTRESOURCEW(5), 7, 1033, nullptr, ERROR_RESOURCE_TYPE_NOT_FOUND},
        {nullptr, u"text", 7, 1033, nullptr, ERROR_RESOURCE_TYPE_NOT_FOUND},
        {&stranger, RT_STRING, 7, 1033, nullptr, ERROR_RESOURCE_DATA_NOT_FOUND},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.name << " in " << row.language);
        SetLastError(0);
        const HRSRC found = FindResourceExW(row.module, row.type, MAKEINTRESOURCEW(row.name), row.language);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(LockResource(LoadResource(nullptr, found)), row.units);
        EXPECT_EQ(SizeofResource(nullptr, found), row.units ? sizeof(kEnglish) : 0);
        EXPECT_EQ(GetLastError(), row.units ? 0 : ERROR_RESOURCE_DATA_NOT_FOUND);
    }
}

}  // namespace
