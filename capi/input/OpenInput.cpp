#include "capi/input/OpenInput.h"

#include <cstdio>

#include "capi/SystemFailure.h"
#include "capi/input/FileInput.h"
#include "capi/input/OrderedInput.h"
#include "capi/input/StreamInput.h"
#include "platform/base/LastError.h"
#include "platform/file/File.h"

namespace {

UniqueHandle OpenShared(const std::string& path, DWORD share) {
    return TakeFile(CreateFileA(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Keeps those from writing who heed share modes. Without a way to lock the file it is read all the same.
UniqueHandle KeepFromWriters(const std::string& path, const Descriptor& file) {
    UniqueHandle kept;
    // By the descriptor first: the path may lead to another file by now.
    for (const std::string& way : {file.ReopeningPath(), path}) {
        kept = OpenShared(way, FILE_SHARE_READ);
        // An editor lets others read, since it moves no audio. Who makes a file shares nothing.
        if (!kept && GetLastError() == ERROR_SHARING_VIOLATION)
            kept = OpenShared(way, FILE_SHARE_READ | FILE_SHARE_WRITE);
        if (!kept && GetLastError() == ERROR_SHARING_VIOLATION)
            throw Failure(VLW_IN_USE, "Opening " + path + " failed: another program has it open for writing.",
                          path);
        if (kept) break;
    }
    return kept;
}

std::unique_ptr<Input> InOrder(Descriptor source, const FileLabel& label) {
    const auto shared = std::make_shared<const Descriptor>(std::move(source));
    return std::make_unique<OrderedInput>(
        [shared, label](void* buffer, size_t count) {
            size_t done = 0;
            RequireSystem(shared->ReadNext(buffer, count, done), "Reading", label);
            return done;
        },
        label);
}

// `keep` answers what keeps others from a regular file.
template <class Keep>
std::unique_ptr<Input> OpenFileOf(const char* path, Keep keep) {
    Descriptor file;
    uint64_t size = 0;
    RequireSystem(file.Open(path, size), "Opening", path);
    // Files of the system's own making tell no size and are read like a device.
    if (size == 0) return InOrder(std::move(file), FileLabel::OfPath(path));
    UniqueHandle kept = keep(path, file);
    return std::make_unique<FileInput>(std::move(file), 0, size, FileLabel::OfPath(path), std::move(kept));
}

}  // namespace

std::unique_ptr<Input> OpenPath(const char* path) { return OpenFileOf(path, KeepFromWriters); }

std::unique_ptr<Input> OpenPathUnshared(const char* path) {
    return OpenFileOf(path, [](const std::string&, const Descriptor&) { return UniqueHandle(); });
}

std::unique_ptr<Input> OpenDescriptor(int number) {
    const FileLabel label = FileLabel::OfDescriptor(number, "the source");
    Descriptor file;
    RequireSystem(file.Duplicate(number), "Reading", label);
    uint64_t place = 0;
    uint64_t size = 0;
    if (file.IsRegular() && file.Size(size) == 0 && file.Place(place) == 0 && size > place)
        return std::make_unique<FileInput>(std::move(file), place, size - place, label, UniqueHandle());
    return InOrder(std::move(file), label);
}

std::unique_ptr<Input> OpenStream(std::shared_ptr<const CallerStream> stream) {
    const std::optional<int64_t> start = stream->Seek(0, SEEK_CUR);
    const std::optional<int64_t> end = start ? stream->Seek(0, SEEK_END) : std::nullopt;
    if (end && *end >= *start)
        return std::make_unique<StreamInput>(std::move(stream), *start, static_cast<uint64_t>(*end - *start));
    if (end) stream->MoveTo(*start);
    return std::make_unique<OrderedInput>(
        [stream](void* buffer, size_t count) { return stream->Read(buffer, count); }, FileLabel::OfSource());
}
