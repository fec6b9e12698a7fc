#include "capi/handles/TagTrial.h"

#include <algorithm>
#include <cerrno>

#include "capi/ModuleFailure.h"
#include "capi/SystemFailure.h"
#include "capi/TagLosses.h"
#include "capi/output/OutputFile.h"
#include "riff/PcmHead.h"

namespace {

constexpr const char* kName = "a trial of the tags";
constexpr AudioShape kShape = {8000, 1};  // any that is written without a conversion

uint32_t IndexOfShape(const Module& module) {
    const std::vector<AudioFormatInfo>& formats = module.Formats();
    for (uint32_t index = 0; index < formats.size(); ++index)
        if (formats[index].samplesPerSec == kShape.rate && formats[index].channels == kShape.channels)
            return index;
    return 0;
}

}  // namespace

TagTrial::TagTrial(const Module& module, const Tags& tags, vlw_text text,
                   const std::string& temporaryFolder) {
    if (!tags.AllTexts().empty()) Try(module, tags, text, temporaryFolder);
    m_losses = TagLosses(tags, m_kept);
}

void TagTrial::Try(const Module& module, const Tags& tags, vlw_text text,
                   const std::string& temporaryFolder) {
    OutputFile file;
    RequireSystem(file.MakeInMemory(temporaryFolder), "Making", kName);
    const RefPtr<IAC3Writer> writer =
        OpenWriter(module, kShape, IndexOfShape(module), text, file.Path(), {kName, {}});
    GiveTags(*writer, tags);
    RequireModule(writer->Close(), "Writing", FileLabel{kName, {}});
    m_kept = TagsOf(*OpenReader(module, text, file.Path(), {kName, {}}));
    uint64_t size = 0;
    RequireSystem(file.Bytes().Size(size), "Reading", kName);
    m_list.resize(size - std::min<uint64_t>(size, kPcmHeadSize));
    size_t done = 0;
    RequireSystem(file.Bytes().ReadAt(m_list.data(), m_list.size(), kPcmHeadSize, done), "Reading", kName);
    if (done != m_list.size()) throw SystemFailure(EIO, std::string("Reading ") + kName, {});
}

void TagTrial::RequireKept(uint32_t flags, const FileLabel& file) const {
    if (!m_losses.empty() && (flags & VLW_LOSSY) == 0)
        throw Failure(VLW_WOULD_LOSE, file.name + " can't keep all tags: " + JoinClauses(m_losses) + '.',
                      file.path);
}
