// The registry over a file that something has written into: a registry, one of a later version, a database
// of another program, or no database, with any bytes changed. Keys and values are asked for and set. A file
// that isn't a registry stays as it is to the byte, and nothing lies beside it afterwards.
#include <sqlite3.h>

#include "fuzz/ScriptBytes.h"
#include "platform/base/LastError.h"
#include "platform/registry/Registry.h"
#include "platform/registry/RegistryTransaction.h"
#include "platform/registry/UniqueKey.h"
#include "tests/support/ScopedFile.h"

namespace {

using Bytes = std::vector<uint8_t>;

UniqueKey KeyOf(HKEY parent, const std::string& path, bool create, LONG& result) {
    HKEY key = nullptr;
    result =
        create ? RegCreateKeyExA(parent, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr)
               : RegOpenKeyExA(parent, path.c_str(), 0, KEY_READ, &key);
    return UniqueKey(key);
}

LONG SetText(const UniqueKey& key, const std::string& name, const std::string& text) {
    return RegSetValueExA(key.get(), name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                          static_cast<DWORD>(text.size()));
}

Bytes Run(const TempFolder& folder, const std::string& name, const char* statements) {
    const std::string path = folder.Native(name);
    sqlite3* database = nullptr;
    sqlite3_open(path.c_str(), &database);
    Check(sqlite3_exec(database, statements, nullptr, nullptr, nullptr) == SQLITE_OK,
          "the files can be made");
    sqlite3_close(database);
    return FileContents<Bytes>(path);
}

struct Files {
    TempFolder folder;
    std::string path = folder.Native("registry.db");
    Bytes kinds[4];

    Files() {
        setenv("VELTO_REGISTRY", path.c_str(), 1);
        LONG result = 0;
        const UniqueKey key = KeyOf(HKEY_CLASSES_ROOT, "a\\b\\c", true, result);
        SetText(key, "d", std::string(6000, 'x'));
        kinds[0] = FileContents<Bytes>(path);
        kinds[1] = Run(folder, "registry.db", "PRAGMA user_version = 99");
        kinds[2] = Run(folder, "foreign.db", "CREATE TABLE songs(title); INSERT INTO songs VALUES('a')");
        std::filesystem::remove(path);
    }
};

// Whether a call was told that the file is somebody else's.
bool Act(ScriptBytes& script) {
    const HKEY root = script.Next() % 2 == 0 ? HKEY_CLASSES_ROOT : HKEY_LOCAL_MACHINE;
    const uint32_t step = script.Next() % 8;
    constexpr const char* kPaths[] = {"a", "a\\b", "A\\B\\c", "new", "a\\new\\er", "a\\\\b"};
    const uint32_t choice = script.Next() % 8;
    const std::string path = choice < 6 ? kPaths[choice] : script.Text(script.Next() % 40);
    LONG result = 0;
    if (step == 0) result = VlBeginRegistryTransaction(VL_REGISTRY_USER);
    if (step == 1)
        result = VlEndRegistryTransaction(
            static_cast<LONG>(script.Next() % 3 == 0 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS));
    if (step == 2) result = RegDeleteKeyA(root, path.c_str());
    if (step > 2) {
        const UniqueKey key = KeyOf(root, path, step > 5, result);
        const std::string name = script.Next() % 2 == 0 ? "d" : script.Text(3);
        if (key && step % 2 == 0) result = SetText(key, name, script.Text(script.Next()));
        BYTE room[100];
        DWORD size = sizeof room;
        const LONG got =
            key ? RegQueryValueExA(key.get(), name.c_str(), nullptr, nullptr, room, &size) : result;
        Check(got != ERROR_SUCCESS || size <= sizeof room, "a value is no larger than its room");
        if (result == ERROR_SUCCESS) result = got;
    }
    return static_cast<DWORD>(result) == ERROR_NOT_REGISTRY_FILE ||
           static_cast<DWORD>(result) == ERROR_REVISION_MISMATCH;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Files s_files;
    ScriptBytes script(data, size);
    ScriptBytes steps = script.Part(kHead);
    Bytes file = s_files.kinds[steps.Next() % 4];
    if (file.empty()) {
        file = script.Rest();
    } else {
        while (!script.IsOver()) {
            const size_t place = script.Next16() % file.size();
            file[place] = static_cast<uint8_t>(script.Next());
        }
    }
    std::ofstream(s_files.path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    bool isForeign = false;
    while (!steps.IsOver()) isForeign |= Act(steps);
    while (VlEndRegistryTransaction(static_cast<LONG>(ERROR_ACCESS_DENIED)) !=
           static_cast<LONG>(ERROR_INVALID_HANDLE)) {
    }
    Check(!isForeign || FileContents<Bytes>(s_files.path) == file, "a file of somebody else stays as it is");
    for (const char* suffix : {"-journal", "-wal", "-shm"}) std::filesystem::remove(s_files.path + suffix);
    std::filesystem::remove(s_files.path);
    return 0;
}
