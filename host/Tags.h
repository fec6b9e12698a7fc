// A file's tags as the host handles them: the names that a user may write, what is to be changed, and the way
// from and to the module's metadata object. What a file can't keep of them is known by TagLimits.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "AudioCodec/metadata/IAC3Metadata.h"

// Attribute id and value, numbers in decimal. A number 0 and an empty text count as absent.
using TagSet = std::map<uint32_t, std::u16string>;

struct TagChange {
    uint32_t id;
    std::u16string value;  // empty takes the tag away
};

namespace Tags {

// What the user wants: "NAME=VALUE" for each tag to set, then a name for each to clear. Names in any case.
// Throws UsageFailure for an unknown name, one that a WAV file can't keep, and a number that is none.
std::vector<TagChange> ParseChanges(const std::vector<std::string>& sets,
                                    const std::vector<std::string>& clears);
void Apply(const std::vector<TagChange>& changes, TagSet& tags);

// Every tag that a file is read into; throws Failure.
TagSet Read(IAC3Metadata& metadata);
// Puts those that a file keeps into a metadata object, which was empty before; throws Failure.
void Store(const TagSet& tags, IAC3Metadata& metadata);

// Ids in the order in which tags are shown.
const std::vector<uint32_t>& ShownIds();
bool IsNumber(uint32_t id);
// Whether files keep it.
bool IsKept(uint32_t id);
// The id's (first) name, as the user sees it.
std::string Name(uint32_t id);

}  // namespace Tags
