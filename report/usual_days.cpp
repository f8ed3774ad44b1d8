#include "usual_days.h"

#include "words.h"

#include <algorithm>
#include <vector>

namespace plant_report
{

namespace
{

constexpr std::int64_t LongestGap = 1826; // five years

struct Group
{
    DayRange Days;
    std::int64_t Records;
};

// The days without a long gap, oldest first.
std::vector<Group> GroupsOf(const std::map<std::int64_t, std::int64_t>& records)
{
    std::vector<Group> groups;
    for (const auto& [day, number] : records)
    {
        if (groups.empty() || day - groups.back().Days.Last > LongestGap)
            groups.push_back({{day, day}, 0});
        groups.back().Days.Last = day;
        groups.back().Records += number;
    }
    return groups;
}

} // namespace

DayRange UsualDays(const std::map<std::int64_t, std::int64_t>& records)
{
    const std::vector<Group> groups = GroupsOf(records);
    const auto most = std::max_element(groups.rbegin(), groups.rend(),
                                       [](const Group& a, const Group& b) { return a.Records < b.Records; });
    DayRange usual = most->Days;
    auto after = most.base(); // the next later group
    auto before = most + 1;   // the next earlier one
    const auto isNear = [&](std::int64_t gap) { return gap <= usual.Last - usual.First; };
    for (bool grows = true; grows;)
    {
        grows = false;
        if (after != groups.end() && isNear(after->Days.First - usual.Last))
        {
            usual.Last = after->Days.Last;
            ++after;
            grows = true;
        }
        if (before != groups.rend() && isNear(usual.First - before->Days.Last))
        {
            usual.First = before->Days.First;
            ++before;
            grows = true;
        }
    }
    return usual;
}

std::string FarSentence(std::int64_t number, const char* one, const char* many)
{
    if (number == 0)
        return {};
    return " " + Counted(number, one, many) +
           (number == 1 ? " is not drawn: its date is years away from the others. The table has it."
                        : " are not drawn: their dates are years away from the others. The table has them.");
}

} // namespace plant_report
