#include "platform/loader/StringResources.h"

#include <gtest/gtest.h>

#include "platform/base/LastError.h"

namespace {

constexpr WCHAR kEnglish[] = u"\3one\0\0";
constexpr WCHAR kGerman[] = u"\4eins\0";
constexpr StringBlock kBlocks[] = {{7, 1033, kEnglish, sizeof(kEnglish)},
                                   {7, 1031, kGerman, sizeof(kGerman)}};

TEST(StringResources, OnlyTheExactBlockOfTheModuleIsFoundAndEachMissHasItsError) {
    const StringResources registered(kBlocks);  // of the program, which null stands for
    int stranger = 0;
    const struct {
        HMODULE module;
        const WCHAR* type;
        WORD name, language;
        const WCHAR* units;
        DWORD error;
    } rows[] = {{nullptr, RT_STRING, 7, 1033, kEnglish, 0},
                {nullptr, RT_STRING, 7, 1031, kGerman, 0},
                {nullptr, RT_STRING, 7, 1036, nullptr, ERROR_RESOURCE_LANG_NOT_FOUND},
                {nullptr, RT_STRING, 9, 1033, nullptr, ERROR_RESOURCE_NAME_NOT_FOUND},
                {nullptr, u"text", 7, 1033, nullptr, ERROR_RESOURCE_TYPE_NOT_FOUND},
                {&stranger, RT_STRING, 7, 1033, nullptr, ERROR_RESOURCE_DATA_NOT_FOUND}};
    for (const auto& row : rows) {
        SetLastError(0);
        const HRSRC found = FindResourceExW(row.module, row.type, MAKEINTRESOURCEW(row.name), row.language);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(LockResource(LoadResource(nullptr, found)), row.units);
        EXPECT_EQ(SizeofResource(nullptr, found), row.units ? sizeof(kEnglish) : 0);
    }
}

}  // namespace
