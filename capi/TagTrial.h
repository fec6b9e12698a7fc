// What a WAV file makes of tags, found out by trying: a tiny file in memory, written and read back by the
// module.
#pragma once

#include <string>
#include <string_view>

#include "capi/Module.h"
#include "capi/Tags.h"
#include "capi/output/OutputFile.h"

class TagTrial {
public:
    // Of a new file. Where there are no tags nothing is tried. Throws Failure.
    TagTrial(const Module& module, const Tags& tags, vlw_text text, const std::string& temporaryFolder);
    // Of a file that an editor changes, whose list "INFO" has these chunks: headers and contents, without the
    // list's own header and type. Empty for a file without a list. Throws Failure.
    TagTrial(const Module& module, const Tags& tags, vlw_text text, std::string_view infoChunks,
             const std::string& temporaryFolder);

    // The tags that a reader will find.
    const Tags& Kept() const { return m_kept; }
    // What a file with them is longer than one without, in bytes.
    uint64_t Bytes() const { return m_bytes; }
    // A clause for each tag and picture that the file doesn't keep as it is; empty where it keeps all.
    const std::string& Losses() const { return m_losses; }

private:
    void ReadBack(const Module& module, vlw_text text, const OutputFile& file);

    Tags m_kept;
    uint64_t m_bytes = 0;
    std::string m_losses;
};
