#include "host/cli/Option.h"

#include <utility>

std::vector<std::string> Option::Spellings() const {
    std::vector<std::string> spellings(1);
    for (const char c : names) {
        if (c == ',')
            spellings.emplace_back();
        else
            spellings.back() += c;
    }
    return spellings;
}

Option Option::Required() const {
    Option option = *this;
    option.required = true;
    return option;
}

Option Option::OneOf(std::vector<std::string> values) const {
    Option option = *this;
    option.choices = std::move(values);
    return option;
}

Option Option::Within(uint32_t from, uint32_t to) const {
    Option option = *this;
    option.least = from;
    option.most = to;
    return option;
}

Option Option::Without(std::vector<std::string> others) const {
    Option option = *this;
    option.excludes = std::move(others);
    return option;
}

Option Option::With(std::vector<std::string> others) const {
    Option option = *this;
    option.needs = std::move(others);
    return option;
}
