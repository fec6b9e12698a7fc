// What a host does with a file that it was given, step by step: through the module's interfaces and through
// the C library. Each operation opens what it needs and closes it again, and says in a few words what came of
// it; none of them judges that.
#pragma once

#include <span>
#include <string>

#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "capi/vlwav_more.h"
#include "platform/com/RefPtr.h"

// The module, loaded for both.
class Codec {
public:
    explicit Codec(const char* modulePath);  // throws std::runtime_error
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;
    ~Codec();

    vlacwav3::IPrivateCodecMain3& Main() const { return *m_main; }
    vlw_module* Library() const { return m_library; }

private:
    void* m_module;
    RefPtr<vlacwav3::IPrivateCodecMain3> m_main;
    vlw_module* m_library = nullptr;
};

struct Operation {
    const char* name;
    bool writes;    // is given a copy of its own
    size_t copies;  // of the tags that it has to keep: an edit old ones and new ones, the library's those of
                    // the program and of the file too
    int steps;      // that each may take as long as another operation: the library tries an edit before it
                    // does it, and reads back what both made
    std::string (*run)(const Codec& codec, const std::string& path);
};
std::span<const Operation> AudioOperations();
std::span<const Operation> PictureOperations();
