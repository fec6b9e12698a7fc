#include "capi/TagLosses.h"

#include "capi/Keywords.h"

namespace {

std::string Quoted(const std::string& text) { return text.empty() ? "nothing" : '"' + text + '"'; }

}  // namespace

std::vector<std::string> TagLosses(const Tags& wanted, const Tags& kept) {
    std::vector<std::string> clauses;
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index) {
        const std::string& before = wanted.TextOf(*row);
        const std::string& after = kept.TextOf(*row);
        if (before != after)
            clauses.push_back(std::string(row->keyword) + " would become " + Quoted(after) + " instead of " +
                              Quoted(before));
    }
    for (const auto& [number, bytes] : wanted.AllPictures())
        clauses.push_back("picture " + std::to_string(number) + " would go");
    return clauses;
}

std::string JoinClauses(const std::vector<std::string>& clauses) {
    std::string text;
    for (const std::string& clause : clauses) text += (text.empty() ? "" : "; ") + clause;
    return text;
}
