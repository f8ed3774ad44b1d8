#include "record/edit_distance.h"

#include "record/letters.h"

#include <algorithm>
#include <vector>

// Optimal string alignment: the Levenshtein distance with exchanges of neighbours.
std::size_t EditDistance(const std::string& left, const std::string& right)
{
    const std::vector<Letter> a = LettersOf(left);
    const std::vector<Letter> b = LettersOf(right);
    std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j)
        {
            if (i == 0 || j == 0)
            {
                cost[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = a[i - 1].Bytes == b[j - 1].Bytes ? 0 : 1;
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + replaced});
            if (i > 1 && j > 1 && a[i - 1].Bytes == b[j - 2].Bytes && a[i - 2].Bytes == b[j - 1].Bytes)
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    return cost[a.size()][b.size()];
}
