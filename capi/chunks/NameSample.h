// Names to be told to a user: each once, in order, and of too many the first that came and how many more
// there were.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

class NameSample {
public:
    void Add(const std::string& name) {
        if (m_names.size() < kMost)
            m_names.insert(name);
        else if (m_names.find(name) == m_names.end())
            ++m_more;
    }

    // Puts what `tell` makes of each name, then how many there were beyond those.
    template <class Tell>
    void AppendTo(std::vector<std::string>& parts, Tell&& tell) const {
        for (const std::string& name : m_names) parts.push_back(tell(name));
        if (m_more != 0) parts.push_back(std::to_string(m_more) + " more");
    }

private:
    static constexpr size_t kMost = 100;

    std::set<std::string> m_names;
    uint64_t m_more = 0;
};
