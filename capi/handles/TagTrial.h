// What a WAV file makes of tags, found out by trying: a tiny file in memory, written and read back by the
// module.
#pragma once

#include <string>
#include <vector>

#include "capi/Module.h"
#include "capi/Tags.h"

class TagTrial {
public:
    // Of a new file. Where there are no tags nothing is tried. Throws Failure.
    TagTrial(const Module& module, const Tags& tags, vlw_text text, const std::string& temporaryFolder);

    // The tags that a reader will find.
    const Tags& Kept() const { return m_kept; }
    // What a file with them is longer than one without, in bytes.
    uint64_t Bytes() const { return m_bytes; }
    // A clause for each tag and picture that the file doesn't keep as it is; none where it keeps all.
    const std::vector<std::string>& Losses() const { return m_losses; }

private:
    void Try(const Module& module, const Tags& tags, vlw_text text, const std::string& temporaryFolder);

    Tags m_kept;
    uint64_t m_bytes = 0;
    std::vector<std::string> m_losses;
};
