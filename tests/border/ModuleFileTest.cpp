// The built file: what it exports, and how it comes and goes.
#include <gtest/gtest.h>
#include <link.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "platform/base/LastError.h"
#include "platform/base/Types.h"
#include "platform/loader/StringResources.h"
#include "tests/border/LoadedModule.h"

namespace {

template <class Record>
Record ReadAt(std::ifstream& file, uint64_t offset) {
    Record record{};
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(reinterpret_cast<char*>(&record), sizeof(record));
    return record;
}

// The names of the dynamic symbols that the file defines.
std::set<std::string> DefinedSymbols(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const auto header = ReadAt<Elf64_Ehdr>(file, 0);
    const auto section = [&](uint32_t index) {
        return ReadAt<Elf64_Shdr>(file, header.e_shoff + uint64_t{index} * header.e_shentsize);
    };
    std::set<std::string> names;
    for (uint32_t i = 0; i < header.e_shnum; ++i) {
        const Elf64_Shdr table = section(i);
        if (table.sh_type != SHT_DYNSYM) continue;
        for (uint64_t at = 0; at < table.sh_size; at += sizeof(Elf64_Sym)) {
            const auto symbol = ReadAt<Elf64_Sym>(file, table.sh_offset + at);
            if (symbol.st_shndx == SHN_UNDEF) continue;
            file.seekg(static_cast<std::streamoff>(section(table.sh_link).sh_offset + symbol.st_name));
            std::string name;
            std::getline(file, name, '\0');
            names.insert(name);
        }
    }
    return names;
}

bool IsMapped(const std::string& path) {
    std::ifstream maps("/proc/self/maps");
    const std::string text{std::istreambuf_iterator<char>(maps), {}};
    return text.find(path.substr(path.rfind('/') + 1)) != std::string::npos;
}

TEST(ModuleFile, ExportsItsFunctionsAndNothingElse) {
    EXPECT_EQ(DefinedSymbols(VL_MODULE), (std::set<std::string>{"DllRegisterServer", "DllUnregisterServer",
                                                                "DllVlGetClassObject", "GetCodecGUID"}));
}

TEST(ModuleFile, GoesWithItsStringResourcesWhenTheLastOneClosesItAndCanComeBack) {
    const auto find = [](HMODULE module, WORD name, WORD language) {
        return FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(name), language);
    };
    for (int round = 0; round < 3; ++round) {
        HMODULE handle = nullptr;
        {
            const LoadedModule module(VL_MODULE);
            handle = module.Get();
            ASSERT_TRUE(handle);
            EXPECT_TRUE(IsMapped(VL_MODULE));
            IPrivateCodecMain3* codec = nullptr;
            auto* const create = module.Find<Result(const GUID*, const GUID*, void**)>("DllVlGetClassObject");
            ASSERT_EQ(create(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, reinterpret_cast<void**>(&codec)),
                      RESULT_OK);
            codec->InitCapabilities();
            EXPECT_EQ(codec->Release(), 0u);
            for (WORD name = 63; name <= 65; ++name) EXPECT_TRUE(find(handle, name, 1041));
            EXPECT_EQ(find(handle, 64, 0x400), nullptr);
            EXPECT_EQ(GetLastError(), ERROR_RESOURCE_LANG_NOT_FOUND);
        }
        EXPECT_FALSE(IsMapped(VL_MODULE));
        EXPECT_EQ(find(handle, 64, 1033), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);
    }
}

}  // namespace
