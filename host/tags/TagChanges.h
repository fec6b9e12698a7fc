// What the user wants of tags: "NAME=VALUE" for each to set, a name for each to clear.
#pragma once

#include <string>
#include <vector>

#include "capi/vlwav.hpp"

class TagChanges {
public:
    // Names in any case; blanks at the ends of values go. Throws UsageFailure for an unknown name, one that a
    // WAV file can't keep, and a number that is none.
    TagChanges(const std::vector<std::string>& sets, const std::vector<std::string>& clears);

    bool IsEmpty() const { return m_set.empty() && !TakesAway(); }
    // Some tags are to go, which setting others can't do.
    bool TakesAway() const { return !m_cleared.empty() || !m_emptied.empty(); }
    void ApplyTo(vlw::AnyTags& tags) const;
    // One that was to go, is there all the same, and wasn't set by these or by those that came later; empty:
    // none.
    std::string LeftIn(const vlw::AnyTags& tags, const TagChanges& later) const;

private:
    std::vector<std::string> m_cleared;
    std::vector<std::string> m_emptied;  // set to nothing
    vlw::Tags m_set;
};
