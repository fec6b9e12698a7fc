#include "capi/TagLosses.h"

#include "capi/Keywords.h"

namespace {

std::string Quoted(const std::string& text) { return text.empty() ? "nothing" : '"' + text + '"'; }

void AddClause(std::string& clauses, const std::string& clause) {
    if (!clauses.empty()) clauses += "; ";
    clauses += clause;
}

}  // namespace

std::string TagLosses(const Tags& wanted, const Tags& kept) {
    std::string clauses;
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index) {
        const std::string& before = wanted.TextOf(*row);
        const std::string& after = kept.TextOf(*row);
        if (before != after)
            AddClause(clauses, std::string(row->keyword) + " would become " + Quoted(after) + " instead of " +
                                   Quoted(before));
    }
    for (const auto& [number, bytes] : wanted.AllPictures())
        AddClause(clauses, "picture " + std::to_string(number) + " would go");
    return clauses;
}
