// What a WAV file makes of tags, found out by trying: a tiny file in memory, written and read back by the
// module.
#pragma once

#include <string>
#include <vector>

#include "capi/Module.h"
#include "capi/Tags.h"
#include "capi/handles/WaveObjects.h"

class TagTrial {
public:
    // Of a new file. Where there are no tags nothing is tried. Throws Failure.
    TagTrial(const Module& module, const Tags& tags, vlw_text text, const std::string& temporaryFolder);

    // The tags that a reader will find.
    const Tags& Kept() const { return m_kept; }
    // What a file with them has after its audio, and one without doesn't.
    const std::vector<uint8_t>& List() const { return m_list; }
    // A clause for each tag and picture that the file doesn't keep as it is; none where it keeps all.
    const std::vector<std::string>& Losses() const { return m_losses; }
    // Throws Failure with VLW_WOULD_LOSE where there are any, unless `flags` have VLW_LOSSY.
    void RequireKept(uint32_t flags, const FileLabel& file) const;

private:
    void Try(const Module& module, const Tags& tags, vlw_text text, const std::string& temporaryFolder);

    Tags m_kept;
    std::vector<uint8_t> m_list;
    std::vector<std::string> m_losses;
};
