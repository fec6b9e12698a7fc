#include "platform/loader/StringResources.h"

#include <dlfcn.h>
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

TEST(StringResources, OnlyTheExactBlockIsFoundAndEachMissHasItsError) {
    const StringResources registered(kBlocks);
    const struct {
        const WCHAR* type;
        WORD name;
        WORD language;
        const WCHAR* units;  // null: not found, with this error
        DWORD error;
    } rows[] = {
        {RT_STRING, 7, 1033, kEnglish, 0},
        {RT_STRING, 7, 1031, kGerman, 0},
        {RT_STRING, 8, 1036, kOther, 0},
        {RT_STRING, 7, 1036, nullptr, ERROR_RESOURCE_LANG_NOT_FOUND},
        {RT_STRING, 7, 0x400, nullptr, ERROR_RESOURCE_LANG_NOT_FOUND},
        {RT_STRING, 7, 0, nullptr, ERROR_RESOURCE_LANG_NOT_FOUND},
        {RT_STRING, 9, 1033, nullptr, ERROR_RESOURCE_NAME_NOT_FOUND},
        {MAKEINTRESOURCEW(5), 7, 1033, nullptr, ERROR_RESOURCE_TYPE_NOT_FOUND},
        {u"text", 7, 1033, nullptr, ERROR_RESOURCE_TYPE_NOT_FOUND},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.name << " in " << row.language);
        SetLastError(0);
        const HRSRC found = FindResourceExW(nullptr, row.type, MAKEINTRESOURCEW(row.name), row.language);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(LockResource(LoadResource(nullptr, found)), row.units);
        EXPECT_EQ(SizeofResource(nullptr, found), row.units ? sizeof(kEnglish) : 0);
        EXPECT_EQ(GetLastError(), row.units ? 0 : ERROR_RESOURCE_DATA_NOT_FOUND);
    }
}

TEST(StringResources, ATableBelongsToItsModuleForAsLongAsItIsRegistered) {
    void* const program = dlopen(nullptr, RTLD_LAZY);
    void* const entryModule = dlopen(VL_ENTRY_MODULE, RTLD_NOW | RTLD_LOCAL);
    const auto find = [](HMODULE module) {
        return FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(7), 1033) != nullptr;
    };
    EXPECT_FALSE(find(program));
    {
        const StringResources registered(kBlocks);
        EXPECT_TRUE(find(program));
        EXPECT_FALSE(find(entryModule));
        EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);
    }
    EXPECT_FALSE(find(program));
    dlclose(entryModule);
    dlclose(program);
}

}  // namespace
