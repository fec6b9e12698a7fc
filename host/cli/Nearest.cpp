#include "host/cli/Nearest.h"

#include <algorithm>

namespace {

// The optimal string alignment distance (Damerau 1964, Levenshtein 1966).
size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<size_t>> cost(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i) {
        for (size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    }
    return cost[a.size()][b.size()];
}

}  // namespace

std::string Nearest(std::string_view given, const std::vector<std::string>& known) {
    constexpr size_t kLongest = 64;  // no word is; the work grows with both lengths
    if (given.size() > kLongest) return "";
    std::string nearest;
    size_t least = given.size();
    for (const std::string& word : known) {
        const size_t distance = Distance(given, word);
        if (distance >= least || distance * 3 > std::max(word.size(), size_t{3})) continue;
        least = distance;
        nearest = word;
    }
    return nearest;
}
