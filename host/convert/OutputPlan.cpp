#include "host/convert/OutputPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "host/base/Endings.h"
#include "host/base/Failure.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kOutputEndings[] = {".wav", ".wave", ".bwf"};

// What the user means by a name: what is there decides, else a slash at its end, else its ending.
bool IsFolder(const std::string& output, bool several) {
    if (output == "-" && several)
        throw UsageFailure("Standard output takes one file; several need a folder.");
    if (output == "-") return false;
    std::error_code ignored;
    const auto there = fs::status(output, ignored);
    if (fs::is_directory(there)) return true;
    const bool isFile = fs::exists(there);
    const fs::path path(output);
    const bool asFolder = !isFile && (!path.has_filename() || !path.has_extension());
    if (several && (isFile || HasEnding(path, kOutputEndings)))
        throw UsageFailure(fmt::format("{} is no folder; several files need one.", output));
    if (asFolder) return true;
    if (isFile && !fs::is_regular_file(there)) return false;  // a device or a pipe has any name
    if (!HasEnding(path, kOutputEndings))
        throw UsageFailure(
            fmt::format("{} has an ending that is no WAV file's: they are made with .wav, .wave or .bwf. A "
                        "folder is named with a slash at its end.",
                        output));
    return false;
}

// So many of the folders in which a file lies, the last ones.
fs::path LastFolders(const fs::path& file, size_t count) {
    std::error_code ignored;
    const fs::path parent = fs::absolute(file, ignored).lexically_normal().parent_path().relative_path();
    std::vector<fs::path> parts(parent.begin(), parent.end());
    fs::path last;
    for (size_t i = parts.size() - std::min(count, parts.size()); i < parts.size(); ++i) last /= parts[i];
    return last;
}

size_t FolderCount(const fs::path& file) {
    std::error_code ignored;
    const fs::path parent = fs::absolute(file, ignored).lexically_normal().parent_path().relative_path();
    return static_cast<size_t>(std::distance(parent.begin(), parent.end()));
}

using Group = std::vector<size_t>;  // of jobs that would become one file

std::vector<Group> Collisions(const std::vector<ConvertJob>& jobs) {
    std::map<std::string, Group> byOutput;
    for (size_t i = 0; i < jobs.size(); ++i)
        if (jobs[i].refusal.empty()) byOutput[jobs[i].output].push_back(i);
    std::vector<Group> groups;
    for (auto& [output, group] : byOutput)
        if (group.size() > 1) groups.push_back(std::move(group));
    return groups;
}

// Gives each of a group a name below as many of its own folders as it takes to tell the most of them apart.
void TellApart(std::vector<ConvertJob>& jobs, const Group& group, const fs::path& folder) {
    const auto outputs = [&](size_t count) {
        std::vector<std::string> names;
        for (const size_t i : group)
            names.push_back(
                (folder / LastFolders(jobs[i].input, count) / fs::path(jobs[i].output).filename()).string());
        return names;
    };
    size_t most = 0;
    for (const size_t i : group) most = std::max(most, FolderCount(jobs[i].input));
    std::vector<std::string> best;
    size_t apart = 1;
    for (size_t count = 1; count <= most && apart < group.size(); ++count) {
        const std::vector<std::string> names = outputs(count);
        const size_t different = std::set(names.begin(), names.end()).size();
        if (different <= apart) continue;
        apart = different;
        best = names;
    }
    for (size_t i = 0; i < best.size(); ++i) jobs[group[i]].output = best[i];
}

void Refuse(std::vector<ConvertJob>& jobs, const Group& group) {
    for (const size_t i : group) {
        const size_t other = group.front() == i ? group[1] : group.front();
        jobs[i].refusal = fmt::format("It and {} would both become {}.", jobs[other].input, jobs[i].output);
        jobs[i].reason = "same-output";
    }
}

}  // namespace

std::vector<ConvertJob> OutputPlan::Make(const std::vector<InputFile>& inputs, const std::string& output,
                                         bool several) {
    const bool folder = IsFolder(output, several);
    std::vector<ConvertJob> jobs;
    for (const InputFile& input : inputs) {
        fs::path made = output;
        if (folder && input.name == "-")
            throw UsageFailure("Standard input has no name; name a file with -o.");
        if (folder) made = made / input.below / fs::path(input.name).stem().concat(".wav");
        jobs.push_back({input.name, made.string(), input.refusal, input.reason});
    }
    for (const Group& group : Collisions(jobs)) TellApart(jobs, group, output);
    for (const Group& group : Collisions(jobs)) Refuse(jobs, group);
    return jobs;
}
