#include "capi/handles/Places.h"

#include <filesystem>

#include "capi/SystemFailure.h"
#include "capi/input/OpenInput.h"
#include "capi/posix/FileNames.h"

namespace Places {
namespace {

std::string WayTo(const vlw_place& place) {
    return place.path ? place.path : "/proc/self/fd/" + std::to_string(place.fd);
}

}  // namespace

FileLabel LabelOf(const vlw_place& target) {
    return target.path ? FileLabel::OfPath(target.path) : FileLabel::OfDescriptor(target.fd, "the target");
}

bool AreOneFile(const vlw_place& source, const vlw_place& target) {
    std::error_code ignored;
    const std::string from = WayTo(source);
    return std::filesystem::equivalent(from, WayTo(target), ignored) &&
           ((source.path && target.path) || std::filesystem::is_regular_file(from, ignored));
}

std::unique_ptr<Input> OpenSource(const vlw_place& source) {
    return source.path ? OpenPath(source.path) : OpenDescriptor(source.fd);
}

std::optional<Descriptor> OpenLive(const vlw_place& target) {
    Descriptor open;
    if (!target.path) {
        // What can't be written at all is refused where files are made.
        const bool isLive = open.Duplicate(target.fd) == 0 && open.IsWritable() && !open.IsRegular();
        return isLive ? std::optional(std::move(open)) : std::nullopt;
    }
    FileNames::Facts facts;
    if (FileNames::Look(target.path, facts) != 0 || facts.regular || facts.folder) return std::nullopt;
    const int error = open.OpenForWriting(target.path);
    if (error != 0) throw SystemFailure(error, std::string("Opening ") + target.path, target.path);
    return open;
}

}  // namespace Places
